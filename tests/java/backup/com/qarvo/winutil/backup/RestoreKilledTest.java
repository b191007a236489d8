package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.FakeDisk.Node;
import java.util.List;
import org.junit.jupiter.api.Test;

/** A restore that is killed at each of its steps, and what is found afterwards. */
class RestoreKilledTest {
    private static final String OUT = "C:\\out";
    private static final String MARKER = OUT + "\\restore-unfinished";

    /** The end of the process: nothing that would still be done is done. */
    private static final class Killed extends Error {
        private static final long serialVersionUID = 1;
    }

    private static Bed backedUp() {
        Bed bed = new Bed().withSource();
        bed.files.addDirectory("C:\\src\\sub\\deep").attributes = 0x12;
        bed.files.addFile("C:\\src\\sub\\deep\\c.txt", "gamma");
        bed.files.addLink("C:\\src\\link", WinFile.FILE_SYMBOLIC_LINK, "a.txt");
        bed.backup();
        return bed;
    }

    private static void killAtChange(Bed bed, int last) {
        int[] changes = {0};
        bed.files.atEachChange = call -> {
            changes[0]++;
            if (changes[0] >= last) {
                throw new Killed();
            }
        };
    }

    private static int changesOfARestore(String... options) {
        Bed bed = backedUp();
        int[] changes = {0};
        bed.files.atEachChange = call -> changes[0]++;
        assertEquals(0, bed.run(options).code());
        return changes[0];
    }

    @Test
    void neverLeavesSecretsOpenAndIsNeverTakenForFinished() {
        String[] restore = {"restore", "C:\\store", OUT};
        int changes = changesOfARestore(restore);
        assertTrue(changes > 40, "there are steps to be killed at: " + changes);

        for (int last = 1; last <= changes; last++) {
            Bed bed = backedUp();
            killAtChange(bed, last);
            assertThrows(Killed.class, () -> bed.run(restore));
            bed.files.atEachChange = call -> { };

            String step = "killed at change " + last;
            if (bed.files.node(OUT) != null) {
                assertClosed(bed.files, step);
                assertNotFinished(bed, step);
            }
        }
    }

    private static void assertClosed(FakeFiles files, String step) {
        assertFalse(files.isOpenToOthers(OUT), step);
        for (String path : files.below(OUT)) {
            Node node = files.node(path);
            Node original = files.node(path.replace("\\out", "\\src"));
            boolean whole = original != null && new String(node.content).equals(new String(original.content))
                    && node.modified == original.modified && node.attributes == original.attributes;
            boolean link = node.kind == WinFile.FILE_SYMBOLIC_LINK;
            assertTrue(whole || link || !files.isOpenToOthers(path), step + ": " + path);
        }
    }

    private static void assertNotFinished(Bed bed, String step) {
        FakeFiles files = bed.files;
        if (files.below(OUT).isEmpty()) {
            return;
        }
        Bed.Result next = bed.restore();
        assertEquals(2, next.code(), step);
        Bed.Result verified = bed.verify(OUT);
        assertEquals(1, verified.code(), step);
        if (files.node(MARKER) != null) {
            assertTrue(next.err().contains("holds a restore that was not finished"), step + next.err());
            assertTrue(verified.err().contains("a restore into it was not finished"), step + verified.err());
        } else {
            // The marker goes when nothing is missing but time and rights of the target itself.
            assertTrue(verified.err().lines().allMatch(line -> line.startsWith("differs: " + OUT + ": ")),
                    step + verified.err());
        }
    }

    @Test
    void aTargetThatWasThereStaysClosedAndItsOwnRightsAreNoted() {
        String own = "O:S-1-5-21-9-9-9-1009G:SYD:(A;OICI;FA;;;WD)";
        String[] restore = {"restore", "C:\\store", OUT};
        int noted = 0;
        for (int last = 1;; last++) {
            Bed bed = backedUp();
            bed.files.addDirectory(OUT).security = own;
            killAtChange(bed, last);
            try {
                assertEquals(0, bed.run(restore).code());
                break;
            } catch (Killed e) {
                bed.files.atEachChange = call -> { };
            }
            String step = "killed at change " + last;
            if (!bed.files.below(OUT).isEmpty()) {
                assertClosed(bed.files, step);
                assertNotFinished(bed, step);
            }
            boolean whole = bed.files.node(MARKER) != null && !bed.files.text(MARKER).isEmpty();
            noted += whole && bed.files.text(MARKER).contains("O:S-1-5-21-9-9-9-1009D:(A;OICI;FA;;;WD)") ? 1 : 0;
        }
        assertTrue(noted > 30, "noted at " + noted + " steps");
    }

    @Test
    void withoutRightsTooTheNextOneRecognisesIt() {
        String[] restore = {"restore", "--no-security", "C:\\store", OUT};
        int changes = changesOfARestore(restore);
        int recognised = 0;

        for (int last = 1; last <= changes; last++) {
            Bed bed = backedUp();
            killAtChange(bed, last);
            assertThrows(Killed.class, () -> bed.run(restore));
            bed.files.atEachChange = call -> { };

            boolean begun = bed.files.node(OUT) != null && !bed.files.below(OUT).isEmpty();
            if (begun && bed.files.node(MARKER) != null) {
                assertTrue(bed.restore().err().contains("not finished"));
                recognised++;
            }
        }
        assertTrue(recognised > 20, "recognised " + recognised + " of " + changes);
    }

    @Test
    void aPreallocatedTailIsClosedToOthers() {
        Bed bed = backedUp();
        bed.files.atEachChange = call -> {
            if (call.equals("close " + OUT + "\\a.txt")) {
                throw new Killed();
            }
        };
        bed.files.whileReading.put("C:\\store\\data\\00000\\00000001", () -> {
            throw new Killed();
        });

        assertThrows(Killed.class, bed::restore);

        assertNotNull(bed.files.node(OUT + "\\a.txt"));
        assertEquals(5, bed.files.node(OUT + "\\a.txt").content.length);
        assertEquals(List.of(), List.of(OUT, OUT + "\\a.txt").stream().filter(bed.files::isOpenToOthers).toList());
    }
}
