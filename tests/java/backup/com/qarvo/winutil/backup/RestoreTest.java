package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class RestoreTest {
    private static final String NOT_FINISHED = "C:\\out holds a restore that was not finished; what was not"
            + " finished in it is closed to others.\n";
    private static final String CONTENT = "C:\\store\\data\\00000\\00000001";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    @Test
    void bringsBackNamesContentsTimesAndAttributes() {
        files.node("C:\\src\\a.txt").attributes = 0x27;
        files.node("C:\\src\\sub").attributes = 0x12;
        files.addDirectory("C:\\src\\sub\\none");

        backupAndRestore();

        assertEquals(files.below("C:\\src"),
                files.below("C:\\out").stream().map(p -> p.replace("\\out", "\\src")).toList());
        for (String path : files.below("C:\\src")) {
            FakeFiles.Node source = files.node(path);
            FakeFiles.Node restored = files.node(path.replace("\\src", "\\out"));
            assertEquals(new String(source.content), new String(restored.content), path);
            assertEquals(source.modified, restored.modified, path);
            assertEquals(source.attributes, restored.attributes, path);
        }
        assertEquals(files.node("C:\\src").modified, files.node("C:\\out").modified);
    }

    @Test
    void setsTheTimesAndRightsOfDirectoriesLastAndInnerOnesFirst() {
        files.node("C:\\src\\sub").attributes = 0x11;

        backupAndRestore();

        List<String> calls = files.calls;
        assertEquals(List.of("time C:\\out\\sub", "attributes C:\\out\\sub", "security 7 C:\\out\\sub",
                "delete C:\\out\\restore-unfinished", "time C:\\out", "security 7 C:\\out"),
                calls.subList(calls.size() - 6, calls.size()));
    }

    @Test
    void reservesTheSizeOfAFileAndNoneForAnEmptyOne() {
        backupAndRestore();

        assertTrue(files.calls.contains("create C:\\out\\sub\\b.txt 4"), files.calls.toString());
        assertTrue(files.calls.contains("create C:\\out\\sub\\empty 0"), files.calls.toString());
    }

    @Test
    void aFileThatIsNotAsItWasIsReportedAndRemoved() {
        bed.backup();
        files.node(CONTENT).content = "ALPHA".getBytes();

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a.txt: its content in the store is damaged: the SHA-256 is another one\n",
                result.err());
        assertNull(files.node("C:\\out\\a.txt"));
        assertEquals("beta", files.text("C:\\out\\sub\\b.txt"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"alph", "alphabet", ""})
    void aContentOfAnotherSizeIsReportedBeforeTheFileIsMade(String content) {
        bed.backup();
        files.node(CONTENT).content = content.getBytes();

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertTrue(result.err().contains("it has " + content.length() + " bytes instead of 5"), result.err());
        assertTrue(files.calls.stream().noneMatch(c -> c.startsWith("create C:\\out\\a.txt")));
    }

    @Test
    void aContentThatIsMissingIsReported() {
        bed.backup();
        files.delete(CONTENT);

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertTrue(result.err().startsWith("left out: C:\\out\\a.txt: its content in the store cannot be read: "),
                result.err());
        assertNull(files.node("C:\\out\\a.txt"));
    }

    @Test
    void aFileWhoseReadingFailsInTheMiddleIsRemoved() {
        files.node("C:\\src\\a.txt").content = "x".repeat(1500).getBytes();
        bed.backup();
        files.failingReads.add(CONTENT);

        Bed.Result result = bed.run("restore", "--block-size=512", "C:\\store", "C:\\out");

        assertEquals(1, result.code());
        assertNull(files.node("C:\\out\\a.txt"));
        assertTrue(files.calls.contains("delete C:\\out\\a.txt"));
    }

    @Test
    void aFileThatArrivedCutOffIsRemoved() {
        bed.backup();
        files.losses.add("C:\\out\\a.txt");

        Bed.Result result = bed.restore();

        assertEquals("left out: C:\\out\\a.txt: only 4 of 5 bytes arrived\n", result.err());
        assertTrue(result.out().contains(" 4 bytes "), result.out());
        assertNull(files.node("C:\\out\\a.txt"));
    }

    @Test
    void aFullDiskEndsTheRestoreAndThePartlyRestoredFileIsRemoved() {
        bed.backup();
        files.whileReading.put(CONTENT, () -> files.freeBytes = 3);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertEquals(NOT_FINISHED + "The disk of the target C:\\out is full, and the restore is not finished:"
                + " [WriteFile] (112) Disk full.\n", result.err());
        assertNull(files.node("C:\\out\\a.txt"));
        assertNotNull(files.node("C:\\store\\manifest.txt"));
    }

    @Test
    void aDiskThatTakesAPartAndSaysNothingIsFullToo() {
        bed.backup();
        files.shortWrites = true;
        files.whileReading.put(CONTENT, () -> files.freeBytes = 3);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().startsWith(NOT_FINISHED + "The disk of the target C:\\out is full"), result.err());
        assertNull(files.node("C:\\out\\a.txt"));
    }

    @Test
    void aFullDiskAtTheReservationLeavesNoEmptyFile() {
        bed.backup();
        files.before.put("C:\\out\\a.txt", () -> files.freeBytes = 4);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("(112)"), result.err());
        assertNull(files.node("C:\\out\\a.txt"));
    }

    @Test
    void anEmptyFileThatSomebodyElseHasJustMadeStays() {
        bed.backup();
        String path = "C:\\out\\sub\\empty";
        files.before.put(path, () -> files.addFile(path, ""));

        Bed.Result result = bed.restore();

        assertEquals("left out: " + path + ": [CreateFileW] (80) File exists.\n", result.err());
        assertNotNull(files.node(path));
    }

    @Test
    void aFullDiskAtADirectoryEndsTheRestore() {
        bed.backup();
        files.before.put("C:\\out\\sub", () -> files.freeBytes = 0);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("[createDir] (112)"), result.err());
    }

    @Test
    void aDirectoryThatCannotBeMadeIsReportedWithAllThatItWouldHold() {
        files.addDirectory("C:\\src\\sub\\inner");
        files.addFile("C:\\src\\sub\\inner\\deep", "x");
        bed.backup();
        files.unreadable.add("C:\\out\\sub");

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        String rest = ": its folder could not be made\n";
        assertEquals("left out: C:\\out\\sub: [createDir] (5) Access denied. , 'C:\\out\\sub'\n"
                + "left out: C:\\out\\sub\\b.txt" + rest + "left out: C:\\out\\sub\\empty" + rest
                + "left out: C:\\out\\sub\\inner" + rest + "left out: C:\\out\\sub\\inner\\deep" + rest, result.err());
        assertEquals("alpha", files.text("C:\\out\\a.txt"));
    }

    @Test
    void ofNamesThatDifferInCaseOnlyTheSecondIsReportedAndTheFirstKept() {
        bed.withManifest(Bed.directoryLine("."), Bed.fileLine("name", 1, Bed.sha256("1"), 1),
                Bed.fileLine("NAME", 1, Bed.sha256("2"), 2), Bed.directoryLine("Dir"), Bed.directoryLine("dir"),
                Bed.fileLine("dir/x", 0, Bed.sha256(""), 0));
        files.addFile("C:\\store\\data\\00000\\00000001", "1");
        files.addFile("C:\\store\\data\\00000\\00000002", "2");

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\NAME: something of that name is there already\n"
                + "left out: C:\\out\\dir: something of that name is there already\n"
                + "left out: C:\\out\\dir\\x: its folder could not be made\n", result.err());
        assertEquals("1", files.text("C:\\out\\name"));
        assertEquals(List.of(), files.below("C:\\out\\Dir"));
    }

    @Test
    void aTimeThatCannotBeSetIsReportedAndTheFileKept() {
        bed.backup();
        files.timesFail = true;

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\a.txt: its time cannot be set\n"), result.err());
        assertEquals("alpha", files.text("C:\\out\\a.txt"));
    }

    @Test
    void theFirstMomentOfTheCalendarCannotBeSetAndIsReported() {
        files.node("C:\\src\\a.txt").modified = -11_644_473_600_000L;

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a.txt: its time cannot be set\n", result.err());
    }

    @Test
    void anEmptyFileThatWasNotEmptyIsReportedAndNotMade() {
        bed.withManifest(Bed.directoryLine("."), Bed.fileLine("a", 0, Bed.sha256("x"), 0));

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a: its content in the store is damaged: the SHA-256 is another one\n",
                result.err());
        assertNull(files.node("C:\\out\\a"));
    }

    @Test
    void restoresIntoAnEmptyFolder() {
        bed.backup();
        files.addDirectory("C:\\out");

        assertEquals(0, bed.restore().code());
    }

    @Test
    void stoppingItRemovesThePartlyRestoredFile() {
        bed.backup();
        files.whileReading.put(CONTENT, bed.stop::stop);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertEquals(NOT_FINISHED + "Stopped before the end.\n", result.err());
        assertNull(files.node("C:\\out\\a.txt"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"../evil", "C:/evil", "/evil", "a\\\\..\\\\..\\\\evil", "nul", "sub/../../evil"})
    void aManifestThatLeadsOutOfTheTargetIsRefusedBeforeAnythingIsMade(String path) {
        bed.withManifest(Bed.directoryLine("."), Bed.fileLine(path, 0, Bed.sha256(""), 0));
        int before = files.below("C:").size();

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().startsWith("C:\\store\\manifest.txt cannot be used: line 3: its path "), result.err());
        assertEquals(before, files.below("C:").size());
        assertNull(files.node("C:\\out"));
    }

    private Bed.Result backupAndRestore() {
        bed.backup();
        return bed.restore();
    }
}
