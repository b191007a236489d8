package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.sun.jna.platform.win32.Ole32;
import com.sun.jna.platform.win32.Shell32;
import com.sun.jna.platform.win32.WinDef;
import com.sun.jna.platform.win32.WinDef.DWORD;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Shortcuts and the system's folders; libraries only as far as this system has them, which is their names. */
class ShellTest extends EndToEnd {
    private static final int PROGRAM_FILES_X86 = 42;
    private static final int PROGRAM_FILES = 38;
    private static final int WINDOWS = 36;
    private static final int SYSTEM = 37;

    @TempDir
    Path folder;

    /** What COM and the shell open for good, they open here. */
    @BeforeAll
    static void startCom() {
        Ole32.INSTANCE.CoInitializeEx(null, Ole32.COINIT_MULTITHREADED);
        util.getShortcutTarget("C:\\missing.lnk");
        util.isShortcut("C:\\missing.lnk");
    }

    @AfterAll
    static void endCom() {
        Ole32.INSTANCE.CoUninitialize();
    }

    /** Of the ANSI code page: this system keeps a shortcut's path in it. */
    private Path target() {
        return folder.resolve("target \u00FC.txt");
    }

    private Path shortcut() throws IOException {
        Path target = Files.createFile(target());
        Path shortcut = folder.resolve("shortcut.lnk");
        ShellObjects.saveShortcut(shortcut, target);
        return shortcut;
    }

    @Test
    void aShortcutIsFollowedAndNotRewritten() throws IOException {
        Path shortcut = shortcut();
        byte[] before = Files.readAllBytes(shortcut);

        assertTrue(util.isShortcut(shortcut.toString()));
        assertEquals(target().toString(), util.getShortcutTarget(shortcut.toString()));
        assertEquals(-1, Arrays.mismatch(before, Files.readAllBytes(shortcut)));
    }

    @Test
    void aShortcutIsFollowedOnThreadsOfAnyMode() throws Exception {
        String shortcut = shortcut().toString();
        String target = target().toString();
        for (int mode : new int[] {-1, Ole32.COINIT_MULTITHREADED, Ole32.COINIT_APARTMENTTHREADED}) {
            List<String> targets = new ArrayList<>();
            Thread thread = new Thread(() -> {
                if (mode >= 0) {
                    Ole32.INSTANCE.CoInitializeEx(null, mode);
                }
                targets.add(util.getShortcutTarget(shortcut));
                targets.add(util.getShortcutTarget(shortcut));
                if (mode >= 0) {
                    Ole32.INSTANCE.CoUninitialize();
                }
            });
            thread.start();
            thread.join();

            assertEquals(List.of(target, target), targets, "mode " + mode);
        }
    }

    @Test
    void anotherFileIsNoShortcut() throws IOException {
        Path file = Files.writeString(folder.resolve("file.txt"), "content");
        Path junk = Files.writeString(folder.resolve("junk.lnk"), "no shortcut");

        assertFalse(util.isShortcut(file.toString()));
        assertFalse(util.isShortcut(folder.toString()));
        assertFalse(util.isShortcut(folder.resolve("missing").toString()));
        assertEquals("", util.getShortcutTarget(file.toString()));
        assertEquals("", util.getShortcutTarget(junk.toString()));
        assertEquals("", util.getShortcutTarget(folder.resolve("missing.lnk").toString()));
    }

    @ParameterizedTest
    @CsvSource({
        "a.library-ms, true",
        "C:\\folder\\Music.library-ms, true",
        ".library-ms, false",
        "A.LIBRARY-MS, false",
        "a.library-m, false",
        "'', false",
    })
    void aLibraryIsToldByItsName(String path, boolean library) {
        assertEquals(library, util.isLibrary(path));
    }

    @Test
    void aLibraryThatCannotBeReadHasNoFoldersAndNoIcon() throws IOException {
        Path library = Files.writeString(folder.resolve("a.library-ms"), "<libraryDescription/>");
        List<Object> folders = new ArrayList<>();

        util.getLibraryFolders(library.toString(), folders);

        assertEquals(List.of(), folders);
        assertNull(util.getLibraryIcon(library.toString()));
    }

    @Test
    void theSystemsSearchOrderIsSearched() {
        String found = util.searchPathFromLibrary("kernel32.dll");

        assertTrue(found.equalsIgnoreCase(systemFolder(SYSTEM) + "\\kernel32.dll"), found);
        assertEquals("", util.searchPathFromLibrary("no such file.dll"));
        assertEquals("", util.searchPathFromLibrary(""));
    }

    private static String systemFolder(int id) {
        char[] path = new char[WinDef.MAX_PATH];
        assertEquals(0, Shell32.INSTANCE.SHGetFolderPath(null, id, null, new DWORD(0), path).intValue());
        return new String(path).trim();
    }

    @Test
    void theExcludedFoldersComeInTheirOrder() {
        List<Object> folders = new ArrayList<>();

        util.getSystemExcludeFolders(folders);

        assertEquals(List.of(systemFolder(PROGRAM_FILES_X86), systemFolder(PROGRAM_FILES), systemFolder(WINDOWS)),
                folders);
    }

    @Test
    void theExceptionOfACollectionReachesTheCaller() {
        IllegalStateException full = new IllegalStateException("full");
        List<Object> collection = new ArrayList<>() {
            @Override
            public boolean add(Object element) {
                throw full;
            }
        };

        assertSame(full, assertThrowsExactly(IllegalStateException.class,
                () -> util.getSystemExcludeFolders(collection)));
    }
}
