package com.qarvo.winutil.backup;

import java.io.IOException;
import java.util.List;
import java.util.function.Consumer;

/**
 * What this client asks of the system about the computer; {@link WindowsNativeInventory} passes it on to the native
 * methods. Texts are empty and numbers 0 where the system does not know; what was handed over before a failure is good.
 */
interface NativeInventory {
    /** One processor. */
    record Processor(String device, String manufacturer, String name, String architecture, long megahertz,
            String description, int cores, int logicalProcessors) {
    }

    /** One memory module. */
    record MemoryModule(String slot, int megahertz, long bytes) {
    }

    /** One physical disk; the serial number with the blanks that the disk gives. */
    record Disk(String device, String serialNumber, boolean system) {
    }

    /** A version of Windows, as it shows itself to this process. */
    record Version(int major, int minor, int productType) {
    }

    /** Gives the name of the computer. */
    String hostName();

    /** Gives manufacturer and model of the computer. */
    String model() throws IOException;

    /** Gives the UUID of the motherboard. */
    String motherboardUuid() throws IOException;

    /** Gives the version of Windows. */
    Version version();

    /** Hands over every processor. */
    void processors(Consumer<Processor> found) throws IOException;

    /** Hands over every memory module. */
    void memoryModules(Consumer<MemoryModule> found) throws IOException;

    /** Hands over every physical disk whose serial number is known. */
    void disks(Consumer<Disk> found) throws IOException;

    /** Gives all volumes, each by its drive letter ({@code C:\}) or, without one, by its volume name. */
    List<String> volumes();

    /** Gives the letter of the drive with the Windows folder. */
    String systemDriveLetter();

    /** Gives the name that the shell shows for a volume; often it ends with the drive letter in parentheses. */
    String volumeName(String root);

    /** Tells whether a volume has the file system NTFS. */
    boolean isNtfs(String root);

    /** Gives the name of the file system of a volume that has not NTFS. */
    String otherFileSystem(String root);

    /** Gives the size of a volume in bytes. */
    long size(String root);

    /** Gives the free room of a volume in bytes. */
    long free(String root);
}
