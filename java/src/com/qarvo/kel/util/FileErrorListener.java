package com.qarvo.kel.util;

/**
 * Hears of files that a native method had to report and pass over, without stopping.
 *
 * <p>The native methods find {@code fireFileErrorEvent} by name and signature, so a listener need not implement this
 * interface; it is here so that one can be written without looking them up. It is called on the thread that made the
 * native call, before that call returns.
 */
public interface FileErrorListener {
    /**
     * Takes one report. An exception thrown here ends the native call and reaches its caller.
     *
     * @param path the file concerned
     * @param message the system's text for what went wrong, line break at the end included
     */
    void fireFileErrorEvent(String path, String message);
}
