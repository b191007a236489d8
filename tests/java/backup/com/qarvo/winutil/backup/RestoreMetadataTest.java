package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.Test;

class RestoreMetadataTest {
    private static final String OTHER = "O:S-1-5-21-1-2-3-500G:BUD:P(A;OICI;FA;;;BA)(D;;FW;;;WD)";
    private static final String DENIED = "Fail to set security descriptor: (5) Access denied.";

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
        for (String path : List.of("\\a.txt", "\\sub")) {
            assertEquals(files.node("C:\\src" + path).security, files.node("C:\\out" + path).security, path);
        }
        assertEquals("security 4 C:\\out", files.calls.get(files.calls.size() - 1), "a missing owner is not set");
        assertTrue(files.node("C:\\out").security.endsWith("D:(A;;FA;;;WD)"));
    }

    @Test
    void thePrivilegesAreAskedForBeforeAnythingIsMade() {
        backupAndRestore();

        int asked = files.calls.indexOf("privilege restore");
        assertTrue(asked >= 0 && asked < files.calls.indexOf("mkdir-closed C:\\out"), files.calls.toString());
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
        assertEquals("left out: C:\\out\\a.txt: its security descriptor cannot be set: " + DENIED
                + "; it cannot be closed to others either\n", result.err());
        assertEquals("alpha", files.text("C:\\out\\a.txt"));
        assertEquals("beta", files.text("C:\\out\\sub\\b.txt"));
        assertTrue(result.out().contains("; 1 left out."), result.out());
    }

    @Test
    void rightsAloneAreNotTriedTwiceButClosedInstead() {
        source.security = "D:(A;;FA;;;WD)";
        files.unsecurable.add("C:\\out\\a.txt");

        backupAndRestore();

        assertEquals(2, files.calls.stream().filter(c -> c.equals("security 4 C:\\out\\a.txt")).count());
    }

    @Test
    void aDescriptorThatIsNoneIsReportedAndNotGivenToTheSystem() {
        assertClosed("S:x", "its security descriptor in the store is no such thing, and not set");
    }

    @Test
    void aDescriptorWithoutAccessRightsOpensNothing() {
        assertClosed("O:WDG:WD", "its security descriptor in the store has no access rights");
    }

    @Test
    void whatHadAnUnreadableDescriptorIsClosedToOthers() {
        assertClosed(ManifestEntry.UNREAD, "its security descriptor could not be read for the backup");
    }

    @Test
    void anEmptyDescriptorBesideOthersIsAnUnreadableOneOfAnOlderBackup() {
        assertClosed("-", "its security descriptor could not be read for the backup");
    }

    private void assertClosed(String security, String reason) {
        bed.withManifest(Bed.directoryLine("."), withSecurity(Bed.directoryLine("sub"), security),
                withSecurity(Bed.fileLine("sub/a", 0, Bed.sha256(""), 0), security));

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\sub\\a: " + reason + "; it is closed to others\nleft out: C:\\out\\sub: "
                + reason + "; it is closed to others\n", result.err());
        assertEquals("O:BAG:SYD:P(A;;FA;;;SY)(A;;FA;;;BA)", files.node("C:\\out\\sub\\a").security);
        assertEquals("O:BAG:SYD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)", files.node("C:\\out\\sub").security);
    }

    private static String withSecurity(String line, String security) {
        return line.substring(0, line.lastIndexOf('\t') + 1) + security;
    }

    @Test
    void aBackupWithoutDescriptorsIsRestoredOnRequestOnly() {
        bed.run("backup", "--no-security", "C:\\src", "C:\\store");

        Bed.Result refused = bed.restore();

        assertEquals(new Bed.Result(2, "", "The store C:\\store has no owners and access rights; --no-security restores"
                + " without them.\n"), refused);
        assertNull(files.node("C:\\out"));
        assertEquals(0, bed.run("restore", "--no-security", "C:\\store", "C:\\out").code());
    }

    @Test
    void descriptorsAreLeftAloneOnRequest() {
        bed.backup();

        Bed.Result result = bed.run("restore", "--no-security", "C:\\store", "C:\\out");

        assertEquals(0, result.code(), result.err());
        assertTrue(callsFor("C:\\out").stream().noneMatch(c -> c.startsWith("security") || c.contains("closed")));
        assertTrue(files.isOpenToOthers("C:\\out"));
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
