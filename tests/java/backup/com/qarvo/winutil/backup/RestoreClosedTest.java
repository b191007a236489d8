package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList.WinFile;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** Who can do what with a target, at each moment of a restore. */
class RestoreClosedTest {
    private static final String OUT = "C:\\out";
    private static final String OWN = "O:S-1-5-21-9-9-9-1009G:SYD:AI(A;OICI;FA;;;WD)";
    /** What of it is changed, and put back. */
    private static final String PUT_BACK = "O:S-1-5-21-9-9-9-1009D:ARAI(A;OICI;FA;;;WD)";
    private static final String CLOSED = "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @BeforeEach
    void backUp() {
        files.addDirectory("C:\\src\\sub\\deep");
        files.addFile("C:\\src\\sub\\deep\\c.txt", "gamma");
        files.addLink("C:\\src\\link", WinFile.FILE_SYMBOLIC_LINK, "a.txt");
        bed.backup();
    }

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    private static String pathOf(String call) {
        return call.replaceFirst("^[^C]*", "").replaceFirst(" [0-9]*$", "");
    }

    /** Looks at the whole target before each change, and for a last time with an empty call. */
    private void watch(List<String> complaints) {
        Set<String> opened = new HashSet<>();
        files.atEachChange = call -> {
            for (String path : files.nodes.keySet().stream().filter(p -> Names.isInside(p, OUT)).toList()) {
                if (files.isOpenToOthers(path) && files.node(path).kind != WinFile.FILE_SYMBOLIC_LINK) {
                    opened.add(path);
                }
            }
            String changed = pathOf(call);
            for (String path : opened) {
                if (changed.equals(path) || changed.startsWith(path + "\\")) {
                    complaints.add(path + " was open to others before: " + call);
                }
            }
        };
    }

    /** Gives what the rights of the target are, each time that something is written into it. */
    private Set<String> rightsWhileWriting() {
        Set<String> seen = new HashSet<>();
        files.atEachChange = call -> {
            if (call.startsWith("write " + OUT)) {
                seen.add(files.node(OUT).security);
            }
        };
        return seen;
    }

    @ParameterizedTest
    @ValueSource(booleans = {false, true})
    void nothingIsOpenToOthersBeforeItIsFinished(boolean existing) {
        if (existing) {
            files.addDirectory(OUT).security = OWN;
        }
        List<String> complaints = new ArrayList<>();
        watch(complaints);
        int before = files.calls.size();
        if (existing) {
            // Its own rights are what others have until it is taken over.
            files.atEachChange = call -> {
                if (call.startsWith("create ")) {
                    watch(complaints);
                    files.atEachChange.accept(call);
                }
            };
        }

        Bed.Result result = bed.restore();

        assertEquals(0, result.code(), result.err());
        assertEquals(List.of(), complaints);
        assertTrue(files.calls.size() - before > 20, "there was something to see");
        for (String path : List.of("", "\\a.txt", "\\sub", "\\sub\\b.txt", "\\sub\\deep", "\\sub\\deep\\c.txt")) {
            assertTrue(files.isOpenToOthers(OUT + path), path + " is as open as it was in the end");
        }
    }

    @Test
    void aNewTargetHasRightsForNobodyWhenItIsMadeAndTheBackupsAtTheVeryEnd() {
        int before = files.calls.size();

        bed.restore();

        List<String> calls = files.calls.subList(before, files.calls.size());
        int made = calls.indexOf("mkdir-closed " + OUT);
        assertEquals(List.of("security 4 " + OUT, "create " + OUT + "\\restore-unfinished 0"),
                calls.subList(made + 1, made + 3));
        assertEquals("security 7 " + OUT, calls.get(calls.size() - 1));
        assertEquals(FakeDisk.SDDL, files.node(OUT).security);
    }

