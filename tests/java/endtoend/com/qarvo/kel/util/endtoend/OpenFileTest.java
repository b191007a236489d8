package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.dov.io.SharingViolationException;
import com.sun.jna.Pointer;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Set;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class OpenFileTest extends EndToEnd {
    @TempDir
    Path folder;

    @Test
    void anOpenFileGivesItsBytesAndItsSize() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "content");
        try (NativeFile file = open(path)) {
            byte[] bytes = new byte[20];

            assertEquals(7, util.getFileSize(file.record));
            assertEquals(7, util.read(file.record, bytes, 0, 20));
            assertArrayEquals(Arrays.copyOf("content".getBytes(), 20), bytes);
        }
    }

    @ParameterizedTest
    @ValueSource(strings = {"C:\\no such file", "C:\\no such folder\\x", "Q:\\x", "", "no such relative path",
        "C:\\a|b", "C:\\a*", "\\\\?\\C:\\no such file", "\\\\?\\C:\\no such folder\\x", "\\\\.\\no such device",
        "\\\\no-such-server\\share\\x"})
    void openingWhatIsNotThereSaysWhatTheSystemSays(String path) {
        int code = Witness.openError(path, GENERIC_READ, OPEN_EXISTING, BACKUP_SEMANTICS | READONLY);

        assertFails(exceptionOf(code), Witness.message("openFile", code), () -> util.openFile(path));
        assertFails(exceptionOf(code), Witness.message("CreateFileW", code),
                () -> util.createFileNC(path, GENERIC_READ, OPEN_EXISTING, BACKUP_SEMANTICS));
    }

    private static Class<? extends IOException> exceptionOf(int code) {
        assertTrue(code != 0 && code != SHARING_VIOLATION && code != DISK_FULL, "unexpected code " + code);
        return code == FILE_NOT_FOUND || code == PATH_NOT_FOUND ? FileNotFoundException.class : IOException.class;
    }

    @Test
    void aMissingFileIsFileNotFoundWithCodeTwo() {
        assertFails(FileNotFoundException.class, Witness.message("openFile", FILE_NOT_FOUND),
                () -> util.openFile(folder.resolve("missing").toString()));
    }

    @Test
    void aMissingFolderIsFileNotFoundWithCodeThree() {
        assertFails(FileNotFoundException.class, Witness.message("openFile", PATH_NOT_FOUND),
                () -> util.openFile(folder.resolve("missing\\x").toString()));
    }

    @Test
    void openFileOpensADirectoryAndCreateFileWithoutBackupSemanticsIsDenied() throws IOException {
        open(folder).close();

        assertFails(IOException.class, Witness.message("CreateFileW", ACCESS_DENIED),
                () -> util.createFileNC(folder.toString(), GENERIC_READ, OPEN_EXISTING, 0));
        assertFails(IOException.class, Witness.message("CreateFileW", ACCESS_DENIED),
                () -> util.createFileN(folder.toString(), GENERIC_READ, 0));
    }

    @Test
    void aForwardSlashIsAsGoodAsABackslash() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "abc");
        try (NativeFile file = open(path.toString().replace('\\', '/'))) {
            assertEquals(3, util.getFileSize(file.record));
        }
    }

    @Test
    void aFileThatMustBeNewFailsWhenItExists() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "kept");

        assertFails(IOException.class, Witness.message("CreateFileW", FILE_EXISTS),
                () -> util.createFileNC(path.toString(), GENERIC_WRITE, CREATE_NEW, NORMAL));
        assertEquals("kept", Files.readString(path));
    }

    @Test
    void createAlwaysEmptiesTheFileAndOpenAlwaysKeepsIt() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "kept");
        try (NativeFile file = adopt(util.createFileN(path.toString(), READ_WRITE, NORMAL))) {
            assertEquals(4, util.getFileSize(file.record));
        }
        create(path, NORMAL).close();

        assertEquals(0, Files.size(path));
    }

    @Test
    void createFileNMakesAMissingFile() throws IOException {
        Path path = folder.resolve("new.txt");
        util.closeFile(util.createFileN(path.toString(), READ_WRITE, NORMAL));

        assertTrue(Files.isRegularFile(path));
        assertEquals(0, Files.size(path));
    }

    @Test
    void flagsReachTheSystemUnchanged() throws IOException {
        Path path = folder.resolve("gone.txt");
        int deleteOnClose = 0x04000000;
        int delete = 0x00010000;
        util.closeFile(util.createFileNC(path.toString(), READ_WRITE | delete, CREATE_NEW, deleteOnClose));
        Path hidden = folder.resolve("hidden.txt");
        util.closeFile(util.createFileNC(hidden.toString(), GENERIC_WRITE, CREATE_NEW, HIDDEN));

        assertFalse(Files.exists(path));
        assertEquals(HIDDEN, Witness.attributes(hidden.toString()) & HIDDEN);
    }

    @Test
    void othersMayReadAndWriteWhatTheLibraryHasOpen() throws IOException {
        Path path = folder.resolve("shared.txt");
        try (NativeFile file = create(path, NORMAL)) {
            Files.writeString(path, "from outside");

            assertEquals(12, util.getFileSize(file.record));
        }
    }

    @Test
    void aPipeHasNoSizeAndItsOpenHandleIsLost() {
        String name = "\\\\.\\pipe\\winutil-test-" + ProcessHandle.current().pid();
        HANDLE server = Kernel32.INSTANCE.CreateNamedPipe(name, 3, 0, 1, 4096, 4096, 0, null);
        Set<Integer> before = OpenHandles.ofFilesAndTokens();
        assertFails(IOException.class, Witness.message("GetFileSizeEx", INVALID_FUNCTION),
                () -> util.createFileNC(name, READ_WRITE, OPEN_EXISTING, 0));

        Set<Integer> lost = OpenHandles.ofFilesAndTokens();
        lost.removeAll(before);
        assertEquals(1, lost.size());
        lost.forEach(handle -> Kernel32.INSTANCE.CloseHandle(new HANDLE(Pointer.createConstant(handle))));
        Kernel32.INSTANCE.CloseHandle(server);
    }

    @Test
    void aFileThatIsReleasedDuringTheWaitsOpensAfterAll() throws Exception {
        Path path = Files.writeString(folder.resolve("busy.txt"), "abc");
        Exclusive holder = Exclusive.hold(path);
        Thread release = new Thread(holder::releaseAfterHalfASecond);
        release.start();
        long start = System.nanoTime();
        try (NativeFile file = open(path)) {
            assertEquals(3, util.getFileSize(file.record));
        } catch (SharingViolationException e) {
            throw new AssertionError("gave up too early", e);
        }
        release.join();
        assertTrue(System.nanoTime() - start >= 500_000_000L, "no wait at all");
    }
}
