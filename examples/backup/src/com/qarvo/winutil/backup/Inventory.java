package com.qarvo.winutil.backup;

import com.qarvo.winutil.backup.NativeInventory.Disk;
import com.qarvo.winutil.backup.NativeInventory.MemoryModule;
import com.qarvo.winutil.backup.NativeInventory.Processor;
import com.qarvo.winutil.backup.NativeInventory.Version;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.function.Consumer;

/** What a computer is made of, section by section. A question that fails is noted in its section, and ends no other. */
record Inventory(Host host, Section<Processor> processors, Section<MemoryModule> memory, Section<Disk> disks,
        Section<Volume> volumes) {
    /** The computer as a whole; texts that are not known are empty. */
    record Host(String name, String model, String motherboardUuid, String windows, List<String> errors) {
    }

    /** One volume; {@code size} is 0 when it is not known, and {@code free} then means nothing. */
    record Volume(String root, String label, String fileSystem, long size, long free, boolean system) {
    }

    /** Things of one kind, and the reasons why there may be more than these. */
    record Section<T>(List<T> items, List<String> errors) {
    }

    private interface Question {
        String ask() throws IOException;
    }

    private interface Listing<T> {
        void list(Consumer<T> found) throws IOException;
    }

    /** Asks the system everything. */
    static Inventory of(NativeInventory system) {
        return new Inventory(host(system), list(system::processors), list(system::memoryModules), list(system::disks),
                volumes(system));
    }

    /** Tells whether every question was answered. */
    boolean isWhole() {
        return host.errors.isEmpty() && processors.errors.isEmpty() && memory.errors.isEmpty()
                && disks.errors.isEmpty() && volumes.errors.isEmpty();
    }

    private static Host host(NativeInventory system) {
        List<String> errors = new ArrayList<>();
        String name = system.hostName();
        if (name.isEmpty()) {
            errors.add("name: the system does not tell it");
        }
        String model = answer("model", system::model, errors);
        String uuid = answer("motherboard", system::motherboardUuid, errors);
        return new Host(name, model, uuid, windows(system.version()), errors);
    }

    private static String answer(String what, Question question, List<String> errors) {
        try {
            return question.ask();
        } catch (IOException e) {
            errors.add(what + ": " + Reasons.of(e));
            return "";
        }
    }

    private static String windows(Version version) {
        String number = version.major() + "." + version.minor();
        return switch (version.productType()) {
            case 1 -> number + " workstation";
            case 2 -> number + " domain controller";
            case 3 -> number + " server";
            default -> number;
        };
    }

    private static <T> Section<T> list(Listing<T> listing) {
        Section<T> section = new Section<>(new ArrayList<>(), new ArrayList<>());
        try {
            listing.list(section.items::add);
        } catch (IOException e) {
            section.errors.add(Reasons.of(e));
        }
        return section;
    }

    private static Section<Volume> volumes(NativeInventory system) {
        Section<Volume> section = new Section<>(new ArrayList<>(), new ArrayList<>());
        String systemRoot = system.systemDriveLetter() + ":\\";
        for (String root : system.volumes()) {
            String fileSystem = system.isNtfs(root) ? "NTFS" : system.otherFileSystem(root);
            section.items.add(new Volume(root, label(system.volumeName(root), root), fileSystem, system.size(root),
                    system.free(root), root.equalsIgnoreCase(systemRoot)));
        }
        if (section.items.isEmpty()) {
            // Every Windows has at least the volume that it was started from.
            section.errors.add("the system lists no volume");
        }
        return section;
    }

    /** Takes the drive letter off the name that the shell shows. */
    private static String label(String name, String root) {
        String label = name.strip();
        String letter = "(" + root.substring(0, Math.min(2, root.length())) + ")";
        return label.toUpperCase(Locale.ROOT).endsWith(letter.toUpperCase(Locale.ROOT))
                ? label.substring(0, label.length() - letter.length()).strip()
                : label;
    }
}