    @Test
    void anExistingTargetIsTakenOverAndGetsItsOwnRightsBack() {
        files.addDirectory(OUT).security = OWN;
        Set<String> seen = rightsWhileWriting();

        Bed.Result result = bed.restore();

        assertEquals(0, result.code(), result.err());
        assertEquals(Set.of("O:BAG:SY" + CLOSED), seen);
        assertEquals(OWN.replace("AI", "ARAI"), files.node(OUT).security, "the group was never changed");
    }

    @Test
    void anAccountThatIsNoAdministratorKeepsItsOwnAccess() {
        files.administrator = false;
        Set<String> seen = rightsWhileWriting();

        Bed.Result result = bed.restore();

        assertEquals(0, result.code(), result.err());
        String account = files.ownAccount;
        assertEquals(Set.of("O:" + account + "G:SY" + CLOSED + "(A;OICI;FA;;;" + account + ")"), seen);
        assertFalse(files.calls.contains("security 1 " + OUT), "whose it is does not change");
    }

    @Test
    void onAnotherMachineAnAdministratorKeepsTheAccessOfTheAccount() {
        files.remote = true;
        Set<String> seen = rightsWhileWriting();

        assertEquals(0, bed.restore().code());

        String account = files.ownAccount;
        assertEquals(Set.of("O:" + account + "G:SY" + CLOSED + "(A;OICI;FA;;;" + account + ")"), seen);
    }

    @ParameterizedTest
    @CsvSource({"S-1-5-19, LS", "S-1-5-20, NS", "S-1-5-21-1-2-3-500, LA"})
    void anAccountThatTheSystemWritesInShortIsRecognised(String account, String written) {
        files.administrator = false;
        files.ownAccount = account;
        files.addDirectory(OUT).security = "O:" + written + "G:SYD:(A;OICI;FA;;;WD)";

        Bed.Result result = bed.restore();

        assertEquals(0, result.code(), result.err());
    }

    @Test
    void aTargetThatCannotBeTakenOverIsLeftAsItIs() {
        files.addDirectory(OUT).security = OWN;
        files.owned.add(OUT);

        Bed.Result result = bed.restore();

        assertEquals(new Bed.Result(2, "", "The target C:\\out cannot be closed to others while it is restored into:"
                + " (1307) Invalid owner.; --no-security restores without owners and rights, and leaves it open.\n"),
                result);
        assertEquals(OWN, files.node(OUT).security);
    }

