package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.winutil.backup.Client;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.Kernel32Util;
import java.io.BufferedReader;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.CompletableFuture;
import java.util.stream.Collectors;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The example client's other commands on the system itself. */
class ClientTest extends EndToEnd {
    private static final String SMILE = "\uD83D\uDE00.txt";

    @TempDir
    Path folder;

    @BeforeAll
    static void openItsJars() {
        Client.run("--help");
    }

    /** Runs the client as a program of its own. */
    private static Client.Result runProgram(String... arguments) throws Exception {
        List<String> command = Starting.java("com.qarvo.winutil.backup.Main", arguments);
        Process process = Starting.process(new ProcessBuilder(command)::start);
        try (BufferedReader out = process.inputReader(StandardCharsets.UTF_8);
                BufferedReader err = process.errorReader(StandardCharsets.UTF_8)) {
            CompletableFuture<String> errors = CompletableFuture.supplyAsync(() -> text(err));
            String output = text(out);
            return new Client.Result(process.waitFor(), output, errors.get());
        }
    }

    private static String text(BufferedReader reader) {
        return reader.lines().map(line -> line + "\n").collect(Collectors.joining());
    }

    @Test
    void asAProgramItPrintsUtf8AndEndsWithItsExitCode() throws Exception {
        Files.createFile(folder.resolve(SMILE));

        Client.Result listed = runProgram("list", folder.toString());
        assertTrue(listed.out().endsWith("  " + SMILE + "\n"), listed.toString());
        assertEquals(0, listed.code());

        assertEquals(new Client.Result(2, "", "The folder " + folder + "\\none does not exist.\n"),
                runProgram("list", folder + "\\none"));
    }

    @Test
    void aListingShowsAttributesSizesAndDescriptors() throws IOException {
        Path hidden = Files.writeString(folder.resolve("hidden.txt"), "content");
        Witness.setAttributes(hidden.toString(), HIDDEN | READONLY);
        Files.createDirectory(folder.resolve("sub"));

        Client.Result result = Client.run("list", "--security", folder);

        assertEquals(0, result.code(), result.err());
        List<String> lines = result.out().lines().sorted().toList();
        assertEquals(4, lines.size(), result.out());
        String time = "  \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}  ";
        assertTrue(lines.get(2).matches("--rh-a-- +7" + time + "hidden\\.txt"), result.out());
        assertTrue(lines.get(3).matches("d------- +0" + time + "sub"), result.out());
        assertTrue(lines.contains("    " + Witness.securityDescriptor(hidden.toString())), result.out());
    }

    @Test
    void theInventoryIsWhole() {
        Client.Result result = Client.run("inventory", "--json");

        assertEquals("", result.err());
        assertEquals(0, result.code(), result.out());
        assertTrue(result.out().contains("\"name\": \"" + Kernel32Util.getComputerName() + '"'), result.out());
        assertEquals(5, result.out().split("\"errors\": \\[\\]", -1).length - 1, result.out());
        assertTrue(result.out().matches("(?s).*\"logicalProcessors\": [1-9].*"), result.out());
        assertTrue(result.out().contains("\"slot\": \""), result.out());
        assertTrue(result.out().contains("\"root\": \"C:\\\\\""), result.out());
    }

    @Test
    void theProcessesHaveThisOneWithItsSessionAndAccount() {
        Client.Result result = Client.run("ps", "JAVA.EXE");

        assertEquals(0, result.code(), result.err());
        String own = ProcessHandle.current().pid() + "  +" + util.getSessionId() + "  +"
                + Kernel32Util.getComputerName() + "\\\\" + Advapi32Util.getUserName() + "  +java.exe";
        assertTrue(result.out().lines().anyMatch(line -> line.strip().matches(own)), result.out());
    }

    @Test
    void aProgramIsRunWithItsOutputAndItsExitCode() {
        Client.Result result = Client.run("run", "--as-session", util.getSessionId(), "--", "cmd.exe", "/c",
                "echo output& echo problem>&2& exit 3");

        assertEquals(new Client.Result(1, "output\n", "problem\nThe program ended with exit code 3.\n"), result);
    }

    @Test
    void ofAMessageThatIsSentTheFirstCharacterIsServed() throws Exception {
        CompletableFuture<String> served = CompletableFuture.supplyAsync(() -> {
            Client.Result result;
            do {
                // A client that comes before the pipe is ready gets nowhere.
                result = Client.run("serve");
            } while (result.code() != 0);
            return result.out();
        });

        do {
            PipeEnd.awaitServer("\\\\.\\pipe\\MESSAGE");
            assertEquals(new Client.Result(0,
                    "No refusal came back. Whether the message was delivered cannot be told.\n", ""),
                    Client.run("send", "Hello"));
        } while (!PipeEnd.arrived(served));

        assertEquals("Serving \\\\.\\pipe\\MESSAGE.\nReceived: H\n", served.get());
    }
}
