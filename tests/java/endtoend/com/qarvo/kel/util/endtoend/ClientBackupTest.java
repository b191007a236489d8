package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.winutil.backup.Client;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.security.MessageDigest;
import java.util.HexFormat;
import java.util.List;
import java.util.Random;
import java.util.UUID;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** The example client on real files: its backups, what it makes of them, and what it refuses. */
class ClientBackupTest extends EndToEnd {
    private static final int LARGE = 600_001;
    private static final int BEYOND_THE_LIMIT = 300;

    @TempDir
    Path folder;

    private Path tree;
    private Path store;
    private Path restored;

    /** A jar that is first needed in a test would count as a file that the test leaves open. */
    @BeforeAll
    static void openItsJars() {
        Client.run("--help");
    }

    @BeforeEach
    void makeTree() throws IOException {
        tree = folder.resolve("tree");
        store = folder.resolve("store");
        restored = folder.resolve("restored");
        byte[] large = new byte[LARGE];
        new Random(1).nextBytes(large);
        Files.createDirectories(tree.resolve("empty folder"));
        Files.createDirectories(deep(tree));
        Files.write(tree.resolve("large"), large);
        Files.createFile(tree.resolve("empty"));
        Files.writeString(tree.resolve("read-only.txt"), "1");
        Files.writeString(tree.resolve("hidden.txt"), "22");
        Files.writeString(tree.resolve("\uD83D\uDE00 \uD834\uDD1E.txt"), "333");
        Files.writeString(deep(tree).resolve("deep.txt"), "4444");
        long time = 1_234_567_890_123L;
        for (Path path : all(tree)) {
            Files.setLastModifiedTime(path, FileTime.fromMillis(time += 86_400_001));
        }
        Witness.setAttributes(tree.resolve("read-only.txt").toString(), READONLY);
        Witness.setAttributes(tree.resolve("hidden.txt").toString(), HIDDEN);
    }

    private static Path deep(Path top) {
        return Deep.path(top, top.toString().length() + BEYOND_THE_LIMIT);
    }

    /** Everything in a folder and itself, what a folder holds before it. */
    private static List<Path> all(Path top) throws IOException {
        try (Stream<Path> paths = Files.walk(top)) {
            return paths.sorted((a, b) -> b.compareTo(a)).toList();
        }
    }

    private static List<String> names(Path top) throws IOException {
        return all(top).stream().map(path -> top.relativize(path).toString()).toList();
    }

    private static int attributes(Path path) {
        return Witness.attributes(Witness.longForm(path.toString()));
    }

    private static void assertDone(String summary, Client.Result result) {
        assertEquals("", result.err());
        assertTrue(result.out().startsWith(summary), result.out());
        assertEquals(0, result.code());
    }

    private static void assertRefused(String sentence, Client.Result result) {
        assertEquals(new Client.Result(2, "", sentence + "\n"), result);
    }

    /** Compares without the library: names, content, times and attributes. */
    private void assertComesBack() throws IOException {
        assertEquals(names(tree), names(restored));
        for (Path path : all(tree)) {
            Path copy = restored.resolve(tree.relativize(path));
            assertEquals(Files.getLastModifiedTime(path).toMillis(), Files.getLastModifiedTime(copy).toMillis(),
                    copy.toString());
            assertEquals(attributes(path), attributes(copy), copy.toString());
            if (Files.isRegularFile(path)) {
                assertArrayEquals(Files.readAllBytes(path), Files.readAllBytes(copy), copy.toString());
            }
        }
    }

    @ParameterizedTest
    @ValueSource(strings = {"--block-size=4K", "--unbuffered"})
    void aTreeComesBackAsItWas(String option) throws IOException {
        String counts = " 6 files, " + (all(tree).size() - 6) + " folders, 0 links, " + (LARGE + 10) + " bytes ";

        assertDone("Backed up" + counts, Client.run("backup", option, tree, store));
        assertDone("Restored" + counts, Client.run("restore", option, store, restored));
        assertDone("Compared" + counts, Client.run("verify", option, store, restored));

        assertComesBack();
        assertTrue((attributes(restored.resolve("read-only.txt")) & READONLY) != 0);
        assertTrue((attributes(restored.resolve("hidden.txt")) & HIDDEN) != 0);
    }

    @ParameterizedTest
    @ValueSource(strings = {"dot.", "space "})
    void aNameThatOnlyTheExtendedFormHasComesBack(String name) throws IOException {
        String original = Witness.longForm(tree + "\\" + name);
        String copy = Witness.longForm(restored + "\\" + name);
        try (NativeFile file = create(original, 0)) {
            util.write(file.record, new byte[] {1, 2, 3}, 0, 3);
        }

        int backedUp = Client.run("backup", tree, store).code();
        int broughtBack = Client.run("restore", store, restored).code();
        long size = util.WinFile(copy, false, true).getSize();
        // Java itself could not tidy them up.
        assertTrue(util.delete(original) && util.delete(copy));

        assertEquals(List.of(0, 0, 3L), List.of(backedUp, broughtBack, size));
    }

