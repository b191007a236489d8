package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.Test;

class RestoreMetadataTest {
    private static final String OTHER = "O:S-1-5-21-1-2-3-500G:BUD:P(A;OICI;FA;;;BA)(D;;FW;;;WD)";
    private static final String DENIED = "Fail to set security descriptor: (5) Access denied.\n";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;
    private final FakeFiles.Node source = files.node("C:\\src\\a.txt");

    @Test
    void comesAfterTheContentAndInAnOrderThatSpoilsNothing() {
        source.attributes = 0x821;

        backupAndRestore();

        assertEquals(List.of("create C:\\out\\a.txt 5", "write C:\\out\\a.txt", "close C:\\out\\a.txt",
                "compress C:\\out\\a.txt", "time C:\\out\\a.txt", "attributes C:\\out\\a.txt",
                "security 7 C:\\out\\a.txt"), callsFor("C:\\out\\a.txt"));
        assertEquals(source.modified, files.node("C:\\out\\a.txt").modified);
        assertEquals(0x821, files.node("C:\\out\\a.txt").attributes);
    }

    @Test
    void ownersGroupsAndRightsOfFilesAndFoldersComeBack() {
        source.security = OTHER;
        files.node("C:\\src\\sub").security = OTHER.replace("BU", "SY");
        files.node("C:\\src").security = "D:(A;;FA;;;WD)";

        Bed.Result result = backupAndRestore();

        assertEquals(0, result.code(), result.err());
        for (String path : List.of("", "\\a.txt", "\\sub")) {
            assertEquals(files.node("C:\\src" + path).security, files.node("C:\\out" + path).security, path);
        }
        assertTrue(files.calls.contains("security 4 C:\\out"), "a missing owner is not set");
    }

    @Test
    void thePrivilegesAreAskedForBeforeAnythingIsMade() {
        backupAndRestore();

        int asked = files.calls.indexOf("privilege restore");
        assertTrue(asked >= 0 && asked < files.calls.indexOf("mkdir C:\\out"), files.calls.toString());
    }

    @Test
    void rightsAreSetWithoutOwnerAndGroupWhereThoseCannotBeGivenAway() {
        source.security = OTHER;
        files.owned.add("C:\\out\\a.txt");

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a.txt: its owner and group cannot be set, only its access rights: (1307)"
                + " Invalid owner.\n", result.err());
        assertTrue(files.calls.contains("security 4 C:\\out\\a.txt"));
    }

    @Test
    void aDescriptorThatCannotBeSetIsReportedAndThePassGoesOn() {
        files.unsecurable.add("C:\\out\\a.txt");

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a.txt: its security descriptor cannot be set: " + DENIED, result.err());
        assertEquals("alpha", files.text("C:\\out\\a.txt"));
        assertEquals("beta", files.text("C:\\out\\sub\\b.txt"));
        assertTrue(result.out().contains("; 1 left out."), result.out());
    }

    @Test
    void rightsAloneAreNotTriedTwice() {
        source.security = "D:(A;;FA;;;WD)";
        files.unsecurable.add("C:\\out\\a.txt");

        backupAndRestore();

        assertEquals(1, files.calls.stream().filter(c -> c.equals("security 4 C:\\out\\a.txt")).count());
    }

    @Test
    void aDescriptorThatIsNoneIsReportedAndNotGivenToTheSystem() {
        bed.withManifest(Bed.directoryLine("."), Bed.fileLine("a", 0, Bed.sha256(""), 0).replaceFirst("-$", "S:x"));

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a: its security descriptor in the store is no such thing, and not set\n",
                result.err());
        assertTrue(files.calls.stream().noneMatch(c -> c.startsWith("security")));
    }

    @Test
    void aManifestWithoutDescriptorsIsRestoredAsItIs() {
        bed.withManifest(Bed.directoryLine("."), Bed.fileLine("a", 0, Bed.sha256(""), 0));

        Bed.Result result = bed.restore();

        assertEquals(0, result.code(), result.err());
        assertTrue(files.calls.stream().noneMatch(c -> c.startsWith("security")));
    }

    @Test
    void descriptorsAreLeftAloneOnRequest() {
        bed.backup();

        Bed.Result result = bed.run("restore", "--no-security", "C:\\store", "C:\\out");

        assertEquals(0, result.code(), result.err());
        assertTrue(files.calls.stream().noneMatch(c -> c.startsWith("security")));
    }

    @Test
    void attributesThatTheSystemDoesNotTakeAreReported() {
        source.attributes = 0x23;
        files.stubborn.add("C:\\out\\a.txt");

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a.txt: its attributes cannot be set: the system did not take them\n",
                result.err());
        assertTrue(files.calls.contains("security 7 C:\\out\\a.txt"), "the rights are set all the same");
    }

    @Test
    void aFileThatCannotBeCompressedIsReportedAndKept() {
        source.attributes = 0x821;
        files.incompressible.add("C:\\out\\a.txt");

        Bed.Result result = backupAndRestore();

        assertEquals("left out: C:\\out\\a.txt: it cannot be compressed: Fail to compress file: C:\\out\\a.txt\n",
                result.err());
        assertEquals(0x21, files.node("C:\\out\\a.txt").attributes);
        assertEquals("alpha", files.text("C:\\out\\a.txt"));
    }

    @Test
    void aFolderIsCompressedAfterItsFilesSoThatTheyDoNotInheritIt() {
        files.node("C:\\src\\sub").attributes = 0x810;

        backupAndRestore();

        assertTrue(files.calls.indexOf("compress C:\\out\\sub") > files.calls.indexOf("close C:\\out\\sub\\b.txt"));
        assertEquals(0x810, files.node("C:\\out\\sub").attributes);
    }

    @Test
    void aFileThatWasEncryptedIsReported() {
        source.attributes = 0x4020;

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\a.txt: it was encrypted, and is restored without encryption\n", result.err());
        assertEquals("alpha", files.text("C:\\out\\a.txt"));
    }

    private List<String> callsFor(String path) {
        return files.calls.stream().filter(c -> c.contains(path)).toList();
    }

    private Bed.Result backupAndRestore() {
        bed.backup();
        return bed.restore();
    }
}
