package com.qarvo.kel.util.endtoend;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/**
 * Starts processes. Now and then, once in some thousand times, a new process of this system ends before its program
 * begins, and starting it fails with ERROR_INTERNAL_ERROR, whoever starts it; then it is started once more.
 */
final class Starting {
    private static final String INTERNAL_ERROR = "1359";
    private static final int TRIES = 3;

    /** A JVM of version 21 or later warns, on its standard output, of what this system lacks. */
    static final String WITHOUT_WARNINGS = "-XX:-PrintWarnings";

    /** From here on a JVM warns when a library is loaded, unless it is told that this is meant. */
    private static final int WARNS_OF_NATIVES = 24;

    private Starting() {
    }

    /** The command that runs a program in a JVM like this one. */
    static List<String> java(String program, String... arguments) {
        List<String> command = new ArrayList<>(List.of(System.getProperty("java.home") + "\\bin\\java.exe",
                WITHOUT_WARNINGS));
        if (Runtime.version().feature() >= WARNS_OF_NATIVES) {
            command.add("--enable-native-access=ALL-UNNAMED");
        }
        command.addAll(List.of("-Dwinutil.library=" + System.getProperty("winutil.library"), "-cp",
                System.getProperty("java.class.path"), program));
        command.addAll(List.of(arguments));
        return command;
    }

    /** Starts a process and gives what stands for it. */
    @FunctionalInterface
    interface Start<T> {
        T process() throws IOException;
    }

    static <T> T process(Start<T> start) throws IOException {
        for (int tried = 1;; tried++) {
            try {
                return start.process();
            } catch (IOException e) {
                if (tried == TRIES || !e.getMessage().contains(INTERNAL_ERROR)) {
                    throw e;
                }
                System.out.println("Starting a process once more: " + e.getMessage());
            }
        }
    }
}
