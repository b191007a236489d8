package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTimeout;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.time.Duration;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class MessagesTest {
    private static final String NOTHING = "Nothing arrived: the message was empty or missing, the client came too"
            + " early, or the pipe could not be made.\n";

    private final Bed bed = new Bed();
    private final FakeMessages pipe = bed.messages;

    private static String lines(String text) {
        return text.replace(System.lineSeparator(), "\n");
    }

    @Test
    void oneClientIsServedAndItsMessageShown() {
        pipe.arriving.addAll(List.of("H", "never asked for"));

        Bed.Result result = bed.run("serve");

        assertEquals(0, result.code());
        assertEquals("Serving \\\\.\\pipe\\TEST.\nReceived: H\n", lines(result.out()));
        assertEquals("", result.err());
        assertEquals(1, pipe.arriving.size());
    }

    @Test
    void asManyClientsAreServedAsAskedFor() {
        pipe.arriving.addAll(List.of("a", "b", "c", "d"));

        Bed.Result result = bed.run("serve", "--clients", "3");

        assertEquals(0, result.code());
        assertEquals("Serving \\\\.\\pipe\\TEST.\nReceived: a\nReceived: b\nReceived: c\n", lines(result.out()));
    }

    @Test
    void whereNothingArrivedItIsReportedAndTheNextClientServed() {
        pipe.arriving.addAll(List.of("", "b"));

        Bed.Result result = bed.run("serve", "--clients=2");

        assertEquals(1, result.code());
        assertEquals("Serving \\\\.\\pipe\\TEST.\nReceived: b\n", lines(result.out()));
        assertEquals(NOTHING, result.err());
    }

    @Test
    void aMessageCannotSpeakToTheTerminal() {
        pipe.arriving.add("\u001b[2Jx\n");

        assertEquals("Serving \\\\.\\pipe\\TEST.\nReceived: \\u001B[2Jx\\n\n", lines(bed.run("serve").out()));
    }

    @ParameterizedTest
    @ValueSource(strings = {"0", "-1"})
    void fewerClientsThanOneAreRefused(String count) {
        Bed.Result result = bed.run("serve", "--clients=" + count);

        assertEquals(2, result.code());
        assertEquals("Invalid value for option '--clients': '" + count + "' is not a number from 1 on",
                result.err().lines().findFirst().orElseThrow());
    }

    @ParameterizedTest
    @ValueSource(strings = {"Hello", "", "two words \u00e9\u20ac \ud83d\udcbe", "-"})
    void aMessageIsSentAsItIsAndNoDeliveryClaimed(String message) {
        Bed.Result result = bed.run("send", message);

        assertEquals(0, result.code());
        assertEquals(List.of(message), pipe.sent);
        assertEquals("No refusal came back. Whether the message was delivered cannot be told.\n", lines(result.out()));
        assertEquals("", result.err());
    }

    @Test
    void aRefusalIsReported() {
        pipe.refuses = true;

        Bed.Result result = bed.run("send", "Hello");

        assertEquals(1, result.code());
        assertEquals("", result.out());
        assertEquals("The server refused the message: its answer sorts before \"OK\".\n", result.err());
    }

    @Test
    void oneMessageIsSentAtATime() {
        assertEquals(2, bed.run("send").code());
        assertEquals(2, bed.run("send", "two", "words").code());
        assertEquals(List.of(), pipe.sent);
    }

    @ParameterizedTest
    @ValueSource(strings = {"serve", "send x"})
    void theEndOfTheJvmDoesNotWaitForACallThatBlocks(String arguments) {
        pipe.arriving.add("x");
        pipe.meanwhile = bed.stop::stopAndWait;

        Bed.Result result = assertTimeout(Duration.ofSeconds(5), () -> bed.run(arguments.split(" ")));

        assertEquals(0, result.code());
    }

    /** What a reply of the pipe cannot tell apart stands in the help. */
    @Test
    void theHelpSaysWhatLooksAlike() {
        String serve = bed.run("serve", "--help").out().replaceAll("\\s+", " ");
        String send = bed.run("send", "--help").out().replaceAll("\\s+", " ");

        assertTrue(serve.contains("of an English text its first character is left"), serve);
        assertTrue(serve.contains("a client sent an empty message, or none; it came before the pipe was ready; or the"
                + " pipe could not be made"), serve);
        assertTrue(send.contains("look the same as a pipe that nobody serves or that stays busy, a message that could"
                + " not be written, and an answer that never came"), send);
        assertFalse(send.contains("delivered"), send);
    }
}
