package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Set;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** What a restore relies on to keep others from its target, on the system itself. */
class HeldFoldersTest {
    @TempDir
    Path folder;

    private final NativeFiles files = new WindowsNativeFiles();

    @Test
    void aFolderThatIsHeldCannotBeRenamedOrRemoved() throws IOException {
        Path held = Files.createDirectory(folder.resolve("held"));
        long file = files.hold(held.toString());
        try {
            assertThrows(FileSystemException.class, () -> Files.move(held, folder.resolve("other")));
            assertThrows(FileSystemException.class, () -> Files.delete(held));
            assertFalse(files.rename(held.toString(), folder.resolve("other").toString()));
            // What is made, changed and removed in it, and its time and rights, are not kept from anybody.
            Files.delete(Files.createFile(held.resolve("file")));
            assertTrue(files.setLastModified(held.toString(), 0));
            files.setSecurity(held.toString(), 4, ClosedRights.of(files).text(true));
        } finally {
            files.close(file);
        }
        assertEquals(folder.resolve("other"), Files.move(held, folder.resolve("other")));
    }

    @Test
    void aFolderIsMadeWithRightsForNobodyAndThenForAFew() throws IOException {
        String made = folder.resolve("made").toString();

        assertTrue(files.makeClosedDirectory(made));
        String rights = files.security(made);
        assertFalse(rights.contains(";WD)") || rights.contains(files.account() + ")"), rights);

        ClosedRights.of(files).close(files, made);
        rights = files.security(made);
        assertTrue(rights.contains(";SY)") && !rights.contains(";WD)"), rights);
        assertFalse(files.makeClosedDirectory(made));
    }

    @Test
    void whatIsOpenToOthersIsNotTakenForClosed() throws IOException {
        String open = Files.createDirectory(folder.resolve("open")).toString();
        files.setSecurity(open, 4, "D:(A;;FA;;;SY)(A;;FA;;;WD)");
        String rights = files.security(open);

        assertTrue(rights.contains(";WD)"), rights);
        assertFalse(Descriptor.parse(rights).grantsOnly(Set.of("SY", "BA", files.account())));
    }
}