    @Test
    void aChangedTreeIsToldApart() throws IOException {
        Client.run("backup", tree, store);
        FileTime time = Files.getLastModifiedTime(tree.resolve("hidden.txt"));
        Witness.setAttributes(tree.resolve("hidden.txt").toString(), NORMAL);
        Files.writeString(tree.resolve("hidden.txt"), "2_");
        Files.setLastModifiedTime(tree.resolve("hidden.txt"), time);

        Client.Result result = Client.run("verify", store, tree);

        String path = "differs: " + tree.resolve("hidden.txt");
        assertEquals(path + ": its content is another one\n"
                + path + ": its attributes are -----a-- instead of ---h-a--\n", result.err());
        assertEquals(1, result.code());
    }

    @Test
    void aFileThatIsHeldOpenElsewhereIsLeftOut() throws IOException {
        Client.Result result;
        try (Exclusive held = Exclusive.hold(tree.resolve("large"))) {
            result = Client.run("backup", tree, store);
        }

        assertEquals("left out: " + tree.resolve("large") + ": " + Witness.message("CreateFileW", SHARING_VIOLATION)
                .strip() + "\n", result.err());
        assertEquals(1, result.code());
        assertDone("Restored 5 files", Client.run("restore", store, restored));
    }

    /** Windows lists and opens such folders for whoever may back up, and tells nobody else their attributes. */
    @Test
    void whatOnlyThePrivilegeToBackUpReachesIsBackedUp() throws Throwable {
        Path secret = Files.createDirectories(tree.resolve("private").resolve("inner")).resolve("file.txt");
        Files.writeString(secret, "content");

        Client.Result result = Interposer.withoutAttributesOf("\\private\\",
                () -> Client.run("backup", tree, store));

        assertEquals("", result.err());
        assertDone("Restored 7 files", Client.run("restore", store, restored));
        assertEquals("content", Files.readString(restored.resolve(tree.relativize(secret))));
    }

    /** This system's logon answers every account with a token that nobody knows. */
    @Test
    void anAccountThatCannotLogOnEndsTheBackupBeforeAnythingIsMade() throws IOException {
        Path password = Files.writeString(folder.resolve("password"), "secret");

        Client.Result result = Client.run("backup", "--as", ".\\nobody", "--password-file", password, tree, store);

        assertRefused("The account .\\nobody cannot log on: [WindowsUtil:SystemPrivilege:impersonateUser:"
                + "ImpersonateLoggedOnUser] (" + INVALID_HANDLE + ") "
                + Witness.systemText(INVALID_HANDLE).strip(), result);
        assertFalse(Files.exists(store));
    }

    @Test
    void whatIsThereIsNeverOverwritten() throws IOException {
        Client.run("backup", tree, store);
        List<String> before = names(folder);

        assertRefused(store + " already is a store; a backup needs a new or an empty folder.",
                Client.run("backup", tree, store));
        assertRefused("The target " + tree + " exists and is not empty.", Client.run("restore", store, tree));

        assertEquals(before, names(folder));
    }

    @Test
    void aStoreInsideTheSourceIsNoticedUnderAShortName() throws IOException {
        Path source = Files.createDirectory(folder.resolve("a name of more than eight characters"));
        String shortName = Witness.shortPath(source.toString());
        assertFalse(shortName.equals(source.toString()), "this system makes short names");

        assertRefused("The store " + shortName + "\\store must not lie inside the source.",
                Client.run("backup", source, shortName + "\\store"));

        assertEquals(List.of(""), names(source));
    }

    @Test
    void namesOfVolumesAreRefusedBeforeAnythingIsMade() throws IOException {
        Client.run("backup", tree, store);
        String volume = "Volume{" + UUID.randomUUID() + "}";
        String path = "\\\\?\\" + volume + "\\";

        assertRefused(path + " cannot be used: it takes a path that begins with a drive letter, or that of a share.",
                Client.run("restore", store, path));

        assertFalse(Files.exists(Path.of(volume)));
    }

    @Test
    void pathsMayHaveTheExtendedForm() throws IOException {
        String prefix = "\\\\?\\";

        assertEquals(0, Client.run("backup", prefix + tree, prefix + store).code());
        assertEquals(0, Client.run("restore", prefix + store, prefix + restored).code());

        assertComesBack();
    }

    /** This system makes no junctions, and leaves the folder that was to become one. */
    @Test
    void ofALinkThatCannotBeMadeNothingStays() throws Exception {
        String lines = "winutil-backup 1\n"
                + "directory\t.\t0\t2024-05-01T10:00:00Z\t0x00000010\t-\t0\t-\tD:(A;;FA;;;SY)\n"
                + "junction\tlink\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\tC:\\\\data\t-\n";
        byte[] sha256 = MessageDigest.getInstance("SHA-256").digest(lines.getBytes(StandardCharsets.UTF_8));
        Files.createDirectory(store);
        Files.writeString(store.resolve("manifest.txt"), lines + "end\t2\t" + HexFormat.of().formatHex(sha256) + "\n");

        Client.Result result = Client.run("restore", store, restored);

        assertEquals("left out: " + restored.resolve("link") + ": the link cannot be made: "
                + Witness.message("CreateJunctionPoint", 50).strip() + "\n", result.err());
        assertEquals(1, result.code());
        assertEquals(List.of(""), names(restored));
    }
}
