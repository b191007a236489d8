package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** One file's life at the end of a path beyond the classic limit, or under a name that is not plain. */
class LongPathTest extends EndToEnd {
    @TempDir
    Path folder;

    @ParameterizedTest
    @ValueSource(ints = {258, 259, 260, 261, 400, 1200})
    void everyMethodTakesPathsBeyondTheClassicLimit(int length) throws IOException {
        Path directory = Deep.path(folder, length);
        makeAll(directory);
        assertEquals(length, directory.toString().length());

        liveAndDie(directory.toString(), directory, "file.txt", "renamed.txt");
    }

    @ParameterizedTest
    @ValueSource(ints = {261, 1200})
    void everyMethodTakesTheLongFormItself(int length) throws IOException {
        Path directory = Deep.path(folder, length);
        makeAll(directory);

        liveAndDie("\\\\?\\" + directory, directory, "file.txt", "renamed.txt");
    }

    @ParameterizedTest
    @ValueSource(strings = {"\u00E4\u00F6\u00FC \u00DF", "\u65E5\u672C\u8A9E", "\uD83D\uDE00 \uD834\uDD1E", "e\u0301",
        "\u05E9\u05DC\u05D5\u05DD", "100% [a]; b,c=d'e`f~", " leading", "several.dots.in.a.name"})
    void everyMethodTakesNamesInAnyScript(String name) throws IOException {
        Path directory = folder.resolve(name);
        assertTrue(util.mkdir(directory.toString()));

        liveAndDie(directory.toString(), directory, name + ".x", name + " renamed");
    }

    private void makeAll(Path directory) throws IOException {
        Path made = folder;
        for (Path component : folder.relativize(directory)) {
            made = made.resolve(component);
            assertTrue(util.mkdir(made.toString()), made.toString());
        }
    }

    private static void liveAndDie(String given, Path directory, String name, String newName) throws IOException {
        String path = given + "\\" + name;
        byte[] content = {1, 2, 3, 4, 5};
        try (NativeFile file = preallocate(path, 1000)) {
            util.write(file.record, content, 0, 5);
        }
        assertArrayEquals(content, Files.readAllBytes(directory.resolve(name)));
        try (NativeFile file = open(path)) {
            assertEquals(5, util.getFileSize(file.record));
        }
        assertTrue(util.setLastModified(path, 1_000_000_000_000L));
        assertEquals(1_000_000_000_000L, util.lastModified(path));
        assertEquals(ARCHIVE, util.getFileAttr(path));
        takesRightsAndAttributes(path);
        assertEquals(path, util.WinFile(path, true, true).getPath());
        assertTrue(util.exists(path));
        assertTrue(util.isDir(given));
        if (!given.startsWith("\\\\?\\")) {
            assertEquals(List.of(path), list(given).stream().map(file -> file.getPath()).toList());
        }
        assertTrue(util.renameTo(path, given + "\\" + newName));
        assertFalse(util.exists(path));
        assertFails(FileNotFoundException.class, Witness.message("openFile", FILE_NOT_FOUND),
                () -> util.openFile(path));
        assertTrue(util.delete(given + "\\" + newName));
        assertFalse(Files.exists(directory.resolve(newName)));
    }

    private static void takesRightsAndAttributes(String path) throws IOException {
        String wider = SecurityTest.widened(dacl(path));

        assertTrue(util.setFileAttrWithSecurityDescriptor(path, Win32.DACL_SECURITY_INFORMATION, wider,
                HIDDEN | ARCHIVE));
        assertEquals(wider, dacl(path));
        assertEquals(HIDDEN | ARCHIVE, util.getFileAttr(path));

        util.setFileAttr(path, ARCHIVE);
        assertEquals(ARCHIVE, util.getFileAttr(path));
    }

    private static String dacl(String path) {
        return util.getWinSecurityDescriptor(path, Win32.DACL_SECURITY_INFORMATION, null);
    }
}
