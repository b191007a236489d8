package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class FileOperationsTest extends EndToEnd {
    private static final Duration SHARE_DELAY = Duration.ofSeconds(2);

    @TempDir
    Path folder;

    private String path(String name) {
        return folder + "\\" + name;
    }

    private static String refusal(String path, int code) {
        return Witness.message("createDir", code) + ", '" + path + "'";
    }

    @Test
    void mkdirMakesOneDirectory() throws IOException {
        assertTrue(util.mkdir(path("new")));
        assertTrue(util.mkdir(path("new\\below")));
        assertTrue(util.mkdir("\\\\?\\" + path("long form")));
        assertTrue(util.mkdir(path("slashes").replace('\\', '/')));

        assertTrue(Files.isDirectory(folder.resolve("new\\below")));
        assertTrue(Files.isDirectory(folder.resolve("long form")));
        assertTrue(Files.isDirectory(folder.resolve("slashes")));
    }

    @Test
    void mkdirOfWhatExistsIsFalse() throws IOException {
        Files.createFile(folder.resolve("file"));

        assertFalse(util.mkdir(folder.toString()));
        assertFalse(util.mkdir(path("file")));
    }

    @Test
    void mkdirBelowAMissingDirectoryIsRefusedAtOnce() {
        long start = System.nanoTime();
        assertFails(SecurityException.class, refusal(path("missing\\new"), PATH_NOT_FOUND),
                () -> util.mkdir(path("missing\\new")));

        assertTrue(System.nanoTime() - start < SHARE_DELAY.toNanos(), "waited as for a share");
        assertFalse(Files.exists(folder.resolve("missing")));
    }

    @Test
    void mkdirOfANameThatCannotBeIsRefused() {
        assertFails(SecurityException.class, refusal(path("a|b"), INVALID_NAME), () -> util.mkdir(path("a|b")));
    }

    @Test
    void mkdirWaitsForAShareToShowTheDirectoryAboveAndThenGivesUp() throws IOException {
        String path = fixture("share") + "\\missing\\new";
        long start = System.nanoTime();
        assertFails(SecurityException.class, refusal(path, PATH_NOT_FOUND), () -> util.mkdir(path));

        assertTrue(System.nanoTime() - start >= SHARE_DELAY.toNanos(), "did not wait");
    }

    @Test
    void deleteRemovesAFileWhateverItsAttributes() throws IOException {
        Files.createFile(folder.resolve("file"));
        Witness.setAttributes(path("file"), READONLY | HIDDEN);

        assertTrue(util.delete(path("file")));
        assertFalse(Files.exists(folder.resolve("file")));
    }

    @Test
    void deleteOfWhatIsNoFileIsFalse() {
        assertFalse(util.delete(path("missing")));
        assertFalse(util.delete(folder.toString()));
        assertFalse(util.delete(""));
        assertFalse(util.delete(path("a|b")));
        assertTrue(Files.isDirectory(folder));
    }

    @Test
    void aFileInUseIsNotDeletedAndLosesItsAttributes() throws IOException {
        Files.createFile(folder.resolve("file"));
        try (NativeFile file = open(path("file"))) {
            Witness.setAttributes(path("file"), READONLY | HIDDEN);

            assertFalse(util.delete(path("file")));
            assertEquals(0, Witness.attributes(path("file")) & (READONLY | HIDDEN));
            assertEquals(0, util.getFileSize(file.record));
        }
        assertTrue(Files.exists(folder.resolve("file")));
    }

    @Test
    void renameToMovesFilesAndDirectories() throws IOException {
        Files.writeString(folder.resolve("a"), "content");
        Files.createDirectories(folder.resolve("dir\\below"));

        assertTrue(util.renameTo(path("a"), path("b")));
        assertTrue(util.renameTo("\\\\?\\" + path("b"), "\\\\?\\" + path("dir\\c")));
        assertTrue(util.renameTo(path("dir"), "\\\\?\\" + path("moved")));
        assertEquals("content", Files.readString(folder.resolve("moved\\c")));
        assertFalse(Files.exists(folder.resolve("a")));
        assertTrue(Files.isDirectory(folder.resolve("moved\\below")));
    }

    @Test
    void renameToNeverOverwrites() throws IOException {
        Files.writeString(folder.resolve("a"), "one");
        Files.writeString(folder.resolve("b"), "two");

        assertFalse(util.renameTo(path("a"), path("b")));
        assertFalse(util.renameTo("\\\\?\\" + path("a"), "\\\\?\\" + path("b")));
        assertEquals("one", Files.readString(folder.resolve("a")));
        assertEquals("two", Files.readString(folder.resolve("b")));
    }

    @Test
    void renameToFailsWithoutSourceOrTargetFolder() throws IOException {
        Files.createFile(folder.resolve("a"));

        assertFalse(util.renameTo(path("missing"), path("b")));
        assertFalse(util.renameTo(path("a"), path("missing\\b")));
        assertFalse(util.renameTo(path("a"), ""));
        assertFalse(util.renameTo("", path("b")));
        assertTrue(Files.exists(folder.resolve("a")));
    }

    @Test
    void existsAndIsDirAgreeWithTheJavaPlatform() throws IOException {
        Files.createFile(folder.resolve("file"));
        for (String name : new String[] {"file", "missing", "missing\\below", "file\\below", "FILE"}) {
            assertEquals(Files.exists(folder.resolve(name)), util.exists(path(name)), name);
            assertEquals(Files.isDirectory(folder.resolve(name)), util.isDir(path(name)), name);
        }
        assertTrue(util.exists(folder.toString()));
        assertTrue(util.isDir(folder.toString()));
        assertTrue(util.isDir(folder + "\\"));
        assertTrue(util.isDir("\\\\?\\" + folder));
        assertTrue(util.isDir(folder.toString().replace('\\', '/')));
        assertTrue(util.exists("C:\\"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "Q:\\", "C:\\a|b", "C:\\windows\\*", "\\\\no-such-server\\share"})
    void whatCannotBeThereDoesNotExist(String path) {
        assertFalse(util.exists(path));
        assertFalse(util.isDir(path));
        assertEquals(0, util.lastModified(path));
        assertFalse(util.setLastModified(path, 0));
    }

    @ParameterizedTest
    @ValueSource(longs = {0, 1, -1, 1_234_567_890_123L, -1_999_999_999_999L, 4_000_000_000_001L})
    void aTimeIsSetToTheMillisecond(long milliseconds) throws IOException {
        Files.createFile(folder.resolve("file"));

        assertTrue(util.setLastModified(path("file"), milliseconds));
        assertEquals(EPOCH + milliseconds * 10_000, Witness.lastWrite(path("file")));
        assertEquals(milliseconds, util.lastModified(path("file")));
        assertEquals(milliseconds, Files.getLastModifiedTime(folder.resolve("file")).toMillis());
    }

    @Test
    void theMomentWhereTheSystemBeginsToCountLeavesTheTimeAsItIs() throws IOException {
        Files.createFile(folder.resolve("file"));
        util.setLastModified(path("file"), 1_000_000_000_000L);

        assertTrue(util.setLastModified(path("file"), -EPOCH / 10_000));

        assertEquals(1_000_000_000_000L, util.lastModified(path("file")));
    }

    @Test
    void theTimeOfADirectoryIsSetToo() throws IOException {
        assertTrue(util.setLastModified(folder.toString(), 1_000_000_000_000L));

        assertEquals(1_000_000_000_000L, Files.getLastModifiedTime(folder).toMillis());
        assertEquals(1_000_000_000_000L, util.lastModified(folder.toString()));
    }

    @Test
    void theTimeOfWhatIsMissingIsZeroAndCannotBeSet() {
        assertEquals(0, util.lastModified(path("missing")));
        assertFalse(util.setLastModified(path("missing"), 1));
        assertFalse(Files.exists(folder.resolve("missing")));
    }
}
