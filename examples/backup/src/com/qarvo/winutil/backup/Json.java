package com.qarvo.winutil.backup;

import java.util.Iterator;
import java.util.List;
import java.util.Map;
import java.util.function.Consumer;

/** Writes maps, lists, texts, numbers and truth values as JSON, indented for people. */
final class Json {
    private static final String INDENT = "  ";

    private final StringBuilder out = new StringBuilder();

    private Json() {
    }

    /** Gives the text for a value, without a line break at its end. */
    static String text(Object value) {
        Json json = new Json();
        json.append(value, "\n");
        return json.out.toString();
    }

    private void append(Object value, String lineBreak) {
        if (value instanceof Map<?, ?> map) {
            String inner = lineBreak + INDENT;
            between('{', '}', map.entrySet().iterator(), lineBreak, entry -> {
                string((String) entry.getKey());
                out.append(": ");
                append(entry.getValue(), inner);
            });
        } else if (value instanceof List<?> list) {
            between('[', ']', list.iterator(), lineBreak, element -> append(element, lineBreak + INDENT));
        } else if (value instanceof String text) {
            string(text);
        } else {
            out.append(value);
        }
    }

    private <T> void between(char open, char close, Iterator<T> elements, String lineBreak,
            Consumer<T> element) {
        out.append(open);
        boolean empty = !elements.hasNext();
        while (elements.hasNext()) {
            out.append(lineBreak).append(INDENT);
            element.accept(elements.next());
            out.append(elements.hasNext() ? "," : "");
        }
        out.append(empty ? "" : lineBreak).append(close);
    }

    /** Escapes what must not stand in a string, and what a terminal or UTF-8 could not carry. */
    private void string(String text) {
        out.append('"');
        text.codePoints().forEach(c -> {
            if (c == '"' || c == '\\') {
                out.append('\\').append((char) c);
            } else if (isUnfit(c)) {
                for (char unit : Character.toChars(c)) {
                    out.append(String.format("\\u%04X", (int) unit));
                }
            } else {
                out.appendCodePoint(c);
            }
        });
        out.append('"');
    }

    private static boolean isUnfit(int c) {
        return switch (Character.getType(c)) {
            case Character.CONTROL, Character.FORMAT, Character.SURROGATE, Character.LINE_SEPARATOR,
                    Character.PARAGRAPH_SEPARATOR, Character.UNASSIGNED -> true;
            default -> false;
        };
    }
}
