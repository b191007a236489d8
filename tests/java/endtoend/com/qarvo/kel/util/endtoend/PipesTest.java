package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import com.sun.jna.ptr.IntByReference;
import java.io.BufferedReader;
import java.nio.charset.StandardCharsets;
import java.util.List;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.ForkJoinPool;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestInfo;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** Named pipes, each end in turn served by the library, by another process, and by plain system calls. */
class PipesTest extends EndToEnd {
    private static final int DUPLEX = 3;
    private static final int MESSAGES = 6;
    private static final int BUFFER_BYTES = 65536;
    private static final int LONGEST_SERVED = 4095;

    private String name;

    @BeforeEach
    void nameThePipe(TestInfo test) {
        name = "\\\\.\\pipe\\winutil " + ProcessHandle.current().pid() + " "
                + test.getTestMethod().orElseThrow().getName();
    }

    private String exchange(String message) throws Exception {
        return PipeEnd.exchange(name, message, ForkJoinPool.commonPool());
    }

    private Process startOther(String... arguments) throws Exception {
        List<String> command = Starting.java(PipeEnd.class.getName(), arguments);
        return Starting.process(new ProcessBuilder(command).redirectErrorStream(true)::start);
    }

    /** Sends a message to a plain server that answers with these bytes. */
    private int sendTo(byte[] answer) throws Exception {
        HANDLE pipe = Kernel32.INSTANCE.CreateNamedPipe(name, DUPLEX, MESSAGES, 1, BUFFER_BYTES, BUFFER_BYTES, 0, null);
        assertTrue(!WinBase.INVALID_HANDLE_VALUE.equals(pipe));
        try {
            CompletableFuture<Integer> sent = CompletableFuture.supplyAsync(() -> util.sendPipe(name, "message"));
            // A client that came first is one that is connected as well.
            Kernel32.INSTANCE.ConnectNamedPipe(pipe, null);
            IntByReference count = new IntByReference();
            byte[] message = new byte[BUFFER_BYTES];
            assertTrue(Kernel32.INSTANCE.ReadFile(pipe, message, message.length, count, null));
            assertEquals("message\0", new String(message, 0, count.getValue(), StandardCharsets.UTF_16LE));
            assertTrue(Kernel32.INSTANCE.WriteFile(pipe, answer, answer.length, count, null));
            return sent.get(20, TimeUnit.SECONDS);
        } finally {
            Kernel32.INSTANCE.CloseHandle(pipe);
        }
    }

    private static byte[] textMessage(String text) {
        return (text + "\0").getBytes(StandardCharsets.UTF_16LE);
    }

    @Test
    void theTwoPipesHaveFixedNames() {
        assertEquals("\\\\.\\pipe\\BACKUP", util.getPipeSlotPath());
        assertEquals("\\\\.\\pipe\\MESSAGE", util.getMessagePipeSlotPath());
    }

    @Test
    void ofAnEnglishTextTheFirstCharacterArrives() throws Exception {
        assertEquals("H", exchange("Hello"));
    }

    @ParameterizedTest
    @ValueSource(ints = {LONGEST_SERVED, LONGEST_SERVED + 1, 100_000})
    void theSenderCannotTellWhetherALongMessageArrived(int length) throws Exception {
        assertEquals("m", exchange("m".repeat(length)));
    }

    @Test
    void manyMessagesAreServedOneAfterTheOther() throws Exception {
        for (int i = 0; i < 10; i++) {
            assertEquals(Integer.toString(i), exchange(i + " is the number of this message"));
        }
    }

    @Test
    void aServerOfAnotherProcessIsSentTo() throws Exception {
        Process server = startOther("serve", name);
        try (BufferedReader output = server.inputReader()) {
            do {
                assertEquals(0, PipeEnd.send(name, "To another process"));
            } while (!server.waitFor(1, TimeUnit.SECONDS));
            assertEquals("T", output.readLine());
        } finally {
            server.destroyForcibly();
        }
    }

    @Test
    void aClientOfAnotherProcessIsServed() throws Exception {
        CompletableFuture<String> served = CompletableFuture.supplyAsync(() -> PipeEnd.serve(name));
        do {
            Process client = startOther("send", name, "From another process");
            try (BufferedReader output = client.inputReader()) {
                assertEquals("0", output.readLine());
                assertTrue(client.waitFor(20, TimeUnit.SECONDS));
            }
        } while (!PipeEnd.arrived(served));

        assertEquals("F", served.get());
    }

    @ParameterizedTest
    @CsvSource({"OK,0", "OKAY,0", "'',1", "NO REPLY,1", "ok,0"})
    void theAnswerIsComparedWithOk(String answer, int flag) throws Exception {
        assertEquals(flag, sendTo(textMessage(answer)));
    }

    @Test
    void anAnswerLongerThanTheBufferIsReadToItsEnd() throws Exception {
        assertEquals(1, sendTo(textMessage("NO " + "z".repeat(20_000))));
        assertEquals(0, sendTo(textMessage("OK " + "z".repeat(20_000))));
    }

    @Test
    void anAbsentServerIsNotWaitedFor() {
        long start = System.nanoTime();

        assertEquals(0, util.sendPipe(name, "message"));

        assertTrue(System.nanoTime() - start < 5_000_000_000L);
    }

    @Test
    void aPipeThatCannotBeMadeGivesNothing() {
        assertEquals("", util.connectPipe("C:\\no pipe"));
    }

    @Test
    void aClientThatSaysNothingGivesNothing() throws Exception {
        CompletableFuture<String> served = CompletableFuture.supplyAsync(() -> util.connectPipe(name));
        PipeEnd.awaitServer(name);
        HANDLE client = Kernel32.INSTANCE.CreateFile(name, READ_WRITE, 0, null, OPEN_EXISTING, 0, null);
        assertTrue(!WinBase.INVALID_HANDLE_VALUE.equals(client));

        Kernel32.INSTANCE.CloseHandle(client);

        assertEquals("", served.get(20, TimeUnit.SECONDS));
    }
}
