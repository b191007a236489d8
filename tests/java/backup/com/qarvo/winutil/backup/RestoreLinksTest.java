package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class RestoreLinksTest {
    private static final String REFUSED = ": the link cannot be made: [CreateJunctionPoint] (50) Not supported.\n";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @ParameterizedTest
    @CsvSource({"16, C:\\elsewhere", "16, \\\\server\\share\\x", "17, ..\\a.txt", "17, C:\\src\\a.txt",
        "18, sub\\..\\sub", "18, C:\\nowhere"})
    void aLinkComesBackWithItsKindAndTheTargetAsItStands(byte kind, String target) {
        files.addLink("C:\\src\\l", kind, target);

        Bed.Result result = backupAndRestore();

        assertEquals(0, result.code(), result.err());
        assertEquals(kind, files.node("C:\\out\\l").kind);
        assertEquals(target, files.node("C:\\out\\l").target);
        assertTrue(result.out().contains("1 links"), result.out());
    }

    @Test
    void linksAreMadeAfterAllFilesAndBeforeTheTimesOfDirectories() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\elsewhere");

        backupAndRestore();

        List<String> calls = files.calls;
        assertTrue(calls.indexOf("link C:\\out\\j") > calls.indexOf("close C:\\out\\sub\\b.txt"));
        assertTrue(calls.indexOf("link C:\\out\\j") < calls.indexOf("time C:\\out\\sub"));
    }

    @Test
    void aLinkGetsItsTimeAndAttributesAndNothingThatWouldBeSetThroughIt() {
        FakeFiles.Node link = files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\src\\sub");
        link.modified = 77;
        link.attributes = 0x4C12 | 0x400;

        Bed.Result result = backupAndRestore();

        assertEquals(0, result.code(), result.err());
        assertEquals(77, files.node("C:\\out\\j").modified);
        assertEquals(0x412, files.node("C:\\out\\j").attributes);
        assertEquals(List.of("link C:\\out\\j", "time C:\\out\\j", "attributes C:\\out\\j", "link-rights C:\\out\\j"),
                files.calls.stream().filter(c -> c.endsWith(" C:\\out\\j")).toList());
    }

    @Test
    void aLinkGetsTheAccessRightsThatItHadAndNoOwner() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\src\\sub").security = "O:WDG:WDD:(A;;FR;;;AU)";

        Bed.Result result = backupAndRestore();

        assertEquals(0, result.code(), result.err());
        assertEquals("O:BAG:SYD:(A;;FR;;;AU)", files.node("C:\\out\\j").security);
    }

    @Test
    void aLinkWhoseRightsCannotBeSetOrAreUnknownIsReported() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\src\\sub");
        files.addLink("C:\\src\\k", WinFile.JUNCTION, "C:\\src\\sub");
        files.withoutSecurity.add("C:\\src\\k");
        files.unsecurable.add("C:\\out\\j");

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\j: its access rights cannot be set, and it is closed to others: Access is"
                + " denied\nleft out: C:\\out\\k: its security descriptor could not be read for the backup; it is"
                + " closed to others\n", result.err());
        assertFalse(files.isOpenToOthers("C:\\out\\k"));
    }

    @Test
    void whatSomebodyElseHasMadeInThePlaceOfALinkStays() {
        files.addLink("C:\\src\\f", WinFile.FILE_SYMBOLIC_LINK, "a.txt");
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\src\\sub");
        files.makesLinks = false;
        files.atEachChange = call -> {
            if (call.equals("link C:\\out\\f")) {
                files.addFile("C:\\out\\f", "the other's");
            }
        };

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("the other's", files.text("C:\\out\\f"));
        assertNull(files.node("C:\\out\\j"), "the directory of a junction that was not made is removed");
    }

    @Test
    void ofAJunctionThatCannotBeMadeNothingStaysAndThePassGoesOn() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\elsewhere");
        files.addLink("C:\\src\\sub\\z", WinFile.FILE_SYMBOLIC_LINK, "C:\\elsewhere");
        files.makesLinks = false;

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\j" + REFUSED + "left out: C:\\out\\sub\\z" + REFUSED, result.err());
        assertTrue(files.calls.contains("rmdir C:\\out\\j"), "the directory that was to be the junction");
        assertNull(files.node("C:\\out\\j"));
        assertTrue(result.out().contains("0 links"), result.out());
        assertTrue(files.calls.contains("time C:\\out"), "folders are finished all the same");
    }

    @Test
    void aDirectoryThatStaysOfAJunctionIsReported() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\elsewhere");
        files.makesLinks = false;
        files.undeletable.add("C:\\out\\j");

        Bed.Result result = backupAndRestore();

        assertEquals("left out: C:\\out\\j" + REFUSED
                + "left out: C:\\out\\j: what was begun of it cannot be removed: the system refuses\n", result.err());
    }

    @Test
    void aLinkThatTheSystemOnlyClaimsToHaveMadeIsReported() {
        files.linksVanish = true;
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\elsewhere");

        Bed.Result result = backupAndRestore();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\out\\j: the link cannot be made: the system says that it was made, but it is not"
                + " there\n", result.err());
        assertTrue(result.out().contains("0 links"), result.out());
    }

    @Test
    void aLinkThatWouldLeadElsewhereIsReportedAndRemoved() {
        files.linksLeadTo = "C:\\Device\\x";
        files.addLink("C:\\src\\f", WinFile.FILE_SYMBOLIC_LINK, "\\Device\\x");

        Bed.Result result = backupAndRestore();

        assertEquals("left out: C:\\out\\f: the link cannot be made: it would lead to C:\\Device\\x instead of"
                + " \\Device\\x\n", result.err());
        assertNull(files.node("C:\\out\\f"));
    }

    @Test
    void aLinkDoesNotReplaceWhatIsThere() {
        bed.withManifest(Bed.directoryLine("."), Bed.fileLine("name", 0, Bed.sha256(""), 0),
                "file-link\tNAME\t0\t2024-05-01T10:00:00Z\t0x00000420\t-\t0\tx\t-");

        Bed.Result result = bed.restore();

        assertEquals("left out: C:\\out\\NAME: something of that name is there already\n", result.err());
        assertEquals(WinFile.FILE, files.node("C:\\out\\name").kind);
        assertFalse(files.calls.contains("link C:\\out\\NAME"));
    }

    @Test
    void nothingIsWrittenThroughALinkOfAHostileManifest() {
        bed.withManifest(Bed.directoryLine("."),
                "junction\tx\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\tC:\\\\src\t-",
                Bed.fileLine("x/evil", 0, Bed.sha256(""), 0));

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertNull(files.node("C:\\out"));
        assertNotNull(files.node("C:\\src"));
    }

    private Bed.Result backupAndRestore() {
        bed.backup();
        return bed.restore();
    }
}
