package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.Kernel32Util;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import java.io.File;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.file.FileStore;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.AbstractList;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Set;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Volumes and drives of the machine, with the system itself and java.nio as witnesses. */
class VolumesTest extends EndToEnd {
    private static final int DRIVE_NO_ROOT_DIR = 1;

    /** A root that no drive has. */
    private static String freeRoot() {
        Set<String> taken = new HashSet<>(Kernel32Util.getLogicalDriveStrings());
        for (char letter = 'Y'; letter > 'C'; letter--) {
            if (!taken.contains(letter + ":\\")) {
                return letter + ":\\";
            }
        }
        throw new IllegalStateException("all letters are taken");
    }

    private static String smallVolume() {
        String root = System.getProperty("winutil.test.volume");
        assumeTrue(root != null, "no small volume: mounting is not allowed here");
        return root;
    }

    private static String text(char[] buffer) {
        int length = 0;
        while (buffer[length] != 0) {
            length++;
        }
        return new String(buffer, 0, length);
    }

    /** The label of a volume without what the shell makes of it. */
    private static String plainLabel(String root) {
        char[] label = new char[261];
        assertTrue(Kernel32.INSTANCE.GetVolumeInformation(root, label, 261, null, null, null, null, 0));
        return text(label);
    }

    private static String fileSystem(String root) {
        char[] name = new char[261];
        assertTrue(Kernel32.INSTANCE.GetVolumeInformation(root, null, 0, null, null, null, name, 261));
        return text(name);
    }

    /** Each volume by its first mount point with a drive letter, or else by its name. */
    private static List<String> volumes() {
        List<String> volumes = new ArrayList<>();
        char[] name = new char[261];
        HANDLE search = Kernel32.INSTANCE.FindFirstVolume(name, name.length);
        assertFalse(WinBase.INVALID_HANDLE_VALUE.equals(search));
        do {
            volumes.add(Kernel32Util.getVolumePathNamesForVolumeName(text(name)).stream()
                    .filter(path -> path.startsWith(":\\", 1)).findFirst().orElse(text(name)));
        } while (Kernel32.INSTANCE.FindNextVolume(search, name, name.length));
        Kernel32.INSTANCE.FindVolumeClose(search);
        return volumes;
    }

    @Test
    void theVolumesAreListedByTheirDriveLettersOrNames() {
        List<String> collector = new ArrayList<>();
        util.listPartitions(collector);

        assertEquals(volumes(), collector);
        assertTrue(collector.contains("C:\\"), collector.toString());
    }

    @Test
    void anyCollectionTakesTheVolumes() {
        Set<String> collector = new HashSet<>();
        util.listPartitions(collector);
        assertEquals(new HashSet<>(volumes()), collector);
        // No collection at all.
        util.listPartitions("text");
    }

    @Test
    void whatACollectionThrowsEndsTheListing() {
        RuntimeException enough = new IllegalStateException("enough");
        int[] calls = new int[1];
        AbstractList<Object> collector = new AbstractList<>() {
            @Override
            public boolean add(Object volume) {
                calls[0]++;
                throw enough;
            }

            @Override
            public Object get(int index) {
                throw new IndexOutOfBoundsException(index);
            }

            @Override
            public int size() {
                return 0;
            }
        };
        assertSame(enough, assertThrowsExactly(IllegalStateException.class, () -> util.listPartitions(collector)));
        assertEquals(1, calls[0]);
    }

    @Test
    void aMissingDiskIsAFileNotFound() {
        List<String> collector = new ArrayList<>();
        assertFails(FileNotFoundException.class, Witness.systemText(FILE_NOT_FOUND),
                () -> util.listNTFSPartitions("\\\\.\\PhysicalDrive97", collector));
        assertEquals(List.of(), collector);
    }

    @ParameterizedTest
    @ValueSource(strings = {"\\\\.\\PhysicalDrive", "", "C:\\", "\\\\.\\PhysicalDrive3000000000"})
    void aDiskNeedsANumberAtTheEndOfItsPath(String path) {
        List<String> collector = new ArrayList<>();
        assertFails(IOException.class, Witness.systemText(PATH_NOT_FOUND),
                () -> util.listNTFSPartitions(path, collector));
        assertEquals(List.of(), collector);
    }

