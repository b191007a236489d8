package com.qarvo.winutil.backup;

import java.io.IOException;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Consumer;

/** A computer that a test puts together; each question fails with the message that is set for it. */
final class FakeInventory implements NativeInventory {
    /** What the natives say of a volume. */
    record Drive(String name, boolean ntfs, String otherFileSystem, long size, long free) {
    }

    /** The message of each question that fails, by the name of its method. */
    final Map<String, String> failures = new HashMap<>();
    final List<Processor> processors = new ArrayList<>();
    final List<MemoryModule> modules = new ArrayList<>();
    final List<Disk> disks = new ArrayList<>();
    final Map<String, Drive> drives = new LinkedHashMap<>();
    String name = "OFFICE-7";
    Version version = new Version(6, 1, 1);
    String systemDrive = "C";

    @Override
    public String hostName() {
        return name;
    }

    @Override
    public String model() throws IOException {
        failIfSet("model");
        return "Contoso Workstation 7";
    }

    @Override
    public String motherboardUuid() throws IOException {
        failIfSet("motherboardUuid");
        return "4C4C4544-0031-3010-8048-B4C04F503832";
    }

    @Override
    public Version version() {
        return version;
    }

    @Override
    public void processors(Consumer<Processor> found) throws IOException {
        handOver("processors", processors, found);
    }

    @Override
    public void memoryModules(Consumer<MemoryModule> found) throws IOException {
        handOver("memoryModules", modules, found);
    }

    @Override
    public void disks(Consumer<Disk> found) throws IOException {
        handOver("disks", disks, found);
    }

    @Override
    public List<String> volumes() {
        return List.copyOf(drives.keySet());
    }

    @Override
    public String systemDriveLetter() {
        return systemDrive;
    }

    @Override
    public String volumeName(String root) {
        return drives.get(root).name();
    }

    @Override
    public boolean isNtfs(String root) {
        return drives.get(root).ntfs();
    }

    @Override
    public String otherFileSystem(String root) {
        return drives.get(root).otherFileSystem();
    }

    @Override
    public long size(String root) {
        return drives.get(root).size();
    }

    @Override
    public long free(String root) {
        return drives.get(root).free();
    }

    /** What there is comes before the failure, as with the natives. */
    private <T> void handOver(String question, List<T> items, Consumer<T> found) throws IOException {
        items.forEach(found);
        failIfSet(question);
    }

    private void failIfSet(String question) throws IOException {
        if (failures.containsKey(question)) {
            throw new IOException(failures.get(question));
        }
    }
}
