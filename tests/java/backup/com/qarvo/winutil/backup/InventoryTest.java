package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.winutil.backup.FakeInventory.Drive;
import com.qarvo.winutil.backup.NativeInventory.Disk;
import com.qarvo.winutil.backup.NativeInventory.MemoryModule;
import com.qarvo.winutil.backup.NativeInventory.Processor;
import com.qarvo.winutil.backup.NativeInventory.Version;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class InventoryTest {
    private static final long GIB = 1L << 30;

    private final Bed bed = new Bed();
    private final FakeInventory computer = bed.inventory;

    @BeforeEach
    void buildTheComputer() {
        computer.processors.add(new Processor("CPU0", "Maker", "Fast One  ", "x64", 3600, "Family 6", 8, 16));
        computer.modules.add(new MemoryModule("DIMM 0", 3200, 8 * GIB));
        computer.modules.add(new MemoryModule("DIMM 1", 0, 16 * GIB));
        computer.disks.add(new Disk("\\\\.\\PHYSICALDRIVE0", "  S123", true));
        computer.disks.add(new Disk("\\\\.\\PHYSICALDRIVE1", "S4", false));
        computer.drives.put("C:\\", new Drive("Windows (C:)", true, "", 200 * GIB, 50 * GIB));
        computer.drives.put("E:\\", new Drive("", false, "", 0, 0));
        computer.drives.put("\\\\?\\Volume{0}\\", new Drive("Rescue", false, "FAT32", GIB, 0));
    }

    private String json() {
        Bed.Result result = bed.run("inventory", "--json");
        return result.out().replace(System.lineSeparator(), "\n");
    }

    @Test
    void theTablesShowEverythingAndMarkTheSystemDisk() {
        Bed.Result result = bed.run("inventory");

        assertEquals("""
              Host
              Name         OFFICE-7
              Model        Contoso Workstation 7
              Motherboard  4C4C4544-0031-3010-8048-B4C04F503832
              Windows      6.1 workstation

              Processors  Name      Architecture   MHz  Cores  Logical
              CPU0        Fast One  x64           3600      8       16

              Memory      Size   MHz
              DIMM 0   8.0 GiB  3200
              DIMM 1  16.0 GiB     -

              Disks               Serial number
              \\\\.\\PHYSICALDRIVE0  S123           system
              \\\\.\\PHYSICALDRIVE1  S4

              Volumes         Label    File system       Size      Free
              C:\\             Windows  NTFS         200.0 GiB  50.0 GiB  system
              E:\\             -        -                    -         -
              \\\\?\\Volume{0}\\  Rescue   FAT32          1.0 GiB   0.0 GiB
            """, result.out().replace(System.lineSeparator(), "\n"));
        assertEquals("", result.err());
        assertEquals(0, result.code());
    }

    @Test
    void jsonHasEverythingAsItIs() {
        computer.modules.remove(1);
        computer.disks.remove(1);
        computer.drives.remove("\\\\?\\Volume{0}\\");

        assertEquals("""
            {
              "host": {
                "name": "OFFICE-7",
                "model": "Contoso Workstation 7",
                "motherboardUuid": "4C4C4544-0031-3010-8048-B4C04F503832",
                "windows": "6.1 workstation",
                "errors": []
              },
              "processors": {
                "items": [
                  {
                    "device": "CPU0",
                    "manufacturer": "Maker",
                    "name": "Fast One  ",
                    "architecture": "x64",
                    "megahertz": 3600,
                    "description": "Family 6",
                    "cores": 8,
                    "logicalProcessors": 16
                  }
                ],
                "errors": []
              },
              "memory": {
                "items": [
                  {
                    "slot": "DIMM 0",
                    "bytes": 8589934592,
                    "megahertz": 3200
                  }
                ],
                "errors": []
              },
              "disks": {
                "items": [
                  {
                    "device": "\\\\\\\\.\\\\PHYSICALDRIVE0",
                    "serialNumber": "  S123",
                    "system": true
                  }
                ],
                "errors": []
              },
              "volumes": {
                "items": [
                  {
                    "root": "C:\\\\",
                    "label": "Windows",
                    "fileSystem": "NTFS",
                    "size": 214748364800,
                    "free": 53687091200,
                    "system": true
                  },
                  {
                    "root": "E:\\\\",
                    "label": null,
                    "fileSystem": null,
                    "size": null,
                    "free": null,
                    "system": false
                  }
                ],
                "errors": []
              }
            }
            """, json());
    }

    @ParameterizedTest
    @CsvSource({"model, 6, '  failed: model: '", "motherboardUuid, 6, '  failed: motherboard: '",
        "processors, 9, '  failed: '", "memoryModules, 13, '  failed: '", "disks, 17, '  failed: '"})
    void aQuestionThatFailsIsReportedInItsSectionAndTheOthersAreShown(String question, int line, String start) {
        computer.failures.put(question, "Could not connect [ROOT\\CIMV2]\r\n");

        Bed.Result result = bed.run("inventory");

        assertEquals(1, result.code());
        List<String> lines = result.out().lines().toList();
        assertTrue(lines.contains(start + "Could not connect [ROOT\\CIMV2]"), result.out());
        assertEquals(line, 1 + lines.indexOf(start + "Could not connect [ROOT\\CIMV2]"), result.out());
        for (String shown : List.of("OFFICE-7", "CPU0", "DIMM 1", "PHYSICALDRIVE1", "Windows")) {
            assertTrue(result.out().contains(shown), shown);
        }
    }

    @Test
    void everyQuestionMayFailAtOnce() {
        for (String question : List.of("model", "motherboardUuid", "processors", "memoryModules", "disks")) {
            computer.failures.put(question, "no " + question);
        }
        computer.name = "";
        computer.processors.clear();
        computer.modules.clear();
        computer.disks.clear();
        computer.drives.clear();

        Bed.Result result = bed.run("inventory");

        assertEquals(1, result.code());
        assertEquals(List.of("  failed: name: the system does not tell it", "  failed: model: no model",
                "  failed: motherboard: no motherboardUuid", "  failed: no processors", "  failed: no memoryModules",
                "  failed: no disks", "  failed: the system lists no volume"),
                result.out().lines().filter(line -> line.startsWith("  failed")).toList());
        assertTrue(json().contains("\"items\": [],\n    \"errors\": [\n      \"no disks\"\n    ]"), json());
        assertEquals(1, bed.run("inventory", "--json").code());
    }

    @Test
    void aSectionWithoutAnythingSaysSo() {
        computer.disks.clear();

        Bed.Result result = bed.run("inventory");

        assertEquals(0, result.code());
        List<String> lines = result.out().lines().toList();
        int title = lines.indexOf("  Disks  Serial number");
        assertEquals("  none found", lines.get(title + 1));
    }

    @ParameterizedTest
    @CsvSource({"1, 6.1 workstation", "2, 6.1 domain controller", "3, 6.1 server", "-1, 6.1"})
    void theKindOfWindowsIsNamed(int productType, String expected) {
        computer.version = new Version(6, 1, productType);

        assertTrue(json().contains("\"windows\": \"" + expected + "\""), json());
    }

    @ParameterizedTest
    @CsvSource({"' (C:)', null", "'Data (c:)', '\"Data\"'", "'(D:)', '\"(D:)\"'", "'Plain', '\"Plain\"'"})
    void theLabelIsWhatTheShellShowsWithoutTheDriveLetter(String shown, String label) {
        computer.drives.clear();
        computer.drives.put("C:\\", new Drive(shown, true, "", GIB, GIB));

        assertTrue(json().contains("\"label\": " + label + ","), json());
    }

    @Test
    void aFullVolumeHasNoRoomWhichIsNotTheSameAsUnknownRoom() {
        assertTrue(json().contains("\"size\": 1073741824,\n        \"free\": 0,"), json());
    }

    @Test
    void noVolumeIsTheSystemsWhenItsDriveIsNotKnown() {
        computer.systemDrive = "";

        assertEquals(1, json().split("\"system\": true", -1).length - 1, "the disk alone");
    }

    @Test
    void theSystemsTextsCannotDisturbTheTerminal() {
        computer.disks.add(new Disk("\\\\.\\PHYSICALDRIVE2", "S\u0007\u001B[2J", false));

        Bed.Result result = bed.run("inventory");

        assertTrue(result.out().contains("  S\\u0007\\u001B[2J\n".replace("\n", System.lineSeparator())), result.out());
    }

    @Test
    void jsonEscapesWhatMustNotStandInAString() {
        Map<String, Object> map = new LinkedHashMap<>();
        map.put("a \"b\" \\", "\t\r\n\u0000\u2028\u200F\uD800 \u00E9 \uD83D\uDCBE");
        map.put("none", null);
        map.put("list", Arrays.asList(1, -2L, true, List.of(), Map.of()));

        assertEquals("""
            {
              "a \\"b\\" \\\\": "\\u0009\\u000D\\u000A\\u0000\\u2028\\u200F\\uD800 \u00E9 \uD83D\uDCBE",
              "none": null,
              "list": [
                1,
                -2,
                true,
                [],
                {}
              ]
            }""", Json.text(map));
    }
}
