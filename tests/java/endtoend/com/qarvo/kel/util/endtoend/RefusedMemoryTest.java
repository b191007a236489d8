package com.qarvo.kel.util.endtoend;

import static java.nio.charset.StandardCharsets.US_ASCII;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WinProcess;
import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.WinReg;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/**
 * What comes of a call when the JVM has no memory for the characters or the elements of an argument. It then hands out
 * nothing and raises nothing, so that the library has to say it.
 */
class RefusedMemoryTest extends OwnRegistryKey {
    private static final int NOT_ENOUGH_MEMORY = 8;
    private static final int RAW_BLOCK = 70_003;

    // Lengths that nobody else has: a block of that size is the wanted one.
    private static final byte[] ARRAY = new byte[80_021];
    private static final String TEXT = "x".repeat(12_347);

    @TempDir
    Path folder;

    @BeforeEach
    void standIn() {
        Interposer.standIn();
    }

    @AfterEach
    void standAside() {
        Interposer.standAside();
        Advapi32.INSTANCE.RevertToSelf();
    }

    /** How many bytes the JVM asks for to hand out these characters. */
    private static long wide(String text) {
        return 2L * (text.length() + 1);
    }

    /** The same for a text of ASCII characters as modified UTF-8. */
    private static long narrow(String text) {
        return text.length() + 1L;
    }

    /** A directory that is there, of a length that nobody else has. */
    private Path deepDirectory() throws IOException {
        return Files.createDirectories(Deep.path(folder, 1021));
    }

    private static <T extends Throwable> T thrownWithout(long bytes, Class<T> type, Executable call) {
        return assertThrowsExactly(type, () -> Interposer.withoutBlock(bytes, call));
    }

    private static void assertFailsWithout(long bytes, Class<? extends Throwable> type, String message,
            Executable call) {
        assertEquals(message, thrownWithout(bytes, type, call).getMessage());
    }

    private static String message(String tag) {
        return Witness.message(tag, NOT_ENOUGH_MEMORY);
    }

    @Test
    void anArrayThatIsNotWrittenIsReported() throws IOException {
        Path path = folder.resolve("a.bin");
        try (NativeFile file = create(path, 0)) {
            assertFailsWithout(ARRAY.length, IOException.class, message("WriteFile"),
                    () -> util.write(file.record, ARRAY, 0, ARRAY.length));
            assertEquals(0, Files.size(path));

            util.write(file.record, ARRAY, 0, ARRAY.length);
        }
        assertArrayEquals(ARRAY, Files.readAllBytes(path));
    }

