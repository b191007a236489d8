package com.qarvo.winutil.backup;

import com.qarvo.winutil.backup.Inventory.Host;
import com.qarvo.winutil.backup.Inventory.Section;
import com.qarvo.winutil.backup.Inventory.Volume;
import com.qarvo.winutil.backup.NativeInventory.Disk;
import com.qarvo.winutil.backup.NativeInventory.MemoryModule;
import com.qarvo.winutil.backup.NativeInventory.Processor;
import java.io.PrintWriter;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.function.Function;

/** An inventory in tables for people, and as JSON for programs. */
final class InventoryReport {
    private static final double GIBIBYTE = 1L << 30;

    private InventoryReport() {
    }

    static void print(Inventory inventory, PrintWriter out) {
        Host host = inventory.host();
        Table facts = new Table().left("Host").left("");
        facts.row("Name", host.name());
        facts.row("Model", host.model());
        facts.row("Motherboard", host.motherboardUuid());
        facts.row("Windows", host.windows());
        facts.print(out);
        failures(host.errors(), out);

        Table processors = new Table().left("Processors").left("Name").left("Architecture").right("MHz")
                .right("Cores").right("Logical");
        for (Processor processor : inventory.processors().items()) {
            processors.row(processor.device(), processor.name().strip(), processor.architecture(),
                    count(processor.megahertz()), count(processor.cores()), count(processor.logicalProcessors()));
        }
        print(inventory.processors(), processors, out);

        Table memory = new Table().left("Memory").right("Size").right("MHz");
        for (MemoryModule module : inventory.memory().items()) {
            memory.row(module.slot(), size(module.bytes()), count(module.megahertz()));
        }
        print(inventory.memory(), memory, out);

        Table disks = new Table().left("Disks").left("Serial number").left("");
        for (Disk disk : inventory.disks().items()) {
            disks.row(disk.device(), disk.serialNumber().strip(), mark(disk.system()));
        }
        print(inventory.disks(), disks, out);

        Table volumes = new Table().left("Volumes").left("Label").left("File system").right("Size").right("Free")
                .left("");
        for (Volume volume : inventory.volumes().items()) {
            volumes.row(volume.root(), volume.label(), volume.fileSystem(), size(volume.size()),
                    volume.size() == 0 ? "" : gibibytes(volume.free()), mark(volume.system()));
        }
        print(inventory.volumes(), volumes, out);
    }

    static String json(Inventory inventory) {
        Host host = inventory.host();
        Map<String, Object> sections = new LinkedHashMap<>();
        sections.put("host", fields("name", known(host.name()), "model", known(host.model()), "motherboardUuid",
                known(host.motherboardUuid()), "windows", host.windows(), "errors", host.errors()));
        sections.put("processors", section(inventory.processors(), processor -> fields(
                "device", known(processor.device()), "manufacturer", known(processor.manufacturer()),
                "name", known(processor.name()), "architecture", known(processor.architecture()),
                "megahertz", known(processor.megahertz()), "description", known(processor.description()),
                "cores", known(processor.cores()), "logicalProcessors", known(processor.logicalProcessors()))));
        sections.put("memory", section(inventory.memory(), module -> fields("slot", known(module.slot()),
                "bytes", known(module.bytes()), "megahertz", known(module.megahertz()))));
        sections.put("disks", section(inventory.disks(), disk -> fields("device", disk.device(),
                "serialNumber", disk.serialNumber(), "system", disk.system())));
        sections.put("volumes", section(inventory.volumes(), volume -> fields("root", volume.root(),
                "label", known(volume.label()), "fileSystem", known(volume.fileSystem()),
                "size", known(volume.size()), "free", volume.size() == 0 ? null : volume.free(),
                "system", volume.system())));
        return Json.text(sections);
    }

    private static void print(Section<?> section, Table table, PrintWriter out) {
        out.println();
        table.print(out);
        if (section.items().isEmpty() && section.errors().isEmpty()) {
            out.println("  none found");
        }
        failures(section.errors(), out);
    }

    private static void failures(List<String> errors, PrintWriter out) {
        for (String error : errors) {
            out.println("  failed: " + error);
        }
    }

    private static <T> Map<String, Object> section(Section<T> section, Function<T, Map<String, Object>> fields) {
        return fields("items", section.items().stream().map(fields).toList(), "errors", section.errors());
    }

    /** A map of names and values in this order. */
    private static Map<String, Object> fields(Object... namesAndValues) {
        Map<String, Object> fields = new LinkedHashMap<>();
        for (int i = 0; i < namesAndValues.length; i += 2) {
            fields.put((String) namesAndValues[i], namesAndValues[i + 1]);
        }
        return fields;
    }

    private static Object known(String text) {
        return text.isEmpty() ? null : text;
    }

    private static Object known(long number) {
        return number == 0 ? null : number;
    }

    private static String count(long number) {
        return number == 0 ? "" : Long.toString(number);
    }

    private static String size(long bytes) {
        return bytes == 0 ? "" : gibibytes(bytes);
    }

    private static String gibibytes(long bytes) {
        return String.format(Locale.ROOT, "%.1f GiB", bytes / GIBIBYTE);
    }

    private static String mark(boolean system) {
        return system ? "system" : " ";
    }
}