    @Test
    void whatIsNoDiskHasNoPartitions() throws IOException {
        Path file = Files.createFile(work().resolve("disk1"));
        List<String> collector = new ArrayList<>();
        IOException thrown = assertThrowsExactly(IOException.class,
                () -> util.listNTFSPartitions(file.toString(), collector));
        Files.delete(file);
        assertFalse(thrown.getMessage().isBlank());
        assertNotEquals(Witness.systemText(PATH_NOT_FOUND), thrown.getMessage(), "no number was found");
        assertEquals(List.of(), collector);
    }

    @Test
    void aPathIsMountedWhereTheSystemSays() throws IOException {
        for (String path : List.of("C:\\windows\\system32", "C:\\no such folder\\x", work().toString())) {
            char[] volume = new char[512];
            assertTrue(Kernel32.INSTANCE.GetVolumePathName(path, volume, volume.length));
            assertEquals(text(volume), util.getVolumeName(path));
        }
        assertEquals("", util.getVolumeName(""));
    }

    @Test
    void aVolumeHasNtfsWhenTheSystemSaysSo() {
        for (String root : Kernel32Util.getLogicalDriveStrings()) {
            assertEquals(fileSystem(root).contains("NTFS"), util.isNTFSVolume(root + "some folder\\x"), root);
        }
        assertFalse(util.isNTFSVolume(freeRoot()));
        assertFalse(util.isNTFSVolume(""));
    }

    @Test
    void theSystemVolumeHasTheLetterOfTheWindowsFolder() {
        assertEquals(System.getenv("SystemRoot").substring(0, 1).toUpperCase(),
                util.getSystemVolumeDriveLetter().toUpperCase());
    }

    @Test
    void aVolumeIsShownWithItsLabelAndLetter() {
        String label = util.getVolumeLabel("C:\\");
        assertTrue(label.endsWith("(C:)"), label);
        assertTrue(label.startsWith(plainLabel("C:\\")), label);
    }

    @Test
    void aLabelThatIsSetIsTheLabel() throws IOException {
        String root = smallVolume();
        String before = plainLabel(root);
        // Where Wine keeps it, to be read when the drive appears the next time.
        Path kept = Path.of(root, ".windows-label");
        try {
            assertTrue(util.setVolumeLabel(root, "Tape 7"));
            assertEquals("Tape 7", Files.exists(kept) ? Files.readString(kept).strip() : plainLabel(root));
        } finally {
            util.setVolumeLabel(root, before);
            Files.deleteIfExists(kept);
        }
    }

    @Test
    void aVolumeThatIsNotThereTakesNoLabel() {
        assertFalse(util.setVolumeLabel(freeRoot(), "Tape 7"));
    }

    @Test
    void aDriveIsOfTheKindThatTheSystemSays() {
        for (String root : Kernel32Util.getLogicalDriveStrings()) {
            assertEquals(Kernel32.INSTANCE.GetDriveType(root), util.getDriveType(root), root);
        }
        assertEquals(DRIVE_NO_ROOT_DIR, util.getDriveType(freeRoot()));
    }

    @Test
    void aVolumeHasTheSpaceThatJavaSees() throws IOException {
        String root = smallVolume();
        FileStore store = Files.getFileStore(Path.of(root));
        assertEquals(1 << 20, util.getTotalDiskSpace(root));
        assertEquals(store.getTotalSpace(), util.getTotalDiskSpace(root));
        assertEquals(store.getUnallocatedSpace(), util.getFreeDiskSpace(root));

        Path file = Path.of(root, "64 KiB");
        Files.write(file, new byte[1 << 16]);
        long free = util.getFreeDiskSpace(root);
        Files.delete(file);
        assertEquals(1 << 16, util.getFreeDiskSpace(root) - free);
    }

    @Test
    void whatIsNotThereHasNoSpace() {
        assertEquals(0, util.getTotalDiskSpace(freeRoot()));
        assertEquals(0, util.getFreeDiskSpace(freeRoot() + "folder"));
        assertEquals(0, util.getFreeDiskSpace("\\\\no-such-server\\share"));
    }

    @Test
    void theDrivesAreTheRootsThatJavaSees() {
        assertArrayEquals(Kernel32Util.getLogicalDriveStrings().toArray(), util.getLogicalDrives());
        List<String> drives = List.of(util.getLogicalDrives());
        for (File root : File.listRoots()) {
            assertTrue(drives.contains(root.getPath()), root + " " + drives);
        }
        assertTrue(Arrays.stream(util.getLogicalDrives()).allMatch(root -> root.matches("[A-Z]:\\\\")));
    }
}
