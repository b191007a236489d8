package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.charset.StandardCharsets;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Backups of files that others are writing to, and what is said of their times. */
class ChangingFilesTest {
    private static final String PATH = "C:\\src\\a.txt";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;
    private final FakeFiles.Node node = files.node(PATH);

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    private Bed.Result backup(String option) {
        return bed.run("backup", option, "--block-size=512", "C:\\src", "C:\\store");
    }

    private void write(String content) {
        node.content = content.getBytes(StandardCharsets.UTF_8);
        node.modified++;
    }

    @ParameterizedTest
    @CsvSource({"--no-progress, changed", "--unbuffered, changed", "--no-progress, new", "--unbuffered, new"})
    void aFileThatChangesOnceIsReadAgain(String option, String content) {
        files.whileReading.put(PATH, () -> {
            files.whileReading.clear();
            write(content);
        });

        Bed.Result result = backup(option);

        assertEquals(0, result.code(), result.err());
        assertEquals(Bed.sha256(content), bed.entry("a.txt").sha256());
        assertEquals(node.modified, bed.entry("a.txt").modified());
        assertEquals(2, files.below("C:\\store\\data\\00000").size());
    }

    @ParameterizedTest
    @CsvSource({"--no-progress, grows", "--no-progress, shrinks", "--no-progress, is written over",
        "--unbuffered, grows", "--unbuffered, shrinks", "--unbuffered, is written over"})
    void aFileThatKeepsChangingIsReportedAndLeavesNothing(String option, String how) {
        files.whileReading.put(PATH, () -> {
            switch (how) {
                case "grows" -> write(new String(node.content, StandardCharsets.UTF_8) + "+");
                case "shrinks" -> node.content = new byte[node.content.length - 1];
                default -> node.modified++;
            }
        });

        Bed.Result result = backup(option);

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: it changed while it was being read\n", result.err());
        assertNull(bed.entry("a.txt"));
        assertEquals(1, files.below("C:\\store\\data\\00000").size());
    }

    @Test
    void aFileThatGivesFewerBytesThanItHasIsReported() {
        write("x".repeat(1500));
        files.endingReads.add(PATH);

        Bed.Result result = backup("--no-progress");

        assertEquals("left out: C:\\src\\a.txt: it changed while it was being read\n", result.err());
        assertEquals(1, result.code());
    }

    @Test
    void whatTheFolderSaysOfTheTimeMayBeOutOfDate() {
        node.listed = node.modified - 5000;

        bed.backup();

        assertEquals(node.modified, bed.entry("a.txt").modified());
        Bed.Result result = bed.verify("C:\\src");
        assertEquals(0, result.code(), result.err());
    }

    @Test
    void aFileThatDoesNotTellItsTimeHasThatOfTheFolder() {
        files.timeless.add(PATH);

        Bed.Result result = bed.backup();

        assertEquals(0, result.code(), result.err());
        assertEquals(node.modified, bed.entry("a.txt").modified());
        assertTrue(bed.verify("C:\\src").out().contains("; nothing different"));
    }
}
