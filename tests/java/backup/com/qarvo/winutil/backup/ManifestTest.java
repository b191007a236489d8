package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

class ManifestTest {
    private static final String HASH = "0123456789abcdef".repeat(4);
    private static final String TOP = Bed.directoryLine(".");
    private static final List<ManifestEntry> ENTRIES = List.of(
            new ManifestEntry(Type.DIRECTORY, "", 0, 0, 0x10, "", 0, "", "O:BAG:SYD:(A;;FA;;;SY)"),
            new ManifestEntry(Type.DIRECTORY, "sub. ", 0, -1, 0x12, "", 0, "", ""),
            new ManifestEntry(Type.FILE, "sub. \\tab\uD83D\uDE00\uD83D.txt", Long.MAX_VALUE, 1714557600123L, 0x80000021,
                    HASH, 7, "", "-"),
            new ManifestEntry(Type.FILE, "-", 0, 910692730085477L, 0, HASH, 0, "", "\\"),
            new ManifestEntry(Type.JUNCTION, "j", 0, -11644473600000L, 0x410, "", 0, "C:\\data\\x y", ""),
            new ManifestEntry(Type.FILE_LINK, "f", 0, 5, 0x420, "", 0, "..\\x", ""),
            new ManifestEntry(Type.DIRECTORY_LINK, "d", 0, 5, 0x410, "", 0, "-", ""));

    @Test
    void whatIsWrittenComesBack() throws IOException {
        assertEquals(ENTRIES, read(write(ENTRIES)));
    }

    @Test
    void isReadableTextWithOneEntryALine() throws IOException {
        String text = new String(write(ENTRIES), StandardCharsets.UTF_8);

        String[] lines = text.split("\n");
        assertEquals("winutil-backup 1", lines[0]);
        assertEquals("directory\t.\t0\t1970-01-01T00:00:00Z\t0x00000010\t-\t0\t-\tO:BAG:SYD:(A;;FA;;;SY)", lines[2]);
        assertEquals("junction\tj\t0\t1601-01-01T00:00:00Z\t0x00000410\t-\t0\tC:\\\\data\\\\x y\t-", lines[6]);
        assertEquals(ENTRIES.size() + 3, lines.length);
    }

    @Test
    void isRefusedWhereverItIsCutOff() throws IOException {
        byte[] whole = write(ENTRIES);
        for (int length = 0; length < whole.length; length++) {
            byte[] cut = Arrays.copyOf(whole, length);
            assertThrows(IOException.class, () -> read(cut), "cut to " + length);
        }
    }

    @Test
    void isRefusedWhicheverByteIsChanged() throws IOException {
        byte[] whole = write(ENTRIES);
        for (int i = 0; i < whole.length; i++) {
            byte[] changed = whole.clone();
            changed[i] ^= 1;
            assertThrows(IOException.class, () -> read(changed), "changed at " + i);
        }
    }

    @Test
    void isRefusedWhenSomethingFollowsItsEnd() throws IOException {
        byte[] longer = Arrays.copyOf(write(ENTRIES), write(ENTRIES).length + 1);

        assertThrows(IOException.class, () -> read(longer));
    }

    @Test
    void saysWhichLineIsWrong() {
        IOException e = assertThrows(IOException.class, () -> readLines(TOP, "rubbish"));

        assertEquals("line 3: it has 1 fields instead of 9", e.getMessage());
    }

    @Test
    void saysThatTheEndIsMissing() {
        IOException e = assertThrows(IOException.class,
                () -> read((ManifestFormat.HEADER + "\n" + TOP + "\n").getBytes(StandardCharsets.UTF_8)));

        assertEquals("line 3: the file ends here, its last part is missing", e.getMessage());
    }

    @Test
    void saysThatAnotherFormatIsNotKnown() {
        byte[] newer = "winutil-backup 2\n".getBytes(StandardCharsets.UTF_8);

        IOException e = assertThrows(IOException.class, () -> read(newer));

        assertTrue(e.getMessage().contains("newer version"), e.getMessage());
    }

    @Test
    void refusesBytesThatAreNotUtf8() {
        byte[] bytes = (ManifestFormat.HEADER + "\n\u00FF\n").getBytes(StandardCharsets.ISO_8859_1);

        IOException e = assertThrows(IOException.class, () -> read(bytes));
        assertEquals("line 2: the line is not UTF-8", e.getMessage());
    }

