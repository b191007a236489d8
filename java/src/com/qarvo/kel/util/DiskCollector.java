package com.qarvo.kel.util;

/**
 * Takes the physical disks that {@link WindowsUtil#getHardDiskSN} finds.
 *
 * <p>The native method finds {@code addDiskInfo} by name and signature, so a collector need not implement this
 * interface; it is here so that one can be written without looking them up. It is called on the thread that asks,
 * before that call returns.
 */
@FunctionalInterface
public interface DiskCollector {
    /**
     * Takes one disk. An exception thrown here ends the query and reaches its caller.
     *
     * @param device the disk, such as {@code \\.\PHYSICALDRIVE0}
     * @param serialNumber as the disk gives it, blanks around it included
     * @param systemDisk whether the Windows folder is on it
     */
    void addDiskInfo(String device, String serialNumber, boolean systemDisk);
}
