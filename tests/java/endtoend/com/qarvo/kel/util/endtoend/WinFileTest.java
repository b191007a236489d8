package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.kel.util.WindowsUtil;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.Callable;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class WinFileTest extends EndToEnd {
    @TempDir
    Path folder;

    @Test
    void aFileIsDescribedWhole() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "some text");
        Witness.setAttributes(path.toString(), HIDDEN);
        WinFile record = util.WinFile(path.toString(), true, true);

        assertEquals(path.toString(), record.getPath());
        assertFalse(record.isDirectory());
        assertEquals(9, record.getSize());
        assertEquals(Files.getLastModifiedTime(path).toMillis(), record.getLastModified());
        assertEquals(Witness.attributes(path.toString()), record.getAttributes());
        assertEquals(Witness.securityDescriptor(path.toString()), record.getSecurityDescriptor());
        assertEquals(WinFile.FILE, record.getLinkKind());
        assertEquals("", record.getLinkTarget());
        assertFalse(record.isReparsePoint());
    }

    @Test
    void aDirectoryIsDescribedWhole() throws IOException {
        WinFile record = util.WinFile(folder.toString(), true, false);

        assertTrue(record.isDirectory());
        assertEquals(DIRECTORY, record.getAttributes());
        assertEquals(Witness.securityDescriptor(folder.toString()), record.getSecurityDescriptor());
        assertEquals(WinFile.DIRECTORY, record.getLinkKind());
        assertEquals("", record.getLinkTarget());
    }

    @Test
    void aDescriptorIsReadOnlyWhenAskedFor() throws IOException {
        Path path = Files.createFile(folder.resolve("a.txt"));

        assertEquals("", util.WinFile(path.toString(), false, true).getSecurityDescriptor());
        assertEquals("", util.WinFile(path.toString(), true, false).getSecurityDescriptor());
        assertEquals("", util.WinFile(folder.toString(), false, true).getSecurityDescriptor());
    }

    @Test
    void aReparsePointThatCannotBeReadIsADirectory() throws IOException {
        WinFile record = util.WinFile(fixture("links") + "\\link", false, false);

        assertTrue(record.isReparsePoint());
        assertEquals(WinFile.DIRECTORY, record.getLinkKind());
        assertEquals("", record.getLinkTarget());
    }

    @ParameterizedTest
    @ValueSource(strings = {"\\\\", "", "C:\\no such file", "C:\\no such folder\\x", "\\\\?\\C:\\no such file", "Q:\\",
        "C:\\a|b", "C:\\windows\\*"})
    void whatCannotBeDescribedIsFileNotFoundWithoutWords(String path) {
        assertFails(FileNotFoundException.class, "", () -> util.WinFile(path, true, true));
    }

    @ParameterizedTest
    @ValueSource(strings = {"C:\\windows\\", "C:/windows", "\\\\?\\C:\\windows", "C:\\", "C:\\WINDOWS"})
    void thePathIsKeptAsItWasGiven(String path) throws IOException {
        WinFile record = util.WinFile(path, false, false);

        assertEquals(path, record.getPath());
        assertTrue(record.isDirectory());
    }

    @ParameterizedTest
    @CsvSource({"0, 0", "-1, -1", "-9999, -1", "-10000, -1", "-10001, -2", "9999, 0", "10000, 1",
        "12345678901234, 1234567890"})
    void unitsOfATimeAreCutTowardsTheBeginningOfTime(long unitsAfter1970, long milliseconds) throws IOException {
        Path path = Files.createFile(folder.resolve("a.txt"));
        Witness.setLastWrite(path.toString(), EPOCH + unitsAfter1970);

        assertEquals(milliseconds, util.WinFile(path.toString(), false, false).getLastModified());
        assertEquals(milliseconds, util.lastModified(path.toString()));
        assertEquals(milliseconds, list(folder).get(0).getLastModified());
    }

    @Test
    void aClientWithTheOlderRecordIsServed() throws Throwable {
        Path path = Files.writeString(folder.resolve("a.txt"), "some text");
        try (Isolated library = Isolated.with("older-record")) {
            Object record = library.call("WinFile", path.toString(), true, true);

            assertEquals(path.toString(), field(record, "path"));
            assertEquals(false, field(record, "directory"));
            assertEquals(9L, field(record, "size"));
            assertEquals(Files.getLastModifiedTime(path).toMillis(), field(record, "lastModified"));
            assertEquals(ARCHIVE, field(record, "attributes"));
            assertEquals(Witness.securityDescriptor(path.toString()), field(record, "securityDescriptor"));
            assertEquals(false, field(record, "reparsePoint"));
            assertEquals(true,
                    field(library.call("WinFile", fixture("links") + "\\link", false, false), "reparsePoint"));
        }
    }

    private static Object field(Object record, String name) throws ReflectiveOperationException {
        return record.getClass().getField(name).get(record);
    }

    @Test
    void aRecordWithNeitherConstructorIsFileNotFound() throws Exception {
        try (Isolated library = Isolated.with("unknown-record")) {
            assertFails(FileNotFoundException.class, "", () -> library.call("WinFile", "C:\\windows", false, false));
        }
    }

    /** Calls the method from within: a look at the library's methods by reflection would ask for the record class. */
    public static class RecordOfWindows implements Callable<Object> {
        @Override
        public Object call() throws FileNotFoundException {
            return new WindowsUtil().WinFile("C:\\windows", false, false);
        }
    }

    @Test
    void withoutTheRecordClassEverythingIsFileNotFound() throws Exception {
        try (Isolated library = Isolated.without("com.qarvo.kel.util.WinFileList$WinFile")) {
            Callable<?> call = library.make(RecordOfWindows.class);

            assertFails(FileNotFoundException.class, "", call::call);
        }
    }

    @Test
    void theAttributeWordIsTheSystems() throws IOException {
        Path path = Files.createFile(folder.resolve("a.txt"));
        for (int attributes : new int[] {NORMAL, HIDDEN, READONLY, HIDDEN | READONLY}) {
            Witness.setAttributes(path.toString(), attributes);
            assertEquals(Witness.attributes(path.toString()), util.getFileAttr(path.toString()));
        }
        assertEquals(HIDDEN | READONLY | ARCHIVE, util.getFileAttr(path.toString()));
        assertEquals(DIRECTORY, util.getFileAttr(folder.toString()));
        assertEquals(DIRECTORY | REPARSE_POINT, util.getFileAttr(fixture("links") + "\\link"));
        Witness.setAttributes(path.toString(), NORMAL);
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "C:\\no such file", "C:\\no such folder\\x", "Q:\\", "C:\\a|b",
        "\\\\?\\C:\\no such file"})
    void theAttributeWordOfWhatIsNotThereIsMinusOne(String path) {
        assertEquals(UNREADABLE, util.getFileAttr(path));
    }
}
