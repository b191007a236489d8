package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.ByteArrayOutputStream;
import java.io.PrintWriter;
import java.io.StringWriter;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class CommandLineTest {
    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @ParameterizedTest
    @ValueSource(strings = {"list", "backup", "restore", "verify", "inventory", "run", "ps", "serve", "send"})
    void eachCommandHasHelpThatNeedsNoLibrary(String command) {
        StringWriter out = new StringWriter();

        int code = Main.run(Bed.without(new AssertionError("the library is not needed")), null, bed.stop,
                new PrintWriter(out, true), new PrintWriter(out, true), command, "--help");

        assertEquals(0, code);
        assertTrue(out.toString().startsWith("Usage: backup-client " + command), out.toString());
    }

    @Test
    void theHelpHasNoColoursWhereThereIsNoTerminal() {
        String before = System.getProperty("picocli.ansi");
        System.setProperty("picocli.ansi", "true");
        try {
            String out = bed.run("backup", "--help").out();
            assertTrue(out.contains("SOURCE") && out.indexOf('\u001b') < 0, out);
        } finally {
            if (before == null) {
                System.clearProperty("picocli.ansi");
            } else {
                System.setProperty("picocli.ansi", before);
            }
        }
    }

    @Test
    void theHelpNamesTheExitCodes() {
        Bed.Result result = bed.run("--help");

        assertEquals(0, result.code());
        assertTrue(result.out().contains("Exit codes:"), result.out());
    }

    @ParameterizedTest
    @ValueSource(strings = {"list C:\\src", "inventory", "run --as-session 1 a.exe", "ps",
        "serve", "send text"})
    void aLibraryThatCannotBeLoadedIsOneSentence(String arguments) {
        StringWriter err = new StringWriter();

        int code = Main.run(Bed.without(new UnsatisfiedLinkError("WinUtil64.dll is missing.")), null, bed.stop,
                new PrintWriter(new StringWriter()), new PrintWriter(err, true), arguments.split(" "));

        assertEquals(2, code);
        assertEquals("WinUtil64.dll is missing.", err.toString().strip());
    }

    @ParameterizedTest
    @CsvSource(delimiter = ';', value = {
        "; A command is missing.",
        "copy; Unmatched argument at index 0: 'copy'",
        "backup; Missing required parameters: 'SOURCE', 'STORE'",
        "backup C:\\src; Missing required parameter: 'STORE'",
        "backup --block-size=1 C:\\src C:\\store; Invalid value for option '--block-size': '1' is not a size"
            + " from 512 to 64M",
        "backup --block-size=65M C:\\src C:\\store; Invalid value for option '--block-size': '65M' is not a"
            + " size from 512 to 64M",
        "backup --block-size=x C:\\src C:\\store; Invalid value for option '--block-size': 'x' is not a size"
            + " from 512 to 64M",
        "list --colour C:\\src; Unknown option: '--colour'",
    })
    void aWrongCommandLineIsOneSentenceAndAPointerToTheHelp(String arguments, String sentence) {
        Bed.Result result = bed.run(arguments == null ? new String[0] : arguments.split(" "));

        assertEquals(2, result.code());
        List<String> lines = result.err().lines().toList();
        assertEquals(sentence, lines.get(0));
        assertTrue(lines.get(1).startsWith("Try backup-client"), result.err());
        assertEquals(2, lines.size());
    }

    @ParameterizedTest
    @CsvSource(delimiter = '=', value = {
        "list C:\\none = The folder C:\\none does not exist.",
        "list C:\\src\\a.txt = The folder C:\\src\\a.txt is not a folder.",
        "backup C:\\none C:\\store = The source C:\\none does not exist.",
        "backup C:\\src\\a.txt C:\\store = The source C:\\src\\a.txt is not a folder.",
        "backup C:\\locked C:\\store = The source C:\\locked cannot be listed: Access denied.",
        "backup C:\\src C:\\full = C:\\full is not empty; a backup needs a new or an empty folder.",
        "backup C:\\src C:\\old = C:\\old already is a store; a backup needs a new or an empty folder.",
        "backup C:\\src C:\\half = C:\\half holds a backup that was not finished; a backup needs a new or an"
            + " empty folder.",
        "backup C:\\src C:\\src\\a.txt = The store C:\\src\\a.txt must not lie inside the source.",
        "backup C:\\src C:\\full\\f = The store C:\\full\\f is not a folder.",
        "backup C:\\src C:\\no\\store = The store C:\\no\\store cannot be made, because the folder C:\\no does"
            + " not exist.",
        "backup C:\\src C:\\src = The store C:\\src must not lie inside the source.",
        "backup C:\\src C:\\SRC\\store = The store C:\\SRC\\store must not lie inside the source.",
        "backup C:\\src\\sub C:\\src = The source C:\\src\\sub must not lie inside the store.",
        "backup C:\\src C:\\alias = The store C:\\alias must not lie inside the source.",
        "backup --unbuffered --block-size 1000 C:\\src C:\\store = Unbuffered reading needs a block size that is a"
            + " multiple of the sector size, 512 bytes; 1000 is not.",
        "restore C:\\none C:\\out = The store C:\\none does not exist.",
        "restore C:\\src\\a.txt C:\\out = The store C:\\src\\a.txt is not a folder.",
        "restore C:\\src C:\\out = C:\\src is not a store: it has no manifest.txt.",
        "restore C:\\half C:\\out = C:\\half holds a backup that was not finished.",
        "restore C:\\bad C:\\out = C:\\bad\\manifest.txt cannot be used: line 1: this is not the manifest of a backup",
        "restore C:\\old C:\\full = The target C:\\full exists and is not empty.",
        "restore C:\\old C:\\full\\f = The target C:\\full\\f is not a folder.",
        "restore C:\\old C:\\old\\out = The target C:\\old\\out must not lie inside the store.",
        "restore C:\\old C:\\no\\out = The target C:\\no\\out cannot be made, because the folder C:\\no does"
            + " not exist.",
        "verify C:\\none C:\\src = The store C:\\none does not exist.",
        "verify C:\\src C:\\src = C:\\src is not a store: it has no manifest.txt.",
        "verify C:\\old C:\\none = The tree C:\\none does not exist.",
    })
    void badInputIsOneSentenceAndChangesNothing(String arguments, String sentence) {
        prepareFolders();
        List<String> before = List.copyOf(files.below("C:"));
        files.calls.clear();

        Bed.Result result = bed.run(arguments.split(" "));

        assertEquals(sentence + "\n", result.err());
        assertEquals(2, result.code());
        assertEquals("", result.out());
        assertEquals(before, files.below("C:"));
        assertFalse(files.calls.stream().anyMatch(c -> !c.matches("(open|close|privilege) .*")));
    }

    @Test
    void listsAttributesSizeTimeNameAndWhereLinksLead() {
        files.addLink("C:\\src\\j", WinFile.JUNCTION, "C:\\elsewhere");
        files.addLink("C:\\src\\v", WinFile.DIRECTORY, "");
        files.addFile("C:\\src\\bell\u0007", "");

        Bed.Result result = bed.run("list", "C:\\src");

        assertEquals(0, result.code());
        List<String> lines = result.out().lines().toList();
        String time = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}";
        assertTrue(lines.get(0).matches("-----a-- {15}5  " + time + "  a\\.txt"), result.out());
        assertTrue(lines.get(1).endsWith("  bell\\u0007"), result.out());
        assertTrue(lines.get(2).startsWith("dl------ ") && lines.get(2).endsWith("  j -> C:\\elsewhere (junction)"),
                result.out());
        assertTrue(lines.get(3).startsWith("d------- ") && lines.get(3).endsWith("  sub"), result.out());
        assertTrue(lines.get(4).endsWith("  v (reparse point)"), result.out());
    }

    @Test
    void listsDescriptorsOnRequest() {
        Bed.Result result = bed.run("list", "--security", "C:\\src");

        assertEquals("    " + FakeFiles.SDDL, result.out().lines().toList().get(1));
    }

    @Test
    void aDescriptorThatCannotBeListedIsReportedOnOneLine() {
        files.withoutSecurity.add("C:\\src\\a.txt");

        Bed.Result result = bed.run("list", "--security", "C:\\src");

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: its security descriptor cannot be read: Access denied.\n",
                result.err());
    }

    @Test
    void aListingThatFailsIsReported() {
        files.unlistable.add("C:\\src");

        Bed.Result result = bed.run("list", "C:\\src");

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src: it cannot be listed: Access denied.\n", result.err());
    }

    @Test
    void showsProgressOnlyWhenAskedOrOnATerminal() {
        assertEquals("", bed.run("backup", "--no-progress", "C:\\src", "C:\\s1").err());
        assertEquals("", bed.run("backup", "C:\\src", "C:\\s2").err());

        String shown = bed.run("backup", "--progress", "C:\\src", "C:\\s3").err();

        assertTrue(shown.startsWith("\r0 files  0.0 MB  0.0 MB/s  C:\\src\\a.txt "), shown);
        assertTrue(shown.endsWith("\r" + " ".repeat(79) + "\r"), shown);
    }

    @Test
    void progressIsShownWhereTheTerminalIsKnownToBe() {
        PrintWriter out = new PrintWriter(new StringWriter());
        PrintWriter err = new PrintWriter(new StringWriter());

        assertSame(out, new TransferOptions().progressLine(true, out, err), "the errors may go to a file");
        assertNull(new TransferOptions().progressLine(false, out, err));
    }

    @Test
    void theProgressLineIsOneLineAndNotDrawnTooOften() {
        StringWriter terminal = new StringWriter();
        List<Long> clock = new ArrayList<>(List.of(0L));
        Progress progress = new Progress(new PrintWriter(terminal, true), () -> clock.get(0));

        progress.at("C:\\" + "long\\".repeat(100) + "name");
        progress.countBytes(1000);
        clock.set(0, 1_000_000_000L);
        progress.countBytes(4_000_000);

        String[] lines = terminal.toString().split("\r");
        assertEquals(3, lines.length);
        assertEquals(79, lines[1].length());
        assertTrue(lines[1].contains("  ...") && lines[1].endsWith("\\long\\name"), lines[1]);
        assertTrue(lines[2].startsWith("0 files  4.0 MB  4.0 MB/s  ..."), lines[2]);
    }

    @Test
    void printsUtf8WhereTheOutputIsNoTerminal() {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();

        Console.writer(bytes, "no.such.property").print("\uD83D\uDE00");
        PrintWriter writer = Console.writer(bytes, "no.such.property");
        writer.print("\uD83D\uDE00");
        writer.flush();

        assertEquals("\uD83D\uDE00", bytes.toString(StandardCharsets.UTF_8));
    }

    private void prepareFolders() {
        bed.run("backup", "C:\\src", "C:\\old");
        files.addDirectory("C:\\full");
        files.addFile("C:\\full\\f", "precious");
        files.addDirectory("C:\\half");
        files.addFile("C:\\half\\manifest-unfinished-1-2", "");
        files.addDirectory("C:\\bad");
        files.addFile("C:\\bad\\manifest.txt", "hello\n");
        files.addDirectory("C:\\locked");
        files.unlistable.add("C:\\locked");
        files.aliases.put("C:\\alias", "C:\\src\\sub\\x");
    }
}
