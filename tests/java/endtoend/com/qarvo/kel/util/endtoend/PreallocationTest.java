package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class PreallocationTest extends EndToEnd {
    private static final int MEBIBYTE = 1 << 20;
    private static final int INVALID_PARAMETER_STATUS = 0xC000000D;

    @TempDir
    Path folder;

    @Test
    void aPreallocatedFileHasItsSizeAtOnceAndIsCutWhereItsWriterStopped() throws IOException {
        Path path = folder.resolve("a.bin");
        try (NativeFile file = preallocate(path, MEBIBYTE)) {
            assertEquals(MEBIBYTE, Files.size(path));
            assertEquals(MEBIBYTE, util.getFileSize(file.record));
            assertEquals(0, util.getFilePosition(file.record));
            util.write(file.record, new byte[] {1, 2, 3}, 0, 3);
        }
        assertArrayEquals(new byte[] {1, 2, 3}, Files.readAllBytes(path));
    }

    @Test
    void aFileWithoutPreallocationKeepsItsLengthWhenClosed() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        try (NativeFile file = adopt(util.createFileNC(path.toString(), READ_WRITE, OPEN_EXISTING, 0))) {
            util.write(file.record, new byte[] {'C'}, 0, 1);
        }
        try (NativeFile file = adopt(util.createFileNC(path.toString(), READ_WRITE, OPEN_EXISTING, 0, 0))) {
            util.seek(file.record, 1);
        }
        try (NativeFile file = open(path)) {
            util.seek(file.record, 1);
        }
        assertEquals("Content", Files.readString(path));
    }

    @Test
    void preallocatingCutsAFileThatIsLonger() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        try (NativeFile file = adopt(util.createFileNC(path.toString(), READ_WRITE, OPEN_EXISTING, 0, 4))) {
            assertEquals("cont", Files.readString(path));
            util.seek(file.record, 2);
        }
        assertEquals("co", Files.readString(path));
    }

    @Test
    void preallocatingAddsTheRightToWrite() throws IOException {
        Path path = folder.resolve("a.bin");
        try (NativeFile file = adopt(util.createFileNC(path.toString(), GENERIC_READ, CREATE_NEW, 0, 100))) {
            util.write(file.record, new byte[] {7}, 0, 1);
        }
        assertArrayEquals(new byte[] {7}, Files.readAllBytes(path));
    }

    @Test
    void preallocatingLeavesNoPrivilegeSwitchedOn() throws IOException {
        assertFalse(Witness.isPrivilegeOn("SeManageVolumePrivilege"));
        preallocate(folder.resolve("a.bin"), 100).close();
        assertThrowsOnMissingFolder();

        assertFalse(Witness.isPrivilegeOn("SeManageVolumePrivilege"));
    }

    private void assertThrowsOnMissingFolder() {
        assertFails(java.io.FileNotFoundException.class, Witness.message("CreateFileW", PATH_NOT_FOUND),
                () -> preallocate(folder.resolve("missing\\a.bin"), 100));
    }

    @Test
    void theProbeForExtendingAnswersAndLeavesNothingBehind() {
        Path path = folder.resolve("probe.bin");

        assertTrue(util.isSupportExtendFileSize(path.toString()));
        assertFalse(Files.exists(path));
        assertFalse(Witness.isPrivilegeOn("SeManageVolumePrivilege"));
    }

    @Test
    void theProbeForExtendingSaysNoWhereNoFileCanBeMade() {
        assertFalse(util.isSupportExtendFileSize(folder.resolve("missing\\probe.bin").toString()));
        assertFalse(util.isSupportExtendFileSize(folder.toString()));
        assertTrue(Files.isDirectory(folder));
        assertFalse(Witness.isPrivilegeOn("SeManageVolumePrivilege"));
    }

    @Test
    void theEndOfAFileMovesBothWays() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        try (NativeFile file = adopt(util.createFileN(path.toString(), READ_WRITE, 0))) {
            assertTrue(util.setFileEndOfFileInfo(file.record, 5000));
            assertEquals(5000, Files.size(path));
            assertTrue(util.setFileEndOfFileInfo(file.record, 4));
            assertEquals(0, util.getFilePosition(file.record));
        }
        assertEquals("cont", Files.readString(path));
    }

    @Test
    void theEndOfAFileOpenForReadingCannotBeMoved() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        try (NativeFile file = open(path)) {
            assertFails(IOException.class, refusal("100"), () -> util.setFileEndOfFileInfo(file.record, 100));
            // The message has room for 32 bits of the position only.
            assertFails(IOException.class, refusal("1073741824"),
                    () -> util.setFileEndOfFileInfo(file.record, 5L << 30));
            assertFails(IOException.class, refusal("-1"), () -> util.setFileEndOfFileInfo(file.record, -1));
        }
        assertEquals("content", Files.readString(path));
    }

    private static String refusal(String position) {
        return "[WindowsUtil.setFileEndOfFileInfo] Failed to set the end of file position to " + position
                + Witness.statusText(INVALID_PARAMETER_STATUS);
    }
}
