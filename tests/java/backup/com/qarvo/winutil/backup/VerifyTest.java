package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class VerifyTest {
    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @BeforeEach
    void backUp() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\elsewhere");
        bed.backup();
    }

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    @Test
    void findsNoDifferenceInTheSourceAndInARestoredTree() {
        bed.restore();

        for (String tree : new String[] {"C:\\src", "C:\\out"}) {
            Bed.Result result = bed.verify(tree);
            assertEquals(0, result.code(), result.err());
            assertTrue(result.out().startsWith("Compared 3 files, 2 folders, 1 links, 9 bytes "), result.out());
            assertTrue(result.out().contains("; nothing different or unreadable."), result.out());
        }
    }

    @Test
    void findsAnotherContentOfTheSameSize() {
        files.node("C:\\src\\a.txt").content = "ALPHA".getBytes();

        expectDifference("C:\\src\\a.txt: its content is another one");
    }

    @Test
    void findsAnotherSize() {
        files.node("C:\\src\\a.txt").content = "alphabet".getBytes();

        expectDifference("C:\\src\\a.txt: it has 8 bytes instead of 5");
    }

    @Test
    void findsAnotherTimeToTheMillisecond() {
        files.node("C:\\src\\sub").modified = 1;
        bed.files.node("C:\\src\\a.txt").modified = 0;

        Bed.Result result = bed.verify("C:\\src");

        assertTrue(result.err().contains("differs: C:\\src\\a.txt: its time is 1970-01-01T00:00:00Z instead of "),
                result.err());
        assertTrue(result.err().contains("differs: C:\\src\\sub: its time is 1970-01-01T00:00:00.001Z instead of "),
                result.err());
        assertTrue(result.out().contains("; 2 different or unreadable."), result.out());
    }

    @Test
    void findsOtherAttributesButNotTheArchiveBit() {
        files.node("C:\\src\\a.txt").attributes = 0;
        files.node("C:\\src\\sub\\b.txt").attributes |= 1;

        expectDifference("C:\\src\\sub\\b.txt: its attributes are --r--a-- instead of -----a--");
    }

    @ParameterizedTest
    @ValueSource(ints = {0x820, 0x4020})
    void findsThatAFileWasCompressedOrEncrypted(int attributes) {
        files.node("C:\\src\\a.txt").attributes = attributes;

        Bed.Result result = bed.verify("C:\\src");

        assertTrue(result.err().startsWith("differs: C:\\src\\a.txt: its attributes are "), result.err());
        assertEquals(1, result.code());
    }

    @Test
    void asksForThePrivilegeToReadEverything() {
        files.calls.clear();

        bed.verify("C:\\src");

        assertEquals("privilege backup", files.calls.get(0));
    }

    @Test
    void findsAnotherOwnerAndOtherRights() {
        files.node("C:\\src\\a.txt").security = "O:WDG:SYD:(A;;FA;;;SY)(A;;FR;;;WD)";
        files.node("C:\\src\\sub").security = "O:BAG:SYD:P(A;;FA;;;SY)";

        Bed.Result result = bed.verify("C:\\src");

        assertEquals("differs: C:\\src\\a.txt: its owner is WD instead of BA\n"
                + "differs: C:\\src\\sub: its access rights are P(A;;FA;;;SY) instead of (A;;FA;;;SY)(A;;FR;;;WD)\n",
                result.err());
        assertEquals(1, result.code());
    }

    @Test
    void doesNotCompareDescriptorsOnRequest() {
        files.node("C:\\src\\a.txt").security = "O:WDG:SYD:(A;;FA;;;SY)(A;;FR;;;WD)";
        files.withoutSecurity.add("C:\\src\\sub");

        assertEquals(0, bed.run("verify", "--no-security", "C:\\store", "C:\\src").code());
    }

    @Test
    void reportsADescriptorThatItCannotRead() {
        files.withoutSecurity.add("C:\\src\\a.txt");

        Bed.Result result = bed.verify("C:\\src");

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: its security descriptor cannot be read: Access denied.\n",
                result.err());
    }

    @Test
    void showsADescriptorThatItDoesNotUnderstandWhereItIsAnotherOne() {
        files.node("C:\\src\\a.txt").security = "S:new";

        expectDifference("C:\\src\\a.txt: its security descriptor is S:new instead of " + FakeFiles.SDDL);
    }

    @Test
    void aDescriptorThatTheBackupCouldNotReadIsUnknownAndNotEqual() {
        files.node("C:\\src").security = "";
        bed.run("backup", "C:\\src", "C:\\second");
        files.node("C:\\src").security = FakeFiles.SDDL;

        Bed.Result result = bed.run("verify", "C:\\second", "C:\\src");

        assertEquals(1, result.code());
        assertEquals("unknown: C:\\src: its security descriptor could not be read for the backup, so that there is"
                + " nothing to compare with\n", result.err());
    }

    @Test
    void aBackupWithoutDescriptorsIsComparedWithoutThem() {
        bed.run("backup", "--no-security", "C:\\src", "C:\\second");

        assertEquals(0, bed.run("verify", "C:\\second", "C:\\src").code());
    }

    @Test
    void aTreeWhoseRestoreWasNotFinishedDiffers() {
        files.addFile("C:\\src\\restore-unfinished", "");

        Bed.Result result = bed.verify("C:\\src");

        assertEquals(1, result.code());
        assertTrue(result.err().startsWith("differs: C:\\src: a restore into it was not finished\n"), result.err());
    }

    @Test
    void findsAnotherTimeAndOtherAttributesOfALink() {
        files.node("C:\\src\\j").attributes = 0x412;
        files.node("C:\\src\\j").modified = 5;

        Bed.Result result = bed.verify("C:\\src");

        assertTrue(result.err().startsWith("differs: C:\\src\\j: its time is 1970-01-01T00:00:00.005Z instead of "),
                result.err());
        assertTrue(result.err().endsWith("differs: C:\\src\\j: its attributes are dl-h---- instead of dl------\n"),
                result.err());
    }

    @Test
    void ofALinkNeitherRightsNorCompressionCount() {
        files.node("C:\\src\\j").security = "O:WD";
        files.node("C:\\src\\j").attributes |= 0x4800;

        assertEquals(0, bed.verify("C:\\src").code());
    }

    @Test
    void findsWhatIsMissing() {
        files.delete("C:\\src\\a.txt");

        expectDifference("C:\\src\\a.txt: it is missing");
    }

    @Test
    void findsWhatIsNotInTheStore() {
        files.addFile("C:\\src\\sub\\new", "x");

        expectDifference("C:\\src\\sub\\new: it is not in the store");
    }

    @Test
    void findsAFileInPlaceOfADirectory() {
        files.delete("C:\\src\\a.txt");
        files.addDirectory("C:\\src\\a.txt");

        expectDifference("C:\\src\\a.txt: it is a directory instead of a file");
    }

    @Test
    void findsALinkThatLeadsElsewhere() {
        files.node("C:\\src\\j").target = "C:\\other";

        expectDifference("C:\\src\\j: it leads to C:\\other instead of C:\\elsewhere");
    }

    @Test
    void findsALinkOfAnotherKind() {
        files.node("C:\\src\\j").kind = WinFile.DIRECTORY_SYMBOLIC_LINK;

        expectDifference("C:\\src\\j: it is a directory-link instead of a junction");
    }

    @Test
    void reportsWhatItCannotRead() {
        files.unreadable.add("C:\\src\\a.txt");

        Bed.Result result = bed.verify("C:\\src");

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: [CreateFileW] (32) Sharing violation.\n", result.err());
    }

    private void expectDifference(String line) {
        Bed.Result result = bed.verify("C:\\src");

        assertEquals("differs: " + line + "\n", result.err());
        assertEquals(1, result.code());
    }
}
