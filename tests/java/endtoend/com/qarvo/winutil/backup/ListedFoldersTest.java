package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Which folders are empty, and which cannot be listed. */
class ListedFoldersTest {
    @TempDir
    Path folder;

    private final NativeFiles files = new WindowsNativeFiles();

    @BeforeEach
    void makeAnEmptyFolder() throws IOException {
        Files.createDirectory(folder.resolve("empty"));
    }

    private List<WinFile> list(String name) throws IOException {
        List<WinFile> found = new ArrayList<>();
        files.list(folder + "\\" + name, false, found::add, (path, reason) -> { });
        return found;
    }

    @Test
    void anEmptyFolderHasNothing() throws IOException {
        assertEquals(List.of(), list("empty"));
    }

    @Test
    void aMissingFolderAndAFileCannotBeListed() throws IOException {
        Files.createFile(folder.resolve("file"));

        assertThrows(IOException.class, () -> list("missing"));
        assertThrows(IOException.class, () -> list("file"));
    }

    /** Asked for such a name, Java answers for the empty folder beside it. */
    @Test
    void aFolderThatCannotBeListedIsNotTakenForOneOfAlmostItsName() {
        assertThrows(IOException.class, () -> list("empty."));
        assertThrows(IOException.class, () -> list("empty "));
    }
}
