package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Links, as far as this system has them: it stores no reparse points and only pretends to make symbolic links. */
class LinksTest extends EndToEnd {
    private static final int NO_LINK = 255;
    private static final int NOT_SUPPORTED = 50;
    private static final int ALREADY_EXISTS = 183;
    private static final int NAME_TOO_LONG = 206;

    @TempDir
    Path folder;

    private static void assertNoLink(Object path) {
        assertEquals(NO_LINK, util.getLinkType(path.toString()));
        assertNull(util.getLinkTarget(path.toString()));
        assertFalse(util.isLink(path.toString()));
        assertFalse(util.isDirectoryJunction(path.toString()));
    }

    @Test
    void filesFoldersAndWhatIsMissingAreNoLinks() throws IOException {
        assertNoLink(Files.createFile(folder.resolve("file")));
        assertNoLink(folder);
        assertNoLink(folder.resolve("missing"));
        assertNoLink("Q:\\x");
        assertNoLink("");
    }

    @Test
    void aJunctionReplacesNoFolder() {
        assertFails(IOException.class, Witness.message("CreateJunctionPoint", ALREADY_EXISTS),
                () -> util.createJunctionPoint(folder.toString(), "C:\\data"));
    }

    @Test
    void aJunctionNeedsTheFolderAboveIt() {
        assertFails(IOException.class, Witness.message("CreateJunctionPoint", PATH_NOT_FOUND),
                () -> util.createJunctionPoint(folder.resolve("missing\\link").toString(), "C:\\data"));
    }

    @Test
    void theFolderOfAFailedJunctionStays() {
        Path link = folder.resolve("link");

        assertFails(IOException.class, Witness.message("CreateJunctionPoint", NOT_SUPPORTED),
                () -> util.createJunctionPoint(link.toString(), "C:\\data"));

        assertTrue(Files.isDirectory(link));
        assertNoLink(link);
    }

    @Test
    void aJunctionsTargetHasItsLimit() {
        assertFails(IOException.class, Witness.message("CreateJunctionPoint", NAME_TOO_LONG),
                () -> util.createJunctionPoint(folder.resolve("link").toString(), "a".repeat(2044)));
    }

    @Test
    void symbolicLinksAreMadeByTheSystem() throws IOException {
        assertTrue(util.createFileSymbolicLink(folder.resolve("filelink").toString(), "..\\x"));
        assertTrue(util.createDirectorySymbolicLink(folder.resolve("dirlink").toString(), "C:\\data"));
    }
}
