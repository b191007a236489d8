package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.winutil.backup.Client;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.MethodSource;

/** Stores put together by an enemy, restored for real: nothing is made, changed or removed outside of the target. */
class HostileManifestTest extends EndToEnd {
    private static final String RIGHTS = "O:BAG:SYD:(A;;FA;;;SY)";
    private static final String CONTENT = "content";
    private static final String EMPTY = "0\t2024-05-01T10:00:00Z\t0x00000020\t" + sha256("") + "\t0\t-\t" + RIGHTS;
    private static final String FULL = CONTENT.length() + "\t2024-05-01T10:00:00Z\t0x00000020\t" + sha256(CONTENT)
            + "\t1\t-\t" + RIGHTS;

    @TempDir
    Path folder;

    private Path outside;
    private Path store;
    private Path target;

    @BeforeEach
    void makeASecret() throws IOException {
        outside = Files.createDirectory(folder.resolve("outside"));
        Files.writeString(outside.resolve("victim.txt"), "precious");
        store = folder.resolve("store");
        target = folder.resolve("target");
    }

    private static String sha256(String text) {
        try {
            byte[] bytes = text.getBytes(StandardCharsets.UTF_8);
            return HexFormat.of().formatHex(MessageDigest.getInstance("SHA-256").digest(bytes));
        } catch (NoSuchAlgorithmException e) {
            throw new IllegalStateException(e);
        }
    }

    private static String directory(String path) {
        return "directory\t" + path + "\t0\t2024-05-01T10:00:00Z\t0x00000010\t-\t0\t-\t" + RIGHTS;
    }

    private static String file(String path, String rest) {
        return "file\t" + path + "\t" + rest;
    }

    /** Makes a store of these lines, with one content, and a first and last line that are right. */
    private void makeStore(List<String> lines) throws IOException {
        StringBuilder text = new StringBuilder("winutil-backup 1\n");
        lines.forEach(line -> text.append(line).append('\n'));
        Path content = store.resolve("data").resolve("00000").resolve("00000001");
        Files.createDirectories(content.getParent());
        Files.writeString(content, CONTENT);
        Files.writeString(store.resolve("manifest.txt"), text + "end\t" + lines.size() + "\t" + sha256(text.toString())
                + "\n");
    }

    /** Everything around the target, with what it contains. */
    private Map<String, String> surroundings() throws IOException {
        Map<String, String> found = new TreeMap<>();
        try (Stream<Path> paths = Files.walk(folder)) {
            for (Path path : paths.filter(p -> !p.startsWith(target)).toList()) {
                found.put(path.toString(), Files.isRegularFile(path)
                        ? Files.getLastModifiedTime(path) + Files.readString(path) : "folder");
            }
        }
        return found;
    }

    static Stream<String> namesThatLeadElsewhere() {
        return Stream.of("..", "../outside/victim.txt", "sub/../../outside/victim.txt", ".", "./x", "sub/.", "/x",
                "C:/x", "C:x", "//server/share/x", "\\\\\\\\?\\\\C:\\\\x", "a\\\\..\\\\..\\\\outside\\\\victim.txt",
                "file.txt:stream", "file.txt::$DATA", "nul", "NUL.txt", "com1", "LPT\u00B9.txt", "COM\u00B2", "con",
                "CONIN$", "aux .txt", "...", ". .", " ", "sub//x", "sub/", "a*", "a?", "a<b", "a|b", "a\\u0000b",
                "a\\u001Fb", "a\\nb", "a\\qb", "a\\u12", "");
    }

    @ParameterizedTest
    @MethodSource("namesThatLeadElsewhere")
    void aNameThatCouldLeadElsewhereIsRefusedBeforeAnythingIsMade(String name) throws IOException {
        makeStore(List.of(directory("."), directory("sub"), file(name, FULL)));
        Map<String, String> before = surroundings();

        Client.Result result = Client.run("restore", store, target);

        assertEquals(2, result.code(), result.toString());
        assertTrue(result.err().startsWith(store.resolve("manifest.txt") + " cannot be used: line 4: "), result.err());
        assertEquals(before, surroundings());
        assertTrue(Files.notExists(target));
    }

