package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.dov.io.SharingViolationException;
import java.io.BufferedReader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The one case in which the waits for a file that another process holds are really waited for. */
class SharingViolationTest extends EndToEnd {
    private static final Duration TEN_WAITS = Duration.ofMillis(10 * 500);
    // On a busy machine each wait takes longer than it should.
    private static final Duration FAR_TOO_LONG = TEN_WAITS.plusSeconds(4);

    @TempDir
    Path folder;

    @Test
    void aFileThatAnotherProcessHoldsIsGivenUpAfterTenWaits() throws Exception {
        Path path = Files.writeString(folder.resolve("held.txt"), "abc");
        ProcessBuilder program = new ProcessBuilder(Starting.java(Exclusive.class.getName(), path.toString()));
        Process holder = Starting.process(program.redirectErrorStream(true)::start);
        try (BufferedReader output = holder.inputReader()) {
            assertEquals(Exclusive.READY, output.readLine());
            ExecutorService both = Executors.newFixedThreadPool(2);
            Future<Duration> opening = both.submit(() -> time("openFile", () -> util.openFile(path.toString())));
            Future<Duration> creating = both.submit(() -> time("CreateFileW",
                    () -> util.createFileNC(path.toString(), READ_WRITE, OPEN_EXISTING, 0)));

            // What asks for attributes only is not kept waiting.
            assertTrue(util.exists(path.toString()));
            assertEquals(ARCHIVE, util.getFileAttr(path.toString()));
            assertWaitedTenTimes(opening.get());
            assertWaitedTenTimes(creating.get());
            both.shutdown();
        } finally {
            holder.getOutputStream().close();
            assertTrue(holder.waitFor(20, TimeUnit.SECONDS), "the other process does not end");
        }
        open(path).close();
    }

    private static Duration time(String tag, org.junit.jupiter.api.function.Executable call) {
        long start = System.nanoTime();
        assertFails(SharingViolationException.class, Witness.message(tag, SHARING_VIOLATION), call);
        return Duration.ofNanos(System.nanoTime() - start);
    }

    private static void assertWaitedTenTimes(Duration time) {
        assertTrue(time.compareTo(TEN_WAITS) >= 0 && time.compareTo(FAR_TOO_LONG) < 0, "waited for " + time);
    }
}
