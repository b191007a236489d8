package com.qarvo.winutil.backup;

import com.qarvo.kel.util.DiskCollector;
import com.qarvo.kel.util.MemoryCollector;
import com.qarvo.kel.util.ProcessorCollector;
import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;
import java.util.function.Consumer;

/** The computer as the native methods of {@link WindowsUtil} describe it. */
final class WindowsNativeInventory implements NativeInventory {
    private final WindowsUtil util = new WindowsUtil();

    @Override
    public String hostName() {
        return util.getNetBIOSComputerName();
    }

    @Override
    public String model() throws IOException {
        return util.getSystemModel();
    }

    @Override
    public String motherboardUuid() throws IOException {
        return util.getMotherboardUUID();
    }

    @Override
    public Version version() {
        return new Version(util.getMajorVersion(), util.getMinorVersion(), util.getProductType());
    }

    @Override
    public void processors(Consumer<Processor> found) throws IOException {
        ProcessorCollector collector = (deviceId, manufacturer, name, architecture, megahertz, description, cores,
                logicalProcessors) -> found.accept(new Processor(deviceId, manufacturer, name, architecture, megahertz,
                        description, cores, logicalProcessors));
        util.getProcessorInfo(collector);
    }

    @Override
    public void memoryModules(Consumer<MemoryModule> found) throws IOException {
        MemoryCollector collector = (slot, megahertz, bytes) -> found.accept(new MemoryModule(slot, megahertz, bytes));
        util.getMemoryInfo(collector);
    }

    @Override
    public void disks(Consumer<Disk> found) throws IOException {
        DiskCollector collector = (device, serialNumber, systemDisk) ->
                found.accept(new Disk(device, serialNumber, systemDisk));
        util.getHardDiskSN(collector);
    }

    @Override
    public List<String> volumes() {
        List<String> volumes = new ArrayList<>();
        util.listPartitions(volumes);
        return volumes;
    }

    @Override
    public String systemDriveLetter() {
        return Objects.requireNonNullElse(util.getSystemVolumeDriveLetter(), "");
    }

    @Override
    public String volumeName(String root) {
        return util.getVolumeLabel(root);
    }

    @Override
    public boolean isNtfs(String root) {
        return util.isNTFSVolume(root);
    }

    @Override
    public String otherFileSystem(String root) {
        try {
            return Files.getFileStore(Path.of(root)).type();
        } catch (IOException | InvalidPathException e) {
            // A drive without a medium, or a volume without a letter, which is no path to Java.
            return "";
        }
    }

    @Override
    public long size(String root) {
        return util.getTotalDiskSpace(root);
    }

    @Override
    public long free(String root) {
        return util.getFreeDiskSpace(root);
    }
}