    static Stream<List<String>> linesThatContradictEachOther() {
        return Stream.of(
                List.of(directory("."), file("link/x", FULL)),
                List.of(directory("."), file("twice", FULL), file("twice", FULL)),
                List.of(directory("."), file("file", FULL), file("file/x", FULL)),
                List.of(directory("."), "junction\tlink\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\tC:\\\\data\t-",
                        file("link/x", FULL)),
                List.of(directory("."), "directory-link\tlink\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\t..\t-",
                        directory("link")),
                List.of(file(".", FULL)),
                List.of(directory("."), directory(".")),
                List.of(directory("."), file("x", FULL.replace("\t1\t-", "\t0\t-"))),
                List.of(directory("."), file("x", FULL.replace("\t1\t-", "\t-1\t-"))),
                List.of(directory("."), file("x", FULL.replaceFirst("7", "99999999999999999999"))),
                List.of(directory("."), file("x", FULL.replaceFirst("7", "-7"))),
                List.of(directory("."), file("x", FULL.replace("0x00000020", "0x20"))),
                List.of(directory("."), file("x", FULL + "\tmore")),
                List.of(directory("."), "device\tx\t" + FULL));
    }

    @ParameterizedTest
    @MethodSource("linesThatContradictEachOther")
    void aManifestThatContradictsItselfIsRefusedBeforeAnythingIsMade(List<String> lines) throws IOException {
        makeStore(lines);
        Map<String, String> before = surroundings();

        Client.Result result = Client.run("restore", store, target);

        assertEquals(2, result.code(), result.toString());
        assertTrue(result.err().contains(" cannot be used: line "), result.err());
        assertEquals(before, surroundings());
        assertTrue(Files.notExists(target));
    }

    @ParameterizedTest
    @CsvSource({
        "9, 1, it has 7 bytes instead of 9",
        "4611686018427387904, 1, it has 7 bytes instead of 4611686018427387904",
        "7, 2, its content in the store cannot be read",
        "7, 4611686018427387904, its content in the store cannot be read",
    })
    void aSizeOrAContentThatLiesIsReportedAndLeavesNothing(String size, String content, String reason)
            throws IOException {
        makeStore(List.of(directory("."), file("x", FULL.replaceFirst("7", size).replace("\t1\t-",
                "\t" + content + "\t-"))));
        Map<String, String> before = surroundings();

        Client.Result result = Client.run("restore", store, target);

        assertEquals(1, result.code(), result.toString());
        assertTrue(result.err().contains(reason), result.err());
        assertEquals(before, surroundings());
        assertEquals(List.of(), names());
    }

    @Test
    void oneContentMayBeThatOfManyFiles() throws IOException {
        makeStore(List.of(directory("."), file("x", FULL), file("y", FULL)));

        assertEquals(0, Client.run("restore", store, target).code());

        assertEquals(List.of("x", "y"), names());
        assertEquals(CONTENT, Files.readString(target.resolve("y")));
    }

    @Test
    void namesThatWindowsTakesForOneAreMadeOnce() throws IOException {
        makeStore(List.of(directory("."), file("Name", FULL), file("NAME", EMPTY), directory("Sub"), directory("SUB"),
                file("SUB/x", FULL)));

        Client.Result result = Client.run("restore", store, target);

        assertEquals(1, result.code());
        assertEquals(List.of("Name", "Sub"), names());
        assertEquals(CONTENT, Files.readString(target.resolve("Name")));
        assertEquals(3, result.err().lines().count(), result.err());
    }

    @Test
    void aShortNameOfAnotherFileLeadsNowhere() throws IOException {
        Path probe = Files.createDirectory(folder.resolve("a name of more than eight characters"));
        String shortName = Path.of(Witness.shortPath(probe.toString())).getFileName().toString();
        makeStore(List.of(directory("."), directory(probe.getFileName().toString()),
                file(probe.getFileName() + "/kept", FULL), directory(shortName), file(shortName + "/kept", EMPTY)));

        Client.Result result = Client.run("restore", store, target);

        assertEquals(1, result.code());
        assertEquals(CONTENT, Files.readString(target.resolve(probe.getFileName()).resolve("kept")));
    }

    @ParameterizedTest
    @CsvSource({"S:x", "O:WDG:WD", "D:PP(A;;FA;;;WD", "'D:(A;;FA;;;WD)\\u0000(D;;FA;;;WD)'", "unread"})
    void aDescriptorThatSaysNothingUsefulOpensNothing(String security) throws IOException {
        String entry = FULL.substring(0, FULL.length() - RIGHTS.length()) + security;
        makeStore(List.of(directory("."), file("x", entry)));

        Client.Result result = Client.run("restore", store, target);

        assertEquals(1, result.code());
        assertTrue(result.err().endsWith("; it is closed to others\n"), result.err());
        assertEquals(1, result.err().lines().count(), result.err());
        String rights = Witness.securityDescriptor(target.resolve("x").toString());
        assertFalse(rights.contains(";WD)"), rights);
    }

    private List<String> names() throws IOException {
        try (Stream<Path> paths = Files.list(target)) {
            return paths.map(path -> path.getFileName().toString()).sorted().toList();
        }
    }
}
