package com.qarvo.winutil.backup;

import java.io.IOException;
import java.util.HexFormat;

/**
 * Text in one field of a line. A backslash introduces what could not stand there as it is: {@code \\}, {@code \t},
 * {@code \n}, {@code \r}, and \\uXXXX for other control and formatting characters and for surrogates without a partner,
 * which names on disk may have and UTF-8 has no bytes for.
 */
final class Escapes {
    private static final int SPARE = 16;
    private static final int UNICODE_DIGITS = 4;

    private Escapes() {
    }

    static String escape(String text) {
        if (isPlain(text)) {
            return text;
        }
        StringBuilder out = new StringBuilder(text.length() + SPARE);
        text.codePoints().forEach(c -> append(out, c));
        return out.toString();
    }

    /** Gives text fit for a terminal: as in a manifest, but with backslashes as they are. */
    static String printable(String text) {
        if (isPlain(text)) {
            return text;
        }
        StringBuilder out = new StringBuilder(text.length() + SPARE);
        text.codePoints().forEach(c -> {
            if (c == '\\') {
                out.append('\\');
            } else {
                append(out, c);
            }
        });
        return out.toString();
    }

    static String unescape(String field) throws IOException {
        if (field.indexOf('\\') < 0) {
            return field;
        }
        StringBuilder out = new StringBuilder(field.length());
        for (int i = 0; i < field.length(); i++) {
            char c = field.charAt(i);
            if (c != '\\') {
                out.append(c);
                continue;
            }
            i++;
            char kind = i < field.length() ? field.charAt(i) : ' ';
            out.append(kind == 'u' ? unicode(field, i + 1) : simple(kind));
            i += kind == 'u' ? UNICODE_DIGITS : 0;
        }
        return out.toString();
    }

    private static boolean isPlain(String text) {
        for (int i = 0; i < text.length(); i++) {
            char c = text.charAt(i);
            if (c < ' ' || c > '~' || c == '\\') {
                return false;
            }
        }
        return true;
    }

    private static void append(StringBuilder out, int c) {
        switch (c) {
            case '\\' -> out.append("\\\\");
            case '\t' -> out.append("\\t");
            case '\n' -> out.append("\\n");
            case '\r' -> out.append("\\r");
            default -> {
                if (c <= Character.MAX_VALUE && isUnfit(c)) {
                    out.append(String.format("\\u%04X", c));
                } else {
                    out.appendCodePoint(c);
                }
            }
        }
    }

    private static boolean isUnfit(int c) {
        return switch (Character.getType(c)) {
            case Character.CONTROL, Character.FORMAT, Character.SURROGATE, Character.LINE_SEPARATOR,
                    Character.PARAGRAPH_SEPARATOR, Character.UNASSIGNED -> true;
            default -> false;
        };
    }

    private static char simple(char kind) throws IOException {
        return switch (kind) {
            case '\\' -> '\\';
            case 't' -> '\t';
            case 'n' -> '\n';
            case 'r' -> '\r';
            default -> throw new IOException("unknown escape");
        };
    }

    private static char unicode(String field, int start) throws IOException {
        try {
            return (char) HexFormat.fromHexDigits(field, start, start + UNICODE_DIGITS);
        } catch (IllegalArgumentException | IndexOutOfBoundsException e) {
            throw new IOException("unknown escape", e);
        }
    }
}
