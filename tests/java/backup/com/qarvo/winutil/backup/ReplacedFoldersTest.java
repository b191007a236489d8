package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.Set;
import java.util.TreeMap;
import java.util.TreeSet;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/** Somebody who may do anything puts a link in the place of a folder while a command runs. */
class ReplacedFoldersTest {
    private static final String VICTIM = "C:\\victim";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @BeforeEach
    void addMore() {
        files.addDirectory("C:\\src\\sub\\deep");
        files.addFile("C:\\src\\sub\\deep\\c.txt", "gamma");
        files.addFile("C:\\src\\sub\\deep\\d.txt", "delta");
        files.addLink("C:\\src\\sub\\deep\\link", WinFile.FILE_SYMBOLIC_LINK, "c.txt");
        files.addDirectory("C:\\src\\zoo");
        files.addFile("C:\\src\\zoo\\z.txt", "omega");
        files.addDirectory(VICTIM);
        files.addFile(VICTIM + "\\d.txt", "DELTA");
        files.addDirectory(VICTIM + "\\deep");
        files.addFile(VICTIM + "\\deep\\d.txt", "DELTA");
    }

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    private void replace(String folder) {
        files.move(folder, folder + "-moved");
        files.addLink(folder, WinFile.JUNCTION, VICTIM);
    }

    /** Replaces a folder just before a change, or just after it was decided on. */
    private void replaceAt(String change, String folder) {
        files.atEachChange = call -> {
            if (call.equals(change)) {
                files.atEachChange = later -> { };
                replace(folder);
            }
        };
    }

    private Map<String, String> victim() {
        Map<String, String> found = new TreeMap<>();
        files.below(VICTIM).forEach(path -> found.put(path, files.text(path) + files.node(path).security
                + files.node(path).modified));
        return found;
    }

    private Bed.Result restoreWhile(String change, String folder) {
        bed.backup();
        Map<String, String> before = victim();
        replaceAt(change, folder);
        Bed.Result result = bed.restore();
        Map<String, String> after = victim();
        // What is made there in the very moment has no content.
        after.entrySet().removeIf(made -> !before.containsKey(made.getKey()) && files.text(made.getKey()).isEmpty());
        assertEquals(before, after, "nothing of any content is made, changed or removed where the link leads");
        return result;
    }

