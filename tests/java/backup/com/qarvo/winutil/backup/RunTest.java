package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.PrintWriter;
import java.io.SequenceInputStream;
import java.io.StringWriter;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.Iterator;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

@Timeout(value = 20, threadMode = Timeout.ThreadMode.SEPARATE_THREAD)
class RunTest {
    private final Bed bed = new Bed();
    private final FakeProcesses processes = bed.processes;

    private Bed.Result run(String... words) {
        String[] arguments = Arrays.copyOf(new String[] {"run", "--as-session", "3", "--encoding", "UTF-8", "--"},
                6 + words.length);
        System.arraycopy(words, 0, arguments, 6, words.length);
        return bed.run(arguments);
    }

    private static InputStream text(String text) {
        return new ByteArrayInputStream(text.getBytes(StandardCharsets.UTF_8));
    }

    /** A stream that never has anything to read. */
    private static InputStream silent() {
        return new InputStream() {
            @Override
            public int read() throws IOException {
                try {
                    new CountDownLatch(1).await();
                } catch (InterruptedException e) {
                    throw new IOException(e);
                }
                return -1;
            }
        };
    }

    @Test
    void aProgramRunsInTheSessionAndItsStreamsStayApart() {
        processes.output = text("out\nput");
        processes.error = text("err\u00E4r");

        Bed.Result result = run("a.exe", "--help", "-x");

        assertEquals(new Bed.Result(0, "out\nput", "err\u00E4r"), result);
        assertEquals("a.exe --help -x", processes.commandLine);
        assertEquals(3, processes.session);
        assertTrue(processes.closed);
        assertFalse(processes.ended);
    }

    @Test
    void moreThanABlockIsPassedOnWhole() {
        String all = "0123456789\u20AC".repeat(20_000);
        processes.output = text(all);
        processes.error = text(all + "!");

        Bed.Result result = run("a.exe");

        assertEquals(all, result.out());
        assertEquals(all + "!", result.err());
    }

    @Test
    void outputIsDecodedAsTheOptionSays() {
        processes.output = FakeProcesses.bytes(0x84, 0x81);

        assertEquals("\u00E4\u00FC", bed.run("run", "--as-session=1", "--encoding=IBM850", "a.exe").out());
    }

    @Test
    void outputThatIsNotTextIsStillShown() {
        processes.output = FakeProcesses.bytes('a', 0xFF, 'b');

        assertEquals("a\uFFFDb", run("a.exe").out());
    }

    @Test
    void outputIsShownWhileTheProgramRuns() throws Exception {
        CountDownLatch shown = new CountDownLatch(1);
        StringWriter out = new StringWriter() {
            @Override
            public void flush() {
                if (!toString().isEmpty()) {
                    shown.countDown();
                }
            }
        };
        processes.output = new SequenceInputStream(text("ready"), new InputStream() {
            @Override
            public int read() throws IOException {
                try {
                    return shown.await(15, TimeUnit.SECONDS) ? -1 : 'x';
                } catch (InterruptedException e) {
                    throw new IOException(e);
                }
            }
        });

        Main.run(new Natives(null, null, null, () -> processes), null, bed.stop, new PrintWriter(out, true),
                new PrintWriter(new StringWriter()), "run", "--as-session", "1", "a.exe");

        assertEquals("ready", out.toString());
    }

    @Test
    void anEmptyWriteDoesNotEndTheOutput() {
        CountDownLatch allRead = new CountDownLatch(1);
        processes.untilEnd = allRead;
        processes.output = new InputStream() {
            private final Iterator<String> writes = List.of("", "first ", "", "", "l\u00F6st", "").iterator();

            @Override
            public int read() {
                throw new AssertionError("blocks are read");
            }

            @Override
            public int read(byte[] buffer, int offset, int length) {
                if (!writes.hasNext()) {
                    allRead.countDown();
                    return -1;
                }
                byte[] bytes = writes.next().getBytes(StandardCharsets.UTF_8);
                System.arraycopy(bytes, 0, buffer, offset, bytes.length);
                return bytes.length == 0 ? -1 : bytes.length;
            }
        };

        assertEquals(new Bed.Result(0, "first l\u00F6st", ""), run("a.exe"));
    }

    @Test
    void whatStandsBehindAnEmptyWriteIsReadAfterTheEndToo() {
        processes.output = new SequenceInputStream(text("last"), InputStream.nullInputStream()) {
            private boolean emptied;

            @Override
            public int read(byte[] buffer, int offset, int length) throws IOException {
                boolean first = !emptied;
                emptied = true;
                return first ? -1 : super.read(buffer, offset, length);
            }
        };

        assertEquals("last", run("a.exe").out());
    }

    @ParameterizedTest
    @CsvSource({"5, 5", "-1073741819, -1073741819", "1, 1"})
    void anotherExitCodeThanZeroIsReported(int code, String shown) {
        processes.exitCode = code;

        assertEquals(new Bed.Result(1, "", "The program ended with exit code " + shown + ".\n"), run("a.exe"));
    }

    @Test
    void aProgramThatCannotBeStartedIsOneSentence() {
        processes.startFailure = "[x] Failed  (2) File not found.\r\n";

        assertEquals(new Bed.Result(2, "", "The program could not be started: [x] Failed (2) File not found.\n"),
                run("a.exe"));
        assertFalse(processes.closed);
    }

    @Test
    void aStreamThatBreaksIsReportedAndTheOtherShown() {
        processes.output = new InputStream() {
            @Override
            public int read() throws IOException {
                throw new IOException("broken");
            }
        };
        processes.error = text("error\n");

        Bed.Result result = run("a.exe");

        assertEquals(new Bed.Result(1, "", "error\nThe program's output was lost: broken\n"), result);
        assertTrue(processes.closed);
    }

    @Test
    void anExitCodeThatCannotBeHadIsOneSentence() {
        processes.waitFailure = "denied";

        assertEquals(new Bed.Result(2, "", "The program's exit code cannot be had: denied\n"), run("a.exe"));
        assertTrue(processes.closed);
    }

    @Test
    void anInterruptEndsTheProgram() {
        processes.output = silent();
        processes.endFailure = "it has ended";
        bed.stop.stop();

        assertEquals(new Bed.Result(2, "", "Stopped before the end.\n"), run("a.exe"));

        assertTrue(processes.ended);
        assertTrue(processes.closed);
    }

    @Test
    void sessionAndCommandAreNeeded() {
        assertEquals(2, bed.run("run", "a.exe").code());
        assertEquals(2, bed.run("run", "--as-session", "1").code());
        assertEquals(2, bed.run("run", "--as-session", "one", "a.exe").code());
        assertNull(processes.commandLine);
    }

    @Test
    void wordsAreQuotedAsProgramsTakeThemApart() {
        assertEquals("", ProgramWords.join(List.of()));
        assertEquals("a b\\c /d", ProgramWords.join(List.of("a", "b\\c", "/d")));
        assertEquals("\"C:\\a b\\c.exe\" \"\" \"x\ty\"", ProgramWords.join(List.of("C:\\a b\\c.exe", "", "x\ty")));
        assertEquals("\"a\\\"b\" \"a b\\\\\" \"\\\\\\\"\"", ProgramWords.join(List.of("a\"b", "a b\\", "\\\"")));
        assertEquals("\"a b\\\\\\\\\\\"\" \"a\\\\b c\"", ProgramWords.join(List.of("a b\\\\\"", "a\\\\b c")));
    }
}
