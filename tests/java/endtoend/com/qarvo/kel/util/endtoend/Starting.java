package com.qarvo.kel.util.endtoend;

import java.io.IOException;

/**
 * Starts processes. Now and then, once in some thousand times, a new process of this system ends before its program
 * begins, and starting it fails with ERROR_INTERNAL_ERROR, whoever starts it; then it is started once more.
 */
final class Starting {
    private static final String INTERNAL_ERROR = "1359";
    private static final int TRIES = 3;

    private Starting() {
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