    @Test
    void nothingMoreIsWrittenIntoAFolderThatWasReplaced() {
        Bed.Result result = restoreWhile("close C:\\out\\sub\\deep\\c.txt", "C:\\out\\sub\\deep");

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\d.txt: the folder C:\\out\\sub\\deep was"
                + " replaced meanwhile, or is no longer there\n"), result.err());
        assertEquals("omega", files.text("C:\\out\\zoo\\z.txt"), "the rest is restored");
    }

    @Test
    void aFolderFurtherUpIsNoticedToo() {
        Bed.Result result = restoreWhile("close C:\\out\\sub\\deep\\c.txt", "C:\\out\\sub");

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\d.txt: the folder C:\\out\\sub was replaced"
                + " meanwhile, or is no longer there\n"), result.err());
    }

    @Test
    void theTargetItselfIsNoticedToo() {
        Bed.Result result = restoreWhile("close C:\\out\\sub\\deep\\c.txt", "C:\\out");

        assertEquals(2, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\d.txt: the folder C:\\out was replaced"
                + " meanwhile, or is no longer there\n"), result.err());
    }

    @Test
    void aFileThatIsMadeBehindTheLinkGetsNoContent() {
        Bed.Result result = restoreWhile("create C:\\out\\sub\\deep\\c.txt 5", "C:\\out\\sub\\deep");

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\c.txt: what was begun of it cannot be"
                + " removed:"), result.err());
    }

    @Test
    void noFolderIsEnteredThatIsMadeBehindTheLink() {
        Bed.Result result = restoreWhile("mkdir C:\\out\\sub\\deep", "C:\\out\\sub");

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep: the folder C:\\out\\sub was replaced"),
                result.err());
    }

    @Test
    void aFileThatIsWholeGetsNoTimeAndRightsBehindTheLink() {
        Bed.Result result = restoreWhile("close C:\\out\\sub\\deep\\d.txt", "C:\\out\\sub\\deep");

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\d.txt: the folder "), result.err());
    }

    @Test
    void theCleanUpRemovesNothingBehindTheLink() {
        files.whileReading.put(damagedContentOf("sub\\deep\\d.txt"), () -> replace("C:\\out\\sub\\deep"));

        Bed.Result result = bed.restore();

        assertEquals(1, result.code());
        assertEquals("DELTA", files.text(VICTIM + "\\d.txt"));
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\d.txt: what was begun of it cannot be removed:"
                + " the folder C:\\out\\sub\\deep was replaced"), result.err());
    }

    /** Backs up, and changes a content so that what is restored of it has to be removed again. */
    private String damagedContentOf(String path) {
        bed.backup();
        String content = "C:\\store\\data\\00000\\" + String.format("%08d", bed.entry(path).content());
        files.node(content).content = files.text(content).toUpperCase(Locale.ROOT).getBytes();
        return content;
    }

    @Test
    void theCleanUpRemovesNoFileOfAnotherSize() {
        damagedContentOf("a.txt");
        files.atEachChange = call -> {
            if (call.equals("close C:\\out\\a.txt")) {
                files.node("C:\\out\\a.txt").path = "C:\\out\\moved";
                files.addFile("C:\\out\\a.txt", "another one");
            }
        };

        Bed.Result result = bed.restore();

        assertEquals("another one", files.text("C:\\out\\a.txt"));
        assertTrue(result.err().contains("what was begun of it cannot be removed: it is not as it was left"),
                result.err());
    }

    @Test
    void timesAndRightsAreNotSetBehindTheLink() {
        Bed.Result result = restoreWhile("time C:\\out\\zoo", "C:\\out\\sub");

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep: its time, attributes and rights are not set: "),
                result.err());
        assertTrue(result.err().contains("left out: C:\\out\\sub: its time, attributes and rights are not set: "),
                result.err());
    }

    @Test
    void noLinkIsMadeBehindTheLink() {
        Bed.Result result = restoreWhile("close C:\\out\\zoo\\z.txt", "C:\\out\\sub");

        assertNull(files.node(VICTIM + "\\deep\\link"));
        assertTrue(result.err().contains("left out: C:\\out\\sub\\deep\\link: the folder C:\\out\\sub was replaced"),
                result.err());
    }

    @Test
    void theWalkLeavesAFolderOutThatHasBecomeALinkBeforeItsTurn() {
        replaceAt("open C:\\src\\a.txt", "C:\\src\\sub");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\sub: the folder C:\\src\\sub was replaced meanwhile, or is no longer there\n",
                result.err());
        assertNull(bed.entry("sub"));
        assertNotNull(bed.entry("zoo\\z.txt"));
    }

    @Test
    void aFolderThatBecomesALinkWhileItIsListedGivesNothing() {
        files.addLink(VICTIM + "\\private", WinFile.FILE_SYMBOLIC_LINK, "secret");
        files.whileListing.put("C:\\src\\sub", () -> replace("C:\\src\\sub"));

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertNull(bed.entry("sub\\d.txt"));
        assertNull(bed.entry("sub\\deep"));
        assertNull(bed.entry("sub\\private"));
    }

    @Test
    void aFileThatIsOpenedBehindTheLinkIsNotRead() {
        replaceAt("open C:\\src\\sub\\deep\\d.txt", "C:\\src\\sub\\deep");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\src\\sub\\deep\\d.txt: the folder C:\\src\\sub\\deep was"
                + " replaced"), result.err());
        assertNull(bed.entry("sub\\deep\\d.txt"));
        assertFalse(contents().contains("DELTA"), contents().toString());
    }

    @Test
    void aFileThatHasBecomeALinkItselfIsNotRead() {
        files.atEachChange = call -> {
            if (call.equals("open C:\\src\\a.txt")) {
                files.node("C:\\src\\a.txt").attributes |= 0x400;
            }
        };

        Bed.Result result = bed.backup();

        assertEquals("left out: C:\\src\\a.txt: it was replaced meanwhile, or is no longer there\n", result.err());
    }

    private List<String> contents() {
        return files.below("C:\\store\\data").stream().map(files::text).toList();
    }

    @Test
    void theTopOfTheTreeIsNoticedTooWhenItBecomesALink() {
        replaceAt("open C:\\src\\a.txt", "C:\\src");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertTrue(result.err().contains("left out: C:\\src\\sub: the folder C:\\src was replaced meanwhile"),
                result.err());
        assertFalse(contents().contains("DELTA"), contents().toString());
    }

    @Test
    void theFolderThatIsReadCannotBeRenamedNorCanTheTop() {
        Set<String> held = new TreeSet<>();
        files.atEachChange = call -> {
            if (call.equals("open C:\\src\\sub\\deep\\c.txt")) {
                List.of("C:\\src", "C:\\src\\sub", "C:\\src\\sub\\deep", "C:\\src\\zoo").stream().filter(files::isHeld)
                        .forEach(held::add);
            }
        };

        bed.backup();

        assertEquals(Set.of("C:\\src", "C:\\src\\sub", "C:\\src\\sub\\deep"), held);
    }

    @Test
    void aFolderThatCannotBeHeldIsBackedUpAllTheSame() {
        files.unholdable.add("C:\\src");
        files.unholdable.add("C:\\src\\sub");

        assertEquals(0, bed.backup().code());

        assertNotNull(bed.entry("sub\\b.txt"));
    }

    @Test
    void aSourceAndATreeThatAreLinksThemselvesAreStillFollowed() {
        files.addLink("C:\\link", WinFile.JUNCTION, "C:\\src");

        assertEquals(0, bed.run("backup", "C:\\link", "C:\\store").code());
        assertEquals(0, bed.verify("C:\\link").code());
    }
}
