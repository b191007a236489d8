package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.function.Function;
import java.util.stream.Collectors;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ListingTest extends EndToEnd {
    @TempDir
    Path folder;

    @BeforeEach
    void makeATree() throws IOException {
        Files.createDirectories(folder.resolve("dir\\below"));
        Files.writeString(folder.resolve("a.txt"), "some text");
        Files.createFile(folder.resolve("empty"));
        Files.write(folder.resolve("hidden.bin"), new byte[70_000]);
        Witness.setAttributes(folder.resolve("hidden.bin").toString(), HIDDEN | READONLY);
        Files.setLastModifiedTime(folder.resolve("a.txt"), FileTime.fromMillis(1_234_567_890_123L));
        Files.setLastModifiedTime(folder.resolve("dir"), FileTime.fromMillis(-1_000_000L));
    }

    private static Map<String, WinFile> list(Object directory, boolean security, boolean attributes, boolean onFiles)
            throws IOException {
        WinFileList entries = new WinFileList();
        util.listWinFiles(entries, directory.toString(), security, attributes, null, onFiles);
        return entries.files().stream().collect(Collectors.toMap(WinFile::getName, Function.identity(),
                (a, b) -> {
                    throw new AssertionError("twice: " + a);
                }, TreeMap::new));
    }

    @Test
    void eachEntryIsAsTheJavaPlatformSeesIt() throws IOException {
        Map<String, WinFile> entries = list(folder, false, true, false);

        assertEquals(List.of("a.txt", "dir", "empty", "hidden.bin"), List.copyOf(entries.keySet()));
        for (WinFile entry : entries.values()) {
            Path path = folder.resolve(entry.getName());
            assertEquals(path.toString(), entry.getPath());
            assertEquals(Files.isDirectory(path), entry.isDirectory());
            assertEquals(entry.isDirectory() ? 0 : Files.size(path), entry.getSize());
            assertEquals(Files.getLastModifiedTime(path).toMillis(), entry.getLastModified());
            assertEquals(Witness.attributes(path.toString()), entry.getAttributes());
            assertEquals("", entry.getSecurityDescriptor());
            assertFalse(entry.isReparsePoint());
        }
        assertEquals(1_234_567_890_123L, entries.get("a.txt").getLastModified());
        assertEquals(-1_000_000L, entries.get("dir").getLastModified());
        assertEquals(HIDDEN | READONLY, entries.get("hidden.bin").getAttributes() & (HIDDEN | READONLY));
    }

    @Test
    void withoutAttributesTheWordIsZeroForEveryEntry() throws IOException {
        Map<String, WinFile> entries = list(folder, false, false, false);

        assertEquals(4, entries.size());
        entries.values().forEach(entry -> assertEquals(0, entry.getAttributes()));
        assertTrue(entries.get("dir").isDirectory());
        assertEquals(70_000, entries.get("hidden.bin").getSize());
    }

    @Test
    void withSecurityEachEntryHasItsDescriptorAsText() throws IOException {
        Map<String, WinFile> entries = list(folder, true, false, true);

        assertEquals(4, entries.size());
        entries.values().forEach(entry ->
                assertEquals(Witness.securityDescriptor(entry.getPath()), entry.getSecurityDescriptor()));
        assertTrue(entries.get("dir").getSecurityDescriptor().startsWith("O:"));
    }

    @Test
    void withSecurityOfDirectoriesOnlyFilesHaveNone() throws IOException {
        Map<String, WinFile> entries = list(folder, true, true, false);

        assertEquals(Witness.securityDescriptor(folder.resolve("dir").toString()),
                entries.get("dir").getSecurityDescriptor());
        assertEquals("", entries.get("a.txt").getSecurityDescriptor());
    }

    @Test
    void anEmptyDirectoryHasNoEntries() throws IOException {
        assertEquals(Map.of(), list(folder.resolve("dir\\below"), true, true, true));
    }

    @Test
    void theDirectoryStandsInFrontOfEachNameAsItWasGiven() throws IOException {
        String slashes = folder.resolve("dir").toString().replace('\\', '/');

        assertEquals(slashes + "\\below", list(slashes, false, false, false).get("below").getPath());
        assertEquals(folder + "\\dir\\below", list(folder + "\\dir\\", false, false, false).get("below").getPath());
        assertEquals("C:\\windows", list("C:\\", false, false, false).get("windows").getPath());
    }

    @Test
    void aLinkToADirectoryIsAReparsePointWhenAttributesAreAskedFor() throws IOException {
        Path links = Path.of(fixture("links"));
        WinFile link = list(links, false, true, false).get("link");
        WinFile bare = list(links, false, false, false).get("link");

        assertEquals(DIRECTORY | REPARSE_POINT, link.getAttributes());
        assertTrue(link.isReparsePoint());
        assertTrue(link.isDirectory());
        assertFalse(bare.isReparsePoint());
        assertTrue(bare.isDirectory());
    }

    @Test
    void theEntriesOfAShareAreListed() throws IOException {
        String share = fixture("share");
        assertTrue(util.mkdir(share + "\\listed"));
        util.closeFile(util.createFileN(share + "\\listed\\file", READ_WRITE, 0));

        assertEquals(share + "\\listed\\file", list(share + "\\listed", true, true, true).get("file").getPath());
    }

    @ParameterizedTest
    @ValueSource(strings = {"C:\\no such folder", "C:\\windows\\win.ini", "Q:\\", "", "windows", "C:\\a|b",
        "\\\\no-such-server\\share"})
    void aDirectoryThatCannotBeSearchedIsReportedInTheSystemsWords(String directory) {
        String start = Witness.longForm(directory);
        int code = Witness.searchError(start + (start.endsWith("\\") ? "*.*" : "\\*.*"));
        WinFileList entries = new WinFileList();

        assertFails(IOException.class, Witness.systemText(code == INVALID_NAME ? ACCESS_DENIED : code),
                () -> util.listWinFiles(entries, directory, true, true, null, true));
        assertEquals(List.of(), entries.files());
    }

    @Test
    void aMissingDirectoryIsPathNotFound() {
        assertFails(IOException.class, Witness.systemText(PATH_NOT_FOUND),
                () -> list(folder.resolve("missing"), false, false, false));
    }

    @Test
    void aDirectoryInLongFormIsRefusedAsAccessDenied() {
        WinFileList entries = new WinFileList();

        assertFails(IOException.class, Witness.systemText(ACCESS_DENIED),
                () -> util.listWinFiles(entries, "\\\\?\\" + folder, false, true, null, false));
        assertEquals(List.of(), entries.files());
    }
}
