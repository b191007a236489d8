package com.qarvo.kel.util;

/**
 * Takes the memory modules that {@link WindowsUtil#getMemoryInfo} finds.
 *
 * <p>The native method finds {@code addMemoryInfo} by name and signature, so a collector need not implement this
 * interface; it is here so that one can be written without looking them up. It is called on the thread that asks,
 * before that call returns.
 */
@FunctionalInterface
public interface MemoryCollector {
    /**
     * Takes one module; what WMI does not know of it is empty or 0. An exception thrown here ends the query and reaches
     * its caller.
     *
     * @param slot where it is plugged in
     * @param megahertz its clock rate
     * @param bytes its size
     */
    void addMemoryInfo(String slot, int megahertz, long bytes);
}
