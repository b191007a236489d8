package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Collectors;

/** A native method of {@link WindowsUtil} and what its Javadoc promises, which is read from the source. */
record DocumentedNative(Method method, List<String> parameters, String comment) {
    private static final Pattern DECLARATION = Pattern.compile(
            "/\\*\\*((?:(?!\\*/).)*)\\*/\\s*(?:@\\w+\\(\"\\w+\"\\)\\s*)?"
                    + "public native [\\w.\\[\\]]+ (\\w+)\\(([^)]*)\\)", Pattern.DOTALL);

    /** All native methods, in the order of the source. */
    static List<DocumentedNative> all(Path source) throws IOException {
        List<Method> natives = new ArrayList<>(Arrays.stream(WindowsUtil.class.getDeclaredMethods())
                .filter(method -> Modifier.isNative(method.getModifiers())).toList());
        List<DocumentedNative> documented = new ArrayList<>();
        Matcher matcher = DECLARATION.matcher(Files.readString(source));
        while (matcher.find()) {
            String declared = matcher.group(3).strip();
            List<String[]> words = declared.isEmpty() ? List.of()
                    : Arrays.stream(declared.split("\\s*,\\s*")).map(word -> word.split("\\s+")).toList();
            String types = words.stream().map(word -> word[0]).collect(Collectors.joining(","));
            String name = matcher.group(2);
            Method method = natives.stream().filter(each -> each.getName().equals(name) && types(each).equals(types))
                    .findFirst().orElseThrow(() -> new IllegalStateException("No such native: " + name));
            natives.remove(method);
            documented.add(new DocumentedNative(method, words.stream().map(word -> word[1]).toList(),
                    matcher.group(1).replaceAll("\\s*\\n\\s*\\*\\s*", " ")));
        }
        if (!natives.isEmpty()) {
            throw new IllegalStateException("Without a Javadoc: " + natives);
        }
        return documented;
    }

    private static String types(Method method) {
        return Arrays.stream(method.getParameterTypes()).map(Class::getSimpleName).collect(Collectors.joining(","));
    }

    /** Its name, with its types where there are several of that name. */
    String name() {
        return method.getName() + "(" + types(method) + ")";
    }

    Class<?> type(int parameter) {
        return method.getParameterTypes()[parameter];
    }

    /** Whether the Javadoc has a word for null in place of this parameter. */
    boolean takesNull(int parameter) {
        String name = parameters.get(parameter);
        boolean isString = type(parameter) == String.class;
        return tag("@param " + name).contains("null") || isString && comment.contains("All strings may be null")
                || comment.contains("{@code " + name + "} is null");
    }

    /** Whether the Javadoc says that nothing is done with this parameter. */
    boolean ignores(int parameter) {
        return tag("@param " + parameters.get(parameter)).contains("not used");
    }

    /** Whether the Javadoc says that the result may be null. */
    boolean mayAnswerNull() {
        return method.getReturnType() == void.class || tag("@return").contains("null");
    }

    /** Whether the Javadoc names what has been thrown; of an IOException also what derives from it. */
    boolean documents(Throwable thrown) {
        for (Class<?> type = thrown.getClass(); type != null; type = type.getSuperclass()) {
            boolean named = comment.contains("@throws " + type.getSimpleName())
                    || comment.contains("@throws UtilException." + type.getSimpleName())
                    || comment.contains("{@link " + type.getSimpleName() + "}");
            if (named) {
                return true;
            }
            if (!(thrown instanceof IOException)) {
                return false;
            }
        }
        return false;
    }

    private String tag(String tag) {
        int begin = comment.indexOf(tag + " ");
        int end = comment.indexOf(" @", begin + 1);
        return begin < 0 ? "" : comment.substring(begin, end < 0 ? comment.length() : end);
    }
}