    @Test
    void whoIsNoAdministratorLeavesTheTargetOfAnotherAccountAsItIs() {
        files.addDirectory(OUT).security = OWN;
        files.administrator = false;

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("restored into: it belongs to another account;"), result.err());
        assertEquals(OWN, files.node(OUT).security);
    }

    @Test
    void ofATargetThatIsNotTakenOverTheRightsAloneAreChangedAndPutBack() {
        files.addDirectory(OUT).security = "O:BAG:SYD:(A;OICI;FA;;;WD)";

        Bed.Result result = bed.restore();

        assertEquals(0, result.code(), result.err());
        assertEquals(List.of("security 4 " + OUT, "security 4 " + OUT),
                files.calls.stream().filter(c -> c.matches("security . C:.out")).toList());
        assertEquals("O:BAG:SYD:(A;OICI;FA;;;WD)", files.node(OUT).security);
    }

    @Test
    void aTargetThatStaysOpenAfterAllIsGivenBack() {
        files.addDirectory(OUT).security = OWN;
        String[] reopened = {"O:S-1-5-21-9-9-9-1009G:SYD:(A;;FA;;;WD)"};
        files.whenHeld.put(OUT, () -> files.node(OUT).security = reopened[0]);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("its rights are " + reopened[0] + " after all; --no-security"), result.err());
        assertEquals(PUT_BACK.replace("D:", "G:SYD:"), files.node(OUT).security);
        assertEquals(List.of(), files.below(OUT));
    }

    @Test
    void aFolderOfSomebodyElseInThePlaceOfANewTargetIsNoticed() {
        files.whenHeld.put(OUT, () -> {
            files.move(OUT, "C:\\moved");
            files.addDirectory(OUT).security = "O:S-1-5-21-9-9-9-1009G:SY" + CLOSED;
        });

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("its rights are O:S-1-5-21-9-9-9-1009"), result.err());
        assertEquals(List.of(), files.below(OUT));
    }

    @Test
    void aNewTargetThatWasMadeOpenIsRefused() {
        files.atEachChange = call -> {
            if (call.equals("security 4 " + OUT)) {
                throw new IllegalStateException("not even closed");
            }
        };
        files.whenMadeClosed = node -> node.security = "O:BAG:SYD:(A;OICI;FA;;;WD)(D;;0xd0156;;;WD)";

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("its rights are O:BAG:SYD:(A;OICI;FA;;;WD)"), result.err());
    }

    @Test
    void aTargetWhoseRightsAreChangedMeanwhileEndsTheRestore() {
        files.addDirectory(OUT).security = OWN;
        files.atEachChange = call -> {
            if (call.equals("close " + OUT + "\\a.txt")) {
                files.node(OUT).security = "O:BAG:SYD:(A;OICI;FA;;;WD)";
            }
        };

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().endsWith("Somebody is changing the rights of the target C:\\out, and the restore is not"
                + " finished: its rights are O:BAG:SYD:(A;OICI;FA;;;WD) after all\n"), result.err());
        assertEquals(List.of(), files.below(OUT + "\\sub"));
    }

    @Test
    void aRestoreThatFindsAnotherOneInItsTargetDoesNotOpenIt() {
        files.addDirectory(OUT).security = OWN;
        files.whenHeld.put(OUT, () -> files.addFile(OUT + "\\restore-unfinished", "the other's"));

        Bed.Result result = bed.restore();

        assertEquals("The target C:\\out cannot be restored into: somebody else is changing it\n", result.err());
        assertFalse(files.isOpenToOthers(OUT));
        assertEquals("the other's", files.text(OUT + "\\restore-unfinished"));
    }

    @Test
    void ofTwoRestoresThatFoundTheTargetEmptyOneKeepsItsMarkerAndItsRights() {
        files.addDirectory(OUT).security = OWN;
        String marker = OUT + "\\restore-unfinished";
        files.before.put(marker, () -> files.addFile(marker, "the other's"));

        Bed.Result result = bed.restore();

        assertEquals("The target C:\\out cannot be restored into: [CreateFileW] (80) File exists.\n", result.err());
        assertEquals("the other's", files.text(marker));
        assertFalse(files.isOpenToOthers(OUT));
    }

    @Test
    void aFolderInThePlaceOfATargetThatWasLetGoToBeCompressedIsNotOpened() {
        files.node("C:\\src").attributes = Win32.FILE_ATTRIBUTE_DIRECTORY | Win32.FILE_ATTRIBUTE_COMPRESSED;
        bed.run("backup", "C:\\src", "C:\\second");
        files.atEachChange = call -> {
            if (call.equals("compress " + OUT)) {
                files.move(OUT, "C:\\moved");
                files.addDirectory(OUT).security = "O:S-1-5-21-9-9-9-1009G:SYD:(A;;FA;;;WD)";
            }
        };

        Bed.Result result = bed.run("restore", "C:\\second", OUT);

        assertEquals(2, result.code());
        assertTrue(result.err().contains("The restore cannot be finished: its rights are O:S-1-5-21-9-9-9-1009"),
                result.err());
        assertFalse(files.isOpenToOthers("C:\\moved"));
    }

    @Test
    void whereTheFileSystemKeepsNoRightsItIsSaidAndNothingIsLeft() {
        files.keepsRights = false;

        Bed.Result result = bed.restore();

        assertEquals(new Bed.Result(2, "", "The target C:\\out cannot be closed to others while it is restored into:"
                + " its rights are O:WDG:WDD:(A;OICI;FA;;;WD) after all; --no-security restores without owners and"
                + " rights, and leaves it open.\n"), result);
        assertNull(files.node(OUT));
        assertEquals(0, bed.run("restore", "--no-security", "C:\\store", OUT).code());
    }

    @Test
    void aTargetWhoseRightsCannotBeSetIsRefused() {
        files.unsecurable.add(OUT);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("(5) Access denied."), result.err());
        assertNull(files.node(OUT));
    }

    @Test
    void anExistingTargetWhoseOwnRightsCannotBeReadIsLeftAlone() {
        files.addDirectory(OUT);
        files.withoutSecurity.add(OUT);
        int before = files.calls.size();

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().startsWith("The target C:\\out cannot be closed to others"), result.err());
        assertTrue(files.calls.subList(before, files.calls.size()).stream().noneMatch(c -> c.contains(OUT)));
    }

    @Test
    void aTargetThatIsALinkIsRefused() {
        files.addDirectory("C:\\elsewhere");
        files.addLink(OUT, WinFile.JUNCTION, "C:\\elsewhere");

        Bed.Result result = bed.restore();

        assertEquals(new Bed.Result(2, "", "The target C:\\out is a link or a mounted volume; a restore needs a folder"
                + " itself.\n"), result);
        assertEquals(List.of(), files.below("C:\\elsewhere"));
    }

    @Test
    void somethingThatAppearsInAnExistingTargetBeforeItIsClosedEndsTheRestore() {
        files.addDirectory(OUT).security = OWN;
        files.atEachChange = call -> {
            if (call.equals("security 4 " + OUT) && files.below(OUT).isEmpty()) {
                files.addFile(OUT + "\\a.txt", "planted");
            }
        };

        Bed.Result result = bed.restore();

        assertEquals("The target C:\\out cannot be restored into: somebody else is changing it\n", result.err());
        assertEquals("planted", files.text(OUT + "\\a.txt"));
        assertEquals(OWN.replace("AI", "ARAI"), files.node(OUT).security);
    }

    @Test
    void aTargetThatCannotBeHeldOpenIsRefused() {
        files.unholdable.add(OUT);

        Bed.Result result = bed.restore();

        assertEquals("The target C:\\out cannot be restored into: [CreateFileW] (32) Sharing violation.\n",
                result.err());
        assertNull(files.node(OUT));
    }

    @Test
    void theTargetAndTheFolderThatIsWrittenIntoCannotBeRenamed() {
        Set<String> held = new HashSet<>();
        files.atEachChange = call -> {
            if (call.startsWith("write " + OUT + "\\sub\\deep\\c.txt") || call.equals("time " + OUT)) {
                List.of(OUT, OUT + "\\sub", OUT + "\\sub\\deep").stream().filter(files::isHeld)
                        .forEach(path -> held.add(call + ": " + path));
            }
        };

        bed.restore();

        String write = "write " + OUT + "\\sub\\deep\\c.txt: " + OUT;
        assertEquals(Set.of(write, write + "\\sub", write + "\\sub\\deep", "time " + OUT + ": " + OUT), held);
    }

    @Test
    void spaceIsReservedOnlyWhereNobodyElseSeesWhatTheDiskHeldBefore() {
        bed.restore();
        bed.run("restore", "--no-security", "C:\\store", "C:\\open");

        assertTrue(files.calls.contains("create C:\\out\\a.txt 5"));
        assertTrue(files.calls.contains("create C:\\open\\a.txt 0"));
        assertEquals("alpha", files.text("C:\\open\\a.txt"));
    }

    @Test
    void anEarlyEndLeavesFoldersAndUnfinishedFilesClosedAndSaysSo() {
        files.addDirectory(OUT).security = OWN;
        files.whileReading.put("C:\\store\\data\\00000\\00000003", () -> files.freeBytes = 0);

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().startsWith("C:\\out holds a restore that was not finished; what was not finished in it"
                + " is closed to others. C:\\out\\restore-unfinished has the folder's own rights.\nThe disk of the"
                + " target C:\\out is full"), result.err());
        for (String path : List.of("", "\\sub", "\\sub\\deep", "\\restore-unfinished")) {
            assertFalse(files.isOpenToOthers(OUT + path), path);
        }
        assertTrue(files.text(OUT + "\\restore-unfinished").endsWith(" set " + PUT_BACK + "\n"));
    }

    @Test
    void aFaultLeavesItClosedAndSaysSoToo() {
        files.atEachChange = call -> {
            if (call.startsWith("time " + OUT + "\\sub")) {
                throw new IllegalStateException("a fault");
            }
        };

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().startsWith("C:\\out holds a restore that was not finished; "), result.err());
        assertFalse(files.isOpenToOthers(OUT));
        assertNotNull(files.node(OUT + "\\restore-unfinished"));
    }

    @Test
    void withoutRightsTheMarkerIsThereAllTheSame() {
        files.whileReading.put("C:\\store\\data\\00000\\00000001", bed.stop::stop);

        Bed.Result result = bed.run("restore", "--no-security", "C:\\store", OUT);

        assertEquals("C:\\out holds a restore that was not finished; it is as open as its folder.\nStopped before the"
                + " end.\n", result.err());
        assertNotNull(files.node(OUT + "\\restore-unfinished"));
    }

    @Test
    void theNextRestoreRecognisesOneThatWasNotFinished() {
        files.addDirectory(OUT);
        files.addFile(OUT + "\\restore-unfinished", "");

        assertEquals(new Bed.Result(2, "", "The target C:\\out holds a restore that was not finished; a restore needs a"
                + " new or an empty folder.\n"), bed.restore());
    }

    @Test
    void theMarkerTakesNoNameThatIsRestored() {
        files.addFile("C:\\src\\Restore-Unfinished", "mine");
        assertEquals(0, bed.run("backup", "C:\\src", "C:\\second").code());

        Bed.Result result = bed.run("restore", "C:\\second", OUT);

        assertEquals(0, result.code(), result.err());
        assertTrue(files.calls.contains("create " + OUT + "\\restore-unfinished-2 0"));
        assertEquals("mine", files.text(OUT + "\\Restore-Unfinished"));
        assertNull(files.node(OUT + "\\restore-unfinished-2"));
    }

    @Test
    void aMarkerThatCannotBeRemovedLeavesTheTargetClosed() {
        files.undeletable.add(OUT + "\\restore-unfinished");

        Bed.Result result = bed.restore();

        assertEquals(2, result.code());
        assertTrue(result.err().endsWith("The restore cannot be finished: its marker C:\\out\\restore-unfinished cannot"
                + " be removed\n"), result.err());
        assertFalse(files.isOpenToOthers(OUT));
    }

    @Test
    void aCompressedTargetIsLetGoForThatAndHeldAgain() {
        files.node("C:\\src").attributes = Win32.FILE_ATTRIBUTE_DIRECTORY | Win32.FILE_ATTRIBUTE_COMPRESSED;
        bed.run("backup", "C:\\src", "C:\\second");
        List<Boolean> held = new ArrayList<>();
        files.atEachChange = call -> {
            if (call.equals("compress " + OUT) || call.equals("time " + OUT)) {
                held.add(files.isHeld(OUT));
            }
        };

        Bed.Result result = bed.run("restore", "C:\\second", OUT);

        assertEquals(0, result.code(), result.err());
        assertEquals(List.of(false, true), held);
    }

    @Test
    void theRootOfADriveThatHasNothingButTheSystemsOwnIsEmpty() {
        assertTrue(Folders.isEmpty("E:\\", List.of(record("E:\\System Volume Information"),
                record("E:\\$Recycle.Bin"))));
        assertFalse(Folders.isEmpty("E:\\", List.of(record("E:\\$Recycle.Bin"), record("E:\\mine"))));
        assertFalse(Folders.isEmpty("E:\\sub", List.of(record("E:\\sub\\$Recycle.Bin"))));
    }

    private static WinFile record(String path) {
        return new WinFile(path, true, 0, 0, 0, "", false);
    }
}
