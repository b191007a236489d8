package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.qarvo.winutil.backup.Client;
import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Comparator;
import java.util.List;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The example client and the root of a drive with nothing in it, of which the system says that it finds no file. */
class EmptyDriveTest extends EndToEnd {
    @TempDir
    Path folder;

    private String drive;

    @BeforeEach
    void needAnEmptyDrive() {
        drive = System.getProperty("winutil.test.volume");
        assumeTrue(drive != null, "no small volume: mounting is not allowed here");
        assertArrayEquals(new String[0], new File(drive).list());
    }

    @AfterEach
    void emptyTheDrive() throws IOException {
        if (drive != null) {
            for (File entry : new File(drive).listFiles()) {
                try (Stream<Path> paths = Files.walk(entry.toPath())) {
                    for (Path path : paths.sorted(Comparator.reverseOrder()).toList()) {
                        Files.delete(path);
                    }
                }
            }
        }
    }

    private Path makeTree() throws IOException {
        Path tree = Files.createDirectories(folder.resolve("tree"));
        Files.writeString(Files.createDirectory(tree.resolve("sub")).resolve("file.txt"), "content");
        return tree;
    }

    private static void assertDone(String summary, Client.Result result) {
        assertEquals("", result.err());
        assertTrue(result.out().startsWith(summary), result.out());
    }

    @Test
    void isASourceAndATarget() {
        Path store = folder.resolve("store");

        assertDone("Backed up 0 files, 1 folders", Client.run("backup", drive, store));
        assertDone("Restored 0 files, 1 folders", Client.run("restore", store, drive));
        assertDone("Compared 0 files, 1 folders", Client.run("verify", store, drive));
    }

    @Test
    void isAStore() throws IOException {
        Path tree = makeTree();

        assertDone("Backed up 1 files, 2 folders", Client.run("backup", tree, drive));
        assertDone("Restored 1 files, 2 folders", Client.run("restore", drive, folder.resolve("out")));

        assertEquals("content", Files.readString(folder.resolve("out").resolve("sub").resolve("file.txt")));
    }

    @Test
    void isATargetForATree() throws IOException {
        Path store = folder.resolve("store");
        Client.run("backup", makeTree(), store);

        assertDone("Restored 1 files, 2 folders", Client.run("restore", store, drive));

        assertEquals("content", Files.readString(Path.of(drive).resolve("sub").resolve("file.txt")));
    }

    @Test
    void listsNothingWhileAMissingDriveIsNamed() {
        assertEquals(new Client.Result(0, "", ""), Client.run("list", drive));

        List<String> missing = Stream.iterate('D', letter -> (char) (letter + 1)).limit(20)
                .map(letter -> letter + ":\\").filter(root -> Files.notExists(Path.of(root))).toList();
        assertEquals(new Client.Result(2, "", "The folder " + missing.get(0) + " does not exist.\n"),
                Client.run("list", missing.get(0)));
    }
}