    @Test
    void anArrayThatIsNotReadIsNotTheEndOfTheFile() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        byte[] into = new byte[ARRAY.length];
        try (NativeFile file = open(path)) {
            assertFailsWithout(into.length, IOException.class, message("ReadFile"),
                    () -> util.read(file.record, into, 0, into.length));
            assertArrayEquals(ARRAY, into);

            assertEquals(7, util.read(file.record, into, 0, into.length));
        }
    }

    @Test
    void theOutputOfAChildThatIsNotReadIsThereAfterwards() throws IOException {
        byte[] into = new byte[ARRAY.length];
        try (WinProcess process = ProcessesTest.launch("cmd.exe /c echo output")) {
            long cell = process.getStandardOutput().getHandle();
            assertFailsWithout(into.length, IOException.class, ' ' + message("WindowsUtil:readHandle"),
                    () -> util.readHandle(cell, into, 0, into.length));

            assertEquals("output", new String(process.getStandardOutput().readAllBytes(), US_ASCII).strip());
            process.waitFor();
        }
    }

    @Test
    void aListingWithoutItsDirectoryIsNotAnEmptyDirectory() throws IOException {
        String directory = deepDirectory().toString();
        Files.createFile(Path.of(directory, "file"));
        WinFileList entries = new WinFileList();

        thrownWithout(wide(directory), OutOfMemoryError.class,
                () -> util.listWinFiles(entries, directory, true, true, null, true));

        assertEquals(List.of(), entries.files());
        assertEquals(1, list(directory).size());
    }

    @Test
    void aPathThatIsNotLookedAtIsNotMissing() throws IOException {
        String path = deepDirectory().toString();

        thrownWithout(wide(path), OutOfMemoryError.class, () -> util.exists(path));

        assertTrue(util.exists(path));
    }

    @Test
    void aFileThatIsNotOpenedIsReported() throws IOException {
        String path = Files.createFile(deepDirectory().resolve("file")).toString();

        assertFailsWithout(wide(path), IOException.class, message("openFile"), () -> util.openFile(path));

        open(path).close();
    }

    @Test
    void aDirectoryThatIsNotMadeIsReported() throws IOException {
        String path = deepDirectory().resolve("made").toString();

        assertFailsWithout(wide(path), SecurityException.class, message("createDir"), () -> util.mkdir(path));
        assertTrue(util.mkdir(path));
    }

    @Test
    void aPathThatIsNotExpandedStaysAsItIs() throws Throwable {
        assertEquals(TEXT, Interposer.withoutBlock(wide(TEXT), () -> util.getLongPathName(TEXT)));
    }

    @Test
    void variablesThatAreNotExpandedAreReported() {
        assertFailsWithout(wide(TEXT), RuntimeException.class, message("CovertEnvPathToFilePath"),
                () -> util.CovertEnvPathToFilePath(TEXT));
    }

    @Test
    void partitionsThatAreNotListedAreReported() {
        assertFailsWithout(wide(TEXT), IOException.class, Witness.systemText(NOT_ENOUGH_MEMORY),
                () -> util.listNTFSPartitions(TEXT, new Object()));
    }

    @Test
    void aRegistryTextIsNeitherWrittenNorRead() throws Throwable {
        // Of the lengths that a value's path can have.
        String path = path("x".repeat(1021 - path("").length()));

        assertEquals(false, Interposer.withoutBlock(wide(path), () -> util.setRegistryStringW(path, "text")));
        assertEquals(false, Interposer.withoutBlock(wide(TEXT), () -> util.setRegistryStringW(path, TEXT)));
        assertEquals(Map.of(), Advapi32Util.registryGetValues(WinReg.HKEY_CURRENT_USER, key));

        assertTrue(util.setRegistryStringW(path, "text"));
        assertEquals("", Interposer.withoutBlock(narrow(path), () -> util.getRegistryString(path)));
        assertEquals("text", util.getRegistryString(path));
    }

    /** A logon as domain, user and password, one of them long. */
    private static String[] account(int longOne) {
        String[] account = {"domain", "user", "password"};
        account[longOne] = TEXT;
        return account;
    }

    @Test
    void withMemoryTheStandInLogsOn() throws IOException {
        String[] account = account(0);

        assertEquals("", util.impersonateUser(account[0], account[1], account[2]));

        assertEquals(1, Interposer.logons());
        assertTrue(SecurityTest.isImpersonating());
    }

    @ParameterizedTest
    @ValueSource(ints = {0, 1, 2})
    void anAccountThatIsIncompleteIsNotLoggedOn(int refused) {
        String[] account = account(refused);

        assertFailsWithout(narrow(TEXT), IOException.class,
                " [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser]  (8) "
                + Witness.systemText(NOT_ENOUGH_MEMORY),
                () -> util.impersonateUser(account[0], account[1], account[2]));

        assertEquals(0, Interposer.logons());
        assertFalse(SecurityTest.isImpersonating());
    }

    @ParameterizedTest
    @ValueSource(ints = {0, 1, 2})
    void readingIsNotAllowedToAnAccountThatIsIncomplete(int refused) {
        String[] account = account(refused);

        assertFailsWithout(narrow(TEXT), IOException.class, message("CheckAccessToFile"),
                () -> util.isAccessRead(folder.toString(), account[0], account[1], account[2]));

        assertEquals(0, Interposer.logons());
    }

    @ParameterizedTest
    @ValueSource(ints = {0, 1, 2})
    void writingIsNotAllowedToAnAccountThatIsIncomplete(int refused) {
        String[] account = account(refused);

        assertFailsWithout(narrow(TEXT), IOException.class, message("CheckAccessToFile"),
                () -> util.isAccessWrite(folder.toString(), account[0], account[1], account[2]));

        assertEquals(0, Interposer.logons());
    }

    @Test
    void aPathThatIsNotCheckedForReadingIsReported() {
        assertFailsWithout(wide(TEXT), IOException.class, message("CheckAccessToFile"),
                () -> util.isAccessRead(TEXT, "domain", "user", "password"));
    }

    @Test
    void aPathThatIsNotCheckedForWritingIsReported() {
        assertFailsWithout(wide(TEXT), IOException.class, message("CheckAccessToFile"),
                () -> util.isAccessWrite(TEXT, "domain", "user", "password"));
    }

    @Test
    void withMemoryTheStandInImportsToTheEnd() throws IOException {
        assertEquals(0, util.writeEncryptFile(0, new ByteArrayInputStream(ARRAY)));

        assertEquals(ARRAY.length, Interposer.importedBytes());
        assertEquals(0, Interposer.importCode());
    }

    @Test
    void anImportThatLosesABlockIsNotComplete() {
        ByteArrayInputStream in = new ByteArrayInputStream(Arrays.copyOf(ARRAY, RAW_BLOCK));

        assertFailsWithout(RAW_BLOCK, IOException.class, message("WriteEncryptedFileRaw"),
                () -> util.writeEncryptFile(0, in));

        assertEquals(0, Interposer.importedBytes());
        assertEquals(NOT_ENOUGH_MEMORY, Interposer.importCode());
    }
}
