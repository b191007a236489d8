package com.qarvo.kel.util;

/**
 * Takes the network connections that {@link WindowsUtil#getNetUsed} finds, containers with what is in them.
 *
 * <p>The native method finds {@code addEntry} by name and signature, so a collector need not implement this interface;
 * it is here so that one can be written without looking them up. It is called on the thread that asks, before that call
 * returns.
 */
@FunctionalInterface
public interface NetworkCollector {
    /**
     * Takes one connection; what is missing is empty. An exception thrown here ends the call and reaches its caller.
     *
     * @param scope {@code connected} and the like, or {@code unknown} and a number
     * @param type {@code disk} and the like, or {@code unknown} and a number
     * @param displayType {@code share} and the like, or {@code unknown} and a number
     * @param usage made of {@code " connectable"} and {@code " container"}, each with its leading blank
     * @param localName the drive letter with its colon
     * @param remoteName such as <code>\\server\share</code>
     * @param provider the network's own name
     */
    void addEntry(String scope, String type, String displayType, String usage, String localName, String remoteName,
            String provider);
}
