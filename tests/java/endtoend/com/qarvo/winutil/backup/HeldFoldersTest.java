package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import java.io.IOException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;
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
            files.setSecurity(held.toString(), Win32.DACL_SECURITY_INFORMATION,
                    ClosedRights.of(files, held.toString()).text(true));
        } finally {
            files.close(file);
        }
        assertEquals(folder.resolve("other"), Files.move(held, folder.resolve("other")));
    }

    @Test
    void aFolderIsMadeWithRightsForNobodyAndThenForAFew() throws IOException {
        String made = folder.resolve("made").toString();

        assertTrue(files.makeClosedDirectory(made));
        // This system has the system account in every list, and of what denies something shows the outcome alone.
        assertEquals("(A;OICI;FA;;;SY)", entries(made));

        ClosedRights rights = ClosedRights.of(files, made);
        rights.closeMade(made);
        rights.requireClosed(made);
        assertEquals("(A;OICI;FA;;;SY)(A;OICI;FA;;;" + files.account() + ")", entries(made));
        assertFalse(files.makeClosedDirectory(made));
    }

    @Test
    void whatIsOpenToOthersIsNotTakenForClosed() throws IOException {
        String open = Files.createDirectory(folder.resolve("open")).toString();
        files.setSecurity(open, Win32.DACL_SECURITY_INFORMATION, "D:(A;;FA;;;SY)(A;;FA;;;WD)");
        ClosedRights rights = ClosedRights.of(files, open);

        assertTrue(entries(open).contains(";WD)"), entries(open));
        assertThrows(IOException.class, () -> rights.requireClosed(open));
        assertThrows(IOException.class, () -> rights.closeMade(open));
    }

    @Test
    void aNameThatJavaTakesForAnotherOneIsNotMade() {
        assertThrows(IOException.class, () -> files.makeClosedDirectory(folder + "\\made."));
        assertTrue(Files.notExists(folder.resolve("made")));
    }

    /** Another thread tries as hard as it can. The folders above the target this system lets everybody rename. */
    @Test
    void nobodyRenamesATargetWhileItIsRestoredInto() throws Exception {
        Path tree = Files.createDirectories(folder.resolve("tree"));
        for (int i = 0; i < 200; i++) {
            Files.writeString(Files.createDirectory(tree.resolve("folder" + i)).resolve("file"), "content " + i);
        }
        Path target = folder.resolve("out");
        Path moved = folder.resolve("moved");
        assertEquals(0, Client.run("backup", tree, folder.resolve("store")).code());
        AtomicInteger tries = new AtomicInteger();
        AtomicInteger renamed = new AtomicInteger();
        AtomicBoolean done = new AtomicBoolean();
        Thread attacker = new Thread(() -> {
            while (!done.get()) {
                if (Files.exists(target.resolve("restore-unfinished"))) {
                    tries.incrementAndGet();
                    // When it has been finished, and let go, it may be renamed.
                    files.rename(target.toString(), moved.toString());
                    renamed.addAndGet(Files.exists(moved.resolve("restore-unfinished")) ? 1 : 0);
                }
            }
        });
        attacker.start();

        Client.Result result;
        try {
            result = Client.run("restore", folder.resolve("store"), target);
        } finally {
            done.set(true);
            attacker.join();
        }

        assertEquals("", result.err());
        assertEquals(0, renamed.get(), "renamed, of " + tries);
        assertTrue(tries.get() > 100, "tried " + tries);
    }

    private String entries(String path) {
        return files.security(path).replaceFirst("^.*?D:", "");
    }
}
