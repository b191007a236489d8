package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class AccountTest {
    private static final String LOGON_FAILURE = "The account OFFICE\\anna cannot log on:"
            + " [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser] (1326) Logon failure.\n";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;
    private final List<String> printed = new ArrayList<>();

    @AfterEach
    void noPasswordIsPrintedAnywhere() {
        assertFalse(printed.isEmpty());
        assertTrue(printed.stream().noneMatch(text -> text.contains("secret") || text.contains("wrong")),
                printed.toString());
    }

    @Test
    void eachFileAndFolderIsAskedAboutBeforeItIsRead() {
        Bed.Result result = backup("secret");

        assertEquals(0, result.code(), result.err());
        for (String path : List.of("C:\\src\\a.txt", "C:\\src\\sub\\b.txt", "C:\\src\\sub\\empty")) {
            int asked = files.calls.indexOf("check " + path);
            assertTrue(asked >= 0 && asked < files.calls.indexOf("open " + path), files.calls.toString());
        }
        assertEquals(1, files.calls.stream().filter("check C:\\src"::equals).count());
        assertEquals(1, files.calls.stream().filter("check C:\\src\\sub"::equals).count());
    }

    @Test
    void aFileThatTheAccountMayNotReadIsReportedAndNotOpened() {
        files.forbidden.add("C:\\src\\a.txt");

        Bed.Result result = backup("secret");

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\a.txt: OFFICE\\anna may not read it: [CheckAccessToFile] (5) Access denied.\n",
                result.err());
        assertFalse(files.calls.contains("open C:\\src\\a.txt"));
        assertNull(entry("a.txt"));
        assertNotNull(entry("sub\\b.txt"));
    }

    @Test
    void aFolderThatTheAccountMayNotReadIsReportedAndNotEntered() {
        files.forbidden.add("C:\\src\\sub");

        Bed.Result result = backup("secret");

        assertEquals(1, result.code());
        assertTrue(result.err().startsWith("left out: C:\\src\\sub: OFFICE\\anna may not read it: "), result.err());
        assertEquals(1, result.err().lines().count());
        assertNotNull(entry("sub"), "that it is there can be seen in the folder above");
        assertNull(entry("sub\\b.txt"));
        assertFalse(files.calls.contains("check C:\\src\\sub\\b.txt"));
    }

    @Test
    void aLinkIsNotAskedAboutAsTheAnswerWouldBeAboutWhatItLeadsTo() {
        files.addLink("C:\\src\\l", WinFile.FILE_SYMBOLIC_LINK, "C:\\elsewhere");
        files.forbidden.add("C:\\src\\l");

        assertEquals(0, backup("secret").code());

        assertNotNull(entry("l"));
    }

    @Test
    void aSourceThatTheAccountMayNotReadEndsTheBackupBeforeAnythingIsMade() {
        files.forbidden.add("C:\\src");

        Bed.Result result = backup("secret");

        assertEquals(2, result.code());
        assertEquals("The source C:\\src cannot be backed up: OFFICE\\anna may not read it: [CheckAccessToFile] (5)"
                + " Access denied.\n", result.err());
        assertNull(files.node("C:\\store"));
    }

    @Test
    void aRefusedLogonEndsTheBackupBeforeAnythingIsMade() {
        Bed.Result result = backup("wrong");

        assertEquals(2, result.code());
        assertEquals(LOGON_FAILURE, result.err());
        assertEquals("", result.out());
        assertNull(files.node("C:\\store"));
        assertEquals(1, files.calls.stream().filter(c -> c.startsWith("check")).count(), "one attempt, no lock-out");
    }

    @Test
    void aLogonThatIsRefusedLaterEndsTheBackupAndLeavesNoFinishedStore() {
        files.whileReading.put("C:\\src\\a.txt", () -> files.account = "nobody");

        Bed.Result result = backup("secret");

        assertEquals(2, result.code());
        assertEquals(LOGON_FAILURE, result.err());
        assertNull(files.node("C:\\store\\manifest.txt"));
    }

    @Test
    void withoutAnAccountNobodyLogsOn() {
        printed.add(bed.backup().err());

        assertTrue(files.calls.stream().noneMatch(c -> c.startsWith("check")));
    }

    @Test
    void thePasswordIsAskedForAndWipedFromTheAnswer() {
        char[] typed = "secret".toCharArray();
        bed.console = question -> {
            printed.add(question);
            return typed;
        };

        Bed.Result result = run("backup", "--as", "OFFICE\\anna", "C:\\src", "C:\\store");

        assertEquals(0, result.code(), result.err());
        assertEquals("Password of OFFICE\\anna: ", printed.get(0));
        assertArrayEquals("      ".toCharArray(), typed);
    }

    @ParameterizedTest
    @ValueSource(strings = {"secret", "secret\n", "secret\r\n"})
    void thePasswordIsTakenFromAFileWithOrWithoutTheEndOfItsLine(String content, @TempDir Path folder)
            throws IOException {
        Path file = Files.writeString(folder.resolve("p"), content);

        Bed.Result result = run("backup", "--as", "OFFICE\\anna", "--password-file", file.toString(), "C:\\src",
                "C:\\store");

        assertEquals(0, result.code(), result.err());
    }

    @ParameterizedTest
    @CsvSource(delimiter = '=', value = {
        "--as OFFICE\\anna = There is no console to ask for the password; use --password-env or --password-file.",
        "--as OFFICE\\anna --password-env secret = The variable that --password-env names is not set.",
        "--as OFFICE\\anna --password-env EMPTY = The password is empty.",
        "--as OFFICE\\anna --password-env FOREIGN = The password has a line break or a character that is not ASCII; the"
            + " library cannot log on with it.",
        "--as OFFICE\\anna --password-file /no/secret = The file that --password-file names cannot be read.",
    })
    void aPasswordThatCannotBeHadIsOneSentence(String options, String sentence) {
        bed.environment.putAll(Map.of("EMPTY", "", "FOREIGN", "pass\u00e9"));

        Bed.Result result = run(("backup " + options + " C:\\src C:\\store").split(" "));

        assertEquals(2, result.code());
        assertEquals(sentence + "\n", result.err());
        assertNull(files.node("C:\\store"));
    }

    @Test
    void aFileThatIsTooLongForAPasswordIsRefused(@TempDir Path folder) throws IOException {
        Path file = folder.resolve("p");
        Files.write(file, "secret".repeat(1000).getBytes(StandardCharsets.US_ASCII));

        Bed.Result result = run("backup", "--as", "OFFICE\\anna", "--password-file", file.toString(), "C:\\src",
                "C:\\store");

        assertEquals("The file that --password-file names is too long for a password.\n", result.err());
    }

    @Test
    void anEmptyAnswerAtTheConsoleIsNoPassword() {
        bed.console = question -> null;

        Bed.Result result = run("backup", "--as", "OFFICE\\anna", "C:\\src", "C:\\store");

        assertEquals("No password was given.\n", result.err());
        assertEquals(2, result.code());
    }

    @ParameterizedTest
    @CsvSource(delimiter = '!', value = {
        "--password-env P ! There is a password, but no --as.",
        "--as anna ! --as needs DOMAIN\\USER in ASCII, with . as the domain for this machine.",
        "--as OFFICE\\ ! --as needs DOMAIN\\USER in ASCII, with . as the domain for this machine.",
        "--as \\anna ! --as needs DOMAIN\\USER in ASCII, with . as the domain for this machine.",
        "--as A\\B\\C ! --as needs DOMAIN\\USER in ASCII, with . as the domain for this machine.",
        "--as OFFICE\\\u00e4nne ! --as needs DOMAIN\\USER in ASCII, with . as the domain for this machine.",
        "--as A\\B --password-env P --password-file f ! --password-env and --password-file exclude each other.",
        "--as A\\B --password=secret ! A password does not belong on a command line, where everyone can see it; use"
            + " --password-env or --password-file.",
        "--as A\\B --password secret ! A password does not belong on a command line, where everyone can see it; use"
            + " --password-env or --password-file.",
        "--as A\\B --passwd=it'secret ! Unknown option: '--passwd'",
        "--as A\\B -psecret ! Unknown option: '-p'",
    })
    void aWrongAccountOnTheCommandLineIsOneSentenceWithoutThePassword(String options, String sentence) {
        bed.environment.put("P", "secret");

        Bed.Result result = run(("backup " + options + " C:\\src C:\\store").split(" "));

        assertEquals(2, result.code());
        assertEquals(sentence + "\nTry backup-client backup --help.\n", result.err());
        assertNull(files.node("C:\\store"));
    }

    private Bed.Result backup(String password) {
        bed.environment.put("P", password);
        return run("backup", "--as", "OFFICE\\anna", "--password-env", "P", "C:\\src", "C:\\store");
    }

    private Bed.Result run(String... arguments) {
        Bed.Result result = bed.run(arguments);
        printed.add(result.out());
        printed.add(result.err());
        return result;
    }

    private ManifestEntry entry(String path) {
        return Store.open(files, "C:\\store").readManifest().stream().filter(e -> e.path().equals(path)).findFirst()
                .orElse(null);
    }
}
