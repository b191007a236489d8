package com.qarvo.kel.util.endtoend;

import java.util.List;
import java.util.Set;
import java.util.TreeSet;

/**
 * What no native method is called with: mistakes that the Javadoc leaves to the caller, because they can end the whole
 * process, and what Wine's own functions do not survive.
 */
final class LeftOut {
    private static final Set<String> HANDLES = Set.of("record", "handleCell", "tokenCell", "profileCell");
    private static final String CONTEXT = "context";
    private static final Set<String> RANGE = Set.of("offset", "length");
    private static final Set<String> CRASHES_OF_WINE =
            Set.of("getLongPathName.path", "createProcessAsUserSession.applicationName");
    private static final int LONGEST_FOR_WINE = 300;

    private final Set<String> list = new TreeSet<>();

    /** Whether a value is not to be passed there. It is then on the list. */
    boolean covers(DocumentedNative method, int parameter, Object value) {
        String reason = reason(method, parameter, value);
        if (reason != null) {
            list.add(method.name() + " " + method.parameters().get(parameter) + ": " + reason);
        }
        return reason != null;
    }

    private static String reason(DocumentedNative method, int parameter, Object value) {
        String name = method.parameters().get(parameter);
        if (method.ignores(parameter)) {
            return null;
        }
        if (value == null) {
            return method.takesNull(parameter) ? null : "null";
        }
        if (HANDLES.contains(name) && (long) value > 0) {
            return "a handle that is none of the library's";
        }
        if (name.equals(CONTEXT) && (long) value != 0) {
            return "a context that is none of the system's";
        }
        if (RANGE.contains(name) && ((int) value < 0 || (int) value == Integer.MAX_VALUE)) {
            return "a range beyond the array or buffer";
        }
        if (CRASHES_OF_WINE.contains(method.method().getName() + "." + name)
                && ((String) value).length() > LONGEST_FOR_WINE) {
            return "a text too long for Wine itself";
        }
        return null;
    }

    /** Method, parameter and reason of all that has been left out. */
    List<String> list() {
        return List.copyOf(list);
    }
}
