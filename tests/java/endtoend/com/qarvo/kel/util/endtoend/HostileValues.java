package com.qarvo.kel.util.endtoend;

import java.io.ByteArrayInputStream;
import java.io.InputStream;
import java.io.PipedOutputStream;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.Collection;
import java.util.List;
import java.util.stream.IntStream;

/** What nobody should pass: extremes of every type, each with a name of its own. */
final class HostileValues {
    private static final int[] LENGTHS = {1, 259, 260, 261, 32_766, 32_767, 32_768, 65_535, 100_000};
    private static final int MANY = 100_000;

    /** A value and what to call it. */
    record Hostile(String name, Object value) {
    }

    private HostileValues() {
    }

    /** The extremes of a type, null first for a reference; texts are long in all and behind a harmless beginning. */
    static List<Hostile> of(Class<?> type, Object harmless) {
        List<Hostile> values = new ArrayList<>();
        if (!type.isPrimitive()) {
            values.add(new Hostile("null", null));
        }
        if (type == int.class) {
            IntStream.of(0, -1, 1, Integer.MIN_VALUE, Integer.MAX_VALUE).forEach(each -> add(values, each));
        } else if (type == long.class) {
            for (long each : new long[] {0, -1, 1, Long.MIN_VALUE, Long.MAX_VALUE}) {
                add(values, each);
            }
        } else if (type == boolean.class) {
            add(values, false);
            add(values, true);
        } else if (type == String.class) {
            addTexts(values, harmless == null ? "" : (String) harmless);
        } else if (type == byte[].class) {
            IntStream.of(0, 1, MANY).forEach(each -> values.add(new Hostile(each + " bytes", new byte[each])));
        } else if (type == ByteBuffer.class) {
            addBuffers(values);
        } else if (type == PipedOutputStream.class) {
            values.add(new Hostile("an unconnected stream", new PipedOutputStream()));
        } else if (type == InputStream.class) {
            values.add(new Hostile("an empty stream", new ByteArrayInputStream(new byte[0])));
        } else {
            addObjects(values, type);
        }
        return values;
    }

    private static void add(List<Hostile> values, Object value) {
        values.add(new Hostile(value.toString(), value));
    }

    private static void addTexts(List<Hostile> values, String harmless) {
        String beginning = harmless.substring(0, harmless.lastIndexOf('\\') + 1);
        values.add(new Hostile("empty", ""));
        for (int length : LENGTHS) {
            values.add(new Hostile(length + " characters", "x".repeat(length)));
            if (!beginning.isEmpty() && length > beginning.length()) {
                values.add(new Hostile(length + " characters behind a beginning",
                        beginning + "x".repeat(length - beginning.length())));
            }
        }
        values.add(new Hostile("characters of three bytes", beginning + "\u4e2d".repeat(32_768)));
        values.add(new Hostile("a zero", "\0"));
        values.add(new Hostile("zeros", "\0".repeat(MANY)));
        values.add(new Hostile("a zero within", harmless + "\0x"));
        values.add(new Hostile("a lone high surrogate", beginning + "x\ud800"));
        values.add(new Hostile("a lone low surrogate", beginning + "\udc00x"));
        values.add(new Hostile("conversions", beginning + "%n%s%1$s%x%ls"));
    }

    private static void addBuffers(List<Hostile> values) {
        values.add(new Hostile("an array's buffer", ByteBuffer.allocate(MANY)));
        values.add(new Hostile("an empty buffer", ByteBuffer.allocateDirect(0)));
        values.add(new Hostile("a read-only buffer", ByteBuffer.allocateDirect(MANY).asReadOnlyBuffer()));
    }

    private static void addObjects(List<Hostile> values, Class<?> type) {
        if (!Collection.class.isAssignableFrom(type)) {
            values.add(new Hostile("an object without methods", new Object()));
            values.add(new Hostile("a text", "text"));
            values.add(new Hostile("an array", new int[0]));
        }
        values.add(new Hostile("a list", new ArrayList<>(List.of("x".repeat(MANY), "\0", "\ud800"))));
        values.add(new Hostile("an immutable list", List.of("one")));
    }
}
