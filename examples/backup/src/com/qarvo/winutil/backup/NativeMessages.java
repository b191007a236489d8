package com.qarvo.winutil.backup;

/** The message pipe of this computer; {@link WindowsNativeMessages} passes everything on to the native methods. */
interface NativeMessages {
    /** Gives the name of the pipe. */
    String pipe();

    /**
     * Serves one client, and blocks until one has come and gone.
     *
     * @return the bytes of its last message up to the first zero, as modified UTF-8; empty when nothing arrived, and
     *         when there was no pipe at all
     */
    String serve();

    /**
     * Sends one message and waits for the answer.
     *
     * @return true for an answer that sorts before "OK"; false for every other answer, and for every failure
     */
    boolean isRefused(String message);
}
