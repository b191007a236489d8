package com.qarvo.kel.util;

/**
 * Takes the processors that {@link WindowsUtil#getProcessorInfo} finds.
 *
 * <p>The native method finds {@code addCpuInfo} by name and signature, so a collector need not implement this
 * interface; it is here so that one can be written without looking them up. It is called on the thread that asks,
 * before that call returns.
 */
@FunctionalInterface
public interface ProcessorCollector {
    /**
     * Takes one processor; what WMI does not know of it is empty or 0. An exception thrown here ends the query and
     * reaches its caller.
     *
     * @param deviceId the name of the socket's processor, such as {@code CPU0}
     * @param manufacturer who made it
     * @param name its name
     * @param architecture {@code x86}, {@code x64}, {@code Unknown} and the like
     * @param megahertz its clock rate now
     * @param description its family, model and stepping
     * @param cores how many cores it has
     * @param logicalProcessors how many threads run on it at once
     */
    void addCpuInfo(String deviceId, String manufacturer, String name, String architecture, long megahertz,
            String description, int cores, int logicalProcessors);
}
