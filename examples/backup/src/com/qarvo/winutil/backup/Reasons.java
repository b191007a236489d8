package com.qarvo.winutil.backup;

import java.io.FileNotFoundException;

/** Turns failures into text for people. */
final class Reasons {
    private Reasons() {
    }

    /** Gives the reason on one line; the system ends its texts with a line break, and some failures have none. */
    static String of(Throwable failure) {
        String message = failure.getMessage() == null ? "" : of(failure.getMessage());
        if (!message.isEmpty()) {
            return message;
        }
        return failure instanceof FileNotFoundException ? "it is not there or cannot be reached"
                : failure.getClass().getSimpleName();
    }

    static String of(String systemText) {
        return Escapes.printable(systemText.strip().replaceAll("\\s+", " "));
    }
}
