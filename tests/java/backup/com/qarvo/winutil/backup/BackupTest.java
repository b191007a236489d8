package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.util.List;
import java.util.Random;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class BackupTest {
    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    @Test
    void storesWhatAFileIs() {
        files.node("C:\\src\\a.txt").modified = 1234567890123L;
        files.node("C:\\src\\a.txt").attributes = 0x23;

        Bed.Result result = bed.backup();

        assertEquals(0, result.code(), result.err());
        ManifestEntry entry = entry("a.txt");
        assertEquals(new ManifestEntry(Type.FILE, "a.txt", 5, 1234567890123L, 0x23, Bed.sha256("alpha"),
                entry.content(), "", FakeFiles.SDDL), entry);
        assertEquals("alpha", files.text("C:\\store\\data\\00000\\0000000" + entry.content()));
    }

    @Test
    void storesTheSourceItselfAndEachDirectoryBeforeWhatItHolds() {
        bed.backup();

        assertEquals(List.of("", "a.txt", "sub", "sub\\b.txt", "sub\\empty"),
                manifest().stream().map(ManifestEntry::path).toList());
    }

    @Test
    void summarisesWhatWasMoved() {
        Bed.Result result = bed.backup();

        assertTrue(result.out().startsWith("Backed up 3 files, 2 folders, 0 links, 9 bytes in "), result.out());
        assertTrue(result.out().strip().endsWith("; nothing left out."), result.out());
        assertEquals("", result.err());
    }

    @Test
    void anEmptyFileNeedsNoContentInTheStore() {
        bed.backup();

        assertEquals(0, entry("sub\\empty").content());
        assertEquals(Bed.sha256(""), entry("sub\\empty").sha256());
        assertEquals(2, files.below("C:\\store\\data\\00000").size());
    }

    @Test
    void theManifestGetsItsNameWhenItIsOnTheDisk() {
        bed.backup();

        List<String> calls = files.calls;
        String last = calls.get(calls.size() - 1);
        assertTrue(last.startsWith("rename C:\\store\\manifest-unfinished-"), last);
        assertTrue(last.endsWith(" C:\\store\\manifest.txt"), last);
        assertTrue(calls.get(calls.size() - 2).startsWith("flush C:\\store\\manifest-unfinished-"), calls.toString());
    }

    @Test
    void oneUnreadableFileIsReportedAndDoesNotStopThePass() {
        files.unreadable.add("C:\\src\\a.txt");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: [CreateFileW] (32) Sharing violation.\n", result.err());
        assertTrue(result.out().contains(" 4 bytes "), result.out());
        assertTrue(result.out().contains("; 1 left out."), result.out());
        assertNull(entry("a.txt"));
        assertNotNull(entry("sub\\b.txt"));
    }

    @Test
    void aFileThatFailsInTheMiddleLeavesNothingInTheStore() {
        files.addFile("C:\\src\\big", "x".repeat(1500));
        files.failingReads.add("C:\\src\\big");

        Bed.Result result = bed.run("backup", "--block-size=512", "C:\\src", "C:\\store");

        assertEquals(1, result.code());
        assertTrue(result.err().startsWith("left out: C:\\src\\big: [ReadFile] (23) "), result.err());
        assertTrue(result.out().contains(" 9 bytes "), result.out());
        assertEquals(2, files.below("C:\\store\\data\\00000").size());
        assertEquals(2, entry("sub\\b.txt").content(), "its number is used again");
    }

    @Test
    void aFolderThatCannotBeListedIsReportedAndDoesNotStopThePass() {
        files.unlistable.add("C:\\src\\sub");
        files.addDirectory("C:\\src\\zoo");
        files.addFile("C:\\src\\zoo\\z", "z");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\sub: it cannot be listed: Access denied.\n", result.err());
        assertNotNull(entry("sub"));
        assertNotNull(entry("zoo\\z"));
    }

    @Test
    void ofAListingThatBreaksOffTheFirstPartIsStoredAndTheRestReported() {
        files.breakingLists.add("C:\\src\\sub");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\sub: it cannot be listed to the end: Data error.\n", result.err());
        assertNotNull(entry("sub\\b.txt"));
        assertNull(entry("sub\\empty"));
    }

    @Test
    void aDescriptorThatCannotBeReadIsReportedAndTheFileStored() {
        files.withoutSecurity.add("C:\\src\\a.txt");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: its security descriptor cannot be read: Access denied.\n",
                result.err());
        assertEquals(ManifestEntry.UNREAD, entry("a.txt").security());
    }

    @Test
    void aFolderWithoutADescriptorIsReportedAndEntered() {
        files.node("C:\\src").security = "";
        files.withoutSecurity.add("C:\\src\\sub");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src: its security descriptor cannot be read: the system gives none\n"
                + "left out: C:\\src\\sub: its security descriptor cannot be read: Access denied.\n", result.err());
        assertNotNull(entry("sub\\b.txt"));
    }

    @Test
    void theRightsOfAFolderAreAskedForWhereItsRecordLeavesThemOut() {
        files.recordsLackRightsOfDirectories = true;

        Bed.Result result = bed.backup();

        assertEquals(0, result.code(), result.err());
        assertEquals(FakeFiles.SDDL, entry("sub").security());
        assertEquals(FakeFiles.SDDL, entry("").security());
    }

    @Test
    void theMarkerOfARestoreThatWasNotFinishedIsLeftOutAndReported() {
        files.addFile("C:\\src\\restore-unfinished-2", "");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\restore-unfinished-2: it marks a restore that was not finished; what is"
                + " missing there is missing in the backup\n", result.err());
        assertNull(entry("restore-unfinished-2"));
    }

    @Test
    void descriptorsAreNotReadWhenTheyAreNotWanted() {
        files.withoutSecurity.add("C:\\src\\a.txt");

        Bed.Result result = bed.run("backup", "--no-security", "C:\\src", "C:\\store");

        assertEquals(0, result.code(), result.err());
        assertTrue(manifest().stream().allMatch(e -> e.security().isEmpty()));
    }

    @Test
    void thePrivilegeIsAskedForFirst() {
        bed.backup();

        assertEquals("privilege backup", files.calls.get(0));
    }

    @Test
    void namesThatCouldNotBeRestoredAreReported() {
        files.addFile("C:\\src\\aux.c", "x");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\aux.c: its name is that of a device\n", result.err());
    }

    @Test
    void oddNamesSurvive() {
        files.addFile("C:\\src\\dot.", "1");
        files.addFile("C:\\src\\space ", "2");
        files.addFile("C:\\src\\\uD83D\uDE00", "3");
        files.addFile("C:\\src\\half\uD83D", "4");

        assertEquals(0, bed.backup().code());

        for (String name : List.of("dot.", "space ", "\uD83D\uDE00", "half\uD83D")) {
            assertNotNull(entry(name), name);
        }
    }

    @ParameterizedTest
    @ValueSource(ints = {0, 1, 511, 512, 513, 1024, 5000})
    void unbufferedReadingTakesFilesOfAnySize(int size) {
        byte[] content = new byte[size];
        new Random(size).nextBytes(content);
        files.addFile("C:\\src\\sized", "").content = content;

        Bed.Result result = bed.run("backup", "--unbuffered", "--block-size", "1K", "C:\\src", "C:\\store");

        assertEquals(0, result.code(), result.err());
        ManifestEntry entry = entry("sized");
        assertEquals(size, entry.size());
        if (size > 0) {
            String stored = String.format("C:\\store\\data\\00000\\%08d", entry.content());
            assertArrayEquals(content, files.node(stored).content);
        }
    }

    @ParameterizedTest
    @CsvSource({"511, 1", "512, 2", "513, 2", "1023, 2", "1024, 3"})
    void nothingIsReadBehindAShortBlock(int size, int reads) {
        files.addFile("C:\\other\\sized", "").content = new byte[size];
        files.addDirectory("C:\\other");

        bed.run("backup", "--block-size", "512", "C:\\other", "C:\\store");

        assertEquals(reads, files.reads);
    }

    @Test
    void contentsAreSpreadOverDirectories() {
        for (int i = 0; i < 1001; i++) {
            files.addFile("C:\\src\\sub\\f" + i, "x");
        }

        bed.backup();

        assertNotNull(files.node("C:\\store\\data\\00001\\00001000"));
        assertNotNull(files.node("C:\\store\\data\\00001\\00001003"));
    }

    @Test
    void aFullDiskEndsTheBackupAndLeavesNoFinishedStore() {
        files.freeBytes = 7;

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertEquals("The store C:\\store cannot be written, and the backup is not finished: [WriteFile] (112) Disk"
                + " full.\n", result.err());
        assertNull(files.node("C:\\store\\manifest.txt"));
        assertEquals(List.of("C:\\store\\data\\00000\\00000001"), files.below("C:\\store\\data\\00000"));
    }

    @Test
    void aDiskThatTakesAPartAndSaysNothingIsFullToo() {
        files.freeBytes = 7;
        files.shortWrites = true;

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("(112) Disk full."), result.err());
        assertNull(files.node("C:\\store\\manifest.txt"));
    }

    @Test
    void aDiskThatTakesNothingAndSaysNothingIsFullToo() {
        files.idleWrites = true;

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("the disk takes nothing more"), result.err());
    }

    @Test
    void aContentThatDidNotArriveWholeEndsTheBackup() {
        files.losses.add("C:\\store\\data");

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("only 4 of 5 bytes arrived"), result.err());
        assertNull(files.node("C:\\store\\manifest.txt"));
    }

    @Test
    void aManifestThatDidNotArriveWholeIsNoManifest() {
        files.losses.add("C:\\store\\manifest-");

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("bytes arrived in C:\\store\\manifest-unfinished-"), result.err());
        assertNull(files.node("C:\\store\\manifest.txt"));
    }

    @Test
    void aManifestThatKeepsItsFirstNameIsNoFinishedStore() {
        files.renameFails = true;

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("the manifest cannot be renamed"), result.err());
    }

    @Test
    void aStoreReachedThroughAnotherNameOfTheSourceIsNoticed() {
        // D: shows the same folder as C:\src, and no comparison of paths can know.
        files.addDirectory("C:\\src\\sub\\store");
        files.addDirectory("C:\\d");
        files.mirrors.put("C:\\src\\sub\\store", "C:\\d\\store");

        Bed.Result result = bed.run("backup", "C:\\src", "C:\\d\\store");

        assertEquals(2, result.code());
        assertEquals("The store C:\\d\\store must not lie inside the source C:\\src.\n", result.err());
        assertNull(files.node("C:\\d\\store\\manifest.txt"));
    }

    @Test
    void ofTwoBackupsIntoOneFolderTheSecondGivesWay() {
        files.before.put("C:\\store\\data", () -> {
            files.addDirectory("C:\\store\\data");
            files.addFile("C:\\store\\manifest-unfinished-1-2", "the other's");
        });

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertEquals("Something else is writing to C:\\store; a backup needs a folder of its own.\n", result.err());
        assertEquals(List.of("C:\\store\\data", "C:\\store\\manifest-unfinished-1-2"), files.below("C:\\store"));
    }

    @Test
    void aContentThatSomebodyElseHasMadeStays() {
        String content = "C:\\store\\data\\00000\\00000001";
        files.before.put(content, () -> files.addFile(content, "the other's"));

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("(80) File exists."), result.err());
        assertEquals("the other's", files.text(content));
    }

    @Test
    void stoppingItEndsItAndLeavesNoFinishedStore() {
        files.whileReading.put("C:\\src\\a.txt", bed.stop::stop);

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertEquals("Stopped before the end.\n", result.err());
        assertNull(files.node("C:\\store\\manifest.txt"));
        assertEquals(List.of(), files.below("C:\\store\\data\\00000"));
    }

    private List<ManifestEntry> manifest() {
        return bed.manifest();
    }

    private ManifestEntry entry(String path) {
        return bed.entry(path);
    }
}
