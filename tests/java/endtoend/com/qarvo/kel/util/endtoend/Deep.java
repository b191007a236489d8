package com.qarvo.kel.util.endtoend;

import java.nio.file.Path;

/** Makes up paths of a given length. */
final class Deep {
    private static final int COMPONENT = 60;

    private Deep() {
    }

    /** A path of exactly this many characters below a folder; nothing is created. */
    static Path path(Path folder, int length) {
        StringBuilder path = new StringBuilder(folder.toString());
        while (length - path.length() > 2 * COMPONENT) {
            path.append('\\').append("d".repeat(COMPONENT));
        }
        int rest = length - path.length();
        if (rest > COMPONENT) {
            path.append('\\').append("e".repeat(COMPONENT / 2));
            rest -= COMPONENT / 2 + 1;
        }
        return Path.of(path.append('\\').append("f".repeat(rest - 1)).toString());
    }
}