    @Test
    void refusesALineWithoutEnd() {
        byte[] bytes = new byte[(1 << 20) + 1];

        IOException e = assertThrows(IOException.class, () -> read(bytes));
        assertEquals("line 1: the line is too long", e.getMessage());
    }

    @ParameterizedTest
    @ValueSource(strings = {"..", "../x", "a/../x", "./x", "/x", "//server/share", "a//b", "a/", "C:", "C:/x", "x:y",
        "\\\\x", "..\\\\x", "\\\\\\\\.\\\\PhysicalDrive0", "nul", "a/COM1.txt", "", "\\u002E\\u002E", "..\\u002Fx",
        "a\\u0000", ".. /x", "a\\\\x"})
    void refusesPathsThatLeadOutOfTheTarget(String path) {
        assertThrows(IOException.class, () -> readLines(TOP, Bed.directoryLine("a"), Bed.directoryLine(path)));
    }

    static List<List<String>> impossibleOrders() {
        String link = "directory-link\tx\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\tC:\\\\windows\t-";
        return List.of(
                List.of(),
                List.of(Bed.directoryLine("a")),
                List.of(TOP, TOP),
                List.of(TOP, Bed.fileLine("a/b", 0, HASH, 0)),
                List.of(TOP, Bed.directoryLine("a"), Bed.directoryLine("a")),
                List.of(TOP, link, Bed.fileLine("x/y", 0, HASH, 0)),
                List.of(TOP, Bed.fileLine("x", 0, HASH, 0), Bed.fileLine("x/y", 0, HASH, 0)),
                List.of("junction\t.\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\tC:\\\\windows\t-"));
    }

    @ParameterizedTest
    @MethodSource("impossibleOrders")
    void refusesEntriesThatNoRealDirectoryHolds(List<String> lines) {
        assertThrows(IOException.class, () -> readLines(lines.toArray(String[]::new)));
    }

    static List<String> impossibleEntries() {
        return List.of(
                Bed.fileLine("a", -1, HASH, 1),
                Bed.fileLine("a", 5, HASH, 0),
                Bed.fileLine("a", 0, HASH, 1),
                Bed.fileLine("a", 5, "-", 1),
                Bed.fileLine("a", 5, HASH.substring(1), 1),
                Bed.fileLine("a", 5, HASH.toUpperCase(), 1),
                Bed.fileLine("a", 5, HASH, 1).replace("\t5\t", "\t9223372036854775808\t"),
                Bed.fileLine("a", 5, HASH, 1).replace("\t5\t", "\t05\t"),
                Bed.fileLine("a", 5, HASH, 1).replace("\t5\t", "\t+5\t"),
                Bed.fileLine("a", 5, HASH, 1).replace("2024-", "2024/"),
                Bed.fileLine("a", 5, HASH, 1).replace("2024-", "+999999999-"),
                Bed.fileLine("a", 5, HASH, 1).replace("0x00000020", "0x20"),
                Bed.fileLine("a", 5, HASH, 1).replace("0x00000020", "0x0000002g"),
                Bed.fileLine("a", 5, HASH, 1) + "\t-",
                Bed.fileLine("a", 5, HASH, 1).replace("file\t", "pipe\t"),
                Bed.directoryLine("a").replace("\t-\t0\t-", "\t" + HASH + "\t0\t-"),
                Bed.directoryLine("a").replace("\t-\t0\t-", "\t-\t0\tC:"),
                "junction\ta\t0\t2024-05-01T10:00:00Z\t0x00000410\t-\t0\t-\t-");
    }

    @ParameterizedTest
    @MethodSource("impossibleEntries")
    void refusesEntriesThatContradictThemselves(String line) throws IOException {
        assertEquals(2, readLines(TOP, Bed.fileLine("a", 5, HASH, 1)).size(), "the unchanged line is good");
        assertThrows(IOException.class, () -> readLines(TOP, line));
    }

    private static byte[] write(List<ManifestEntry> entries) throws IOException {
        ByteArrayOutputStream out = new ByteArrayOutputStream();
        ManifestWriter writer = new ManifestWriter(out);
        for (ManifestEntry entry : entries) {
            writer.add(entry);
        }
        writer.end();
        return out.toByteArray();
    }

    private static List<ManifestEntry> read(byte[] bytes) throws IOException {
        return ManifestReader.read(new ByteArrayInputStream(bytes));
    }

    private static List<ManifestEntry> readLines(String... lines) throws IOException {
        return read(new Bed().withManifest(lines).files.node("C:\\store\\manifest.txt").content);
    }
}
