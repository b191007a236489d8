package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinProcess;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;

/** When the output of launched processes ends while other threads launch, too. */
class LaunchedStreamsTest extends EndToEnd {
    private static final int THREADS = 2;
    private static final int LAUNCHES = 150; // by each thread
    private static final int LONG_ONE_EVERY = 3;
    private static final int PATIENCE_SECONDS = 10;

    /** Runs until it is ended, and for so many seconds at the most. */
    private static final String LONG_ONE = "ping.exe -n 120 127.0.0.1";

    private final ExecutorService readers = Executors.newCachedThreadPool();
    private final List<WinProcess> launched = Collections.synchronizedList(new ArrayList<>());
    private final List<WinProcess> longOnes = Collections.synchronizedList(new ArrayList<>());
    private final List<Output> outputs = Collections.synchronizedList(new ArrayList<>());

    /** What a short process writes, on its way. */
    private record Output(String expected, Future<String> read) {
    }

    private void launchAll(int thread) throws IOException {
        for (int i = 0; i < LAUNCHES; i++) {
            if (i % LONG_ONE_EVERY == 0) {
                longOnes.add(launch(LONG_ONE));
            }
            String word = "output-" + thread + '-' + i;
            WinProcess process = launch("cmd.exe /c echo " + word);
            outputs.add(new Output(word, readers.submit(() -> readToEnd(process))));
        }
    }

    private WinProcess launch(String commandLine) throws IOException {
        WinProcess process = ProcessesTest.launch(commandLine);
        launched.add(process);
        return process;
    }

    private static String readToEnd(WinProcess process) throws IOException {
        byte[] output = process.getStandardOutput().readAllBytes();
        byte[] error = process.getStandardError().readAllBytes();
        return new String(output).strip() + new String(error);
    }

    /** Waits for the outputs of the short processes and counts those that have not ended. */
    private int countLate() throws InterruptedException {
        readers.shutdown();
        readers.awaitTermination(PATIENCE_SECONDS, TimeUnit.SECONDS);
        return (int) outputs.stream().filter(output -> !output.read.isDone()).count();
    }

    private void endLongOnes() throws IOException {
        for (WinProcess process : longOnes) {
            process.end();
            process.waitFor();
        }
        longOnes.clear();
    }

    private void assertAllWritten() throws ExecutionException, InterruptedException {
        for (Output output : outputs) {
            assertEquals(output.expected, output.read.get());
        }
    }

    /** A process that had inherited the ends of another one's streams would keep these from ending. */
    @Test
    @Timeout(150) // Hundreds of processes: where other work keeps the processors busy a minute is not enough.
    void theOutputOfAShortProcessEndsWhileALongOneThatAnotherThreadLaunchedGoesOn() throws Exception {
        ExecutorService launchers = Executors.newFixedThreadPool(THREADS);
        try {
            List<Future<?>> launches = new ArrayList<>();
            for (int i = 0; i < THREADS; i++) {
                int thread = i;
                launches.add(launchers.submit(() -> {
                    launchAll(thread);
                    return null;
                }));
            }
            for (Future<?> launch : launches) {
                launch.get();
            }

            int late = countLate();

            for (WinProcess process : longOnes) {
                assertEquals(Win32.STILL_ACTIVE, process.exitValue(), "a long process has ended too early");
            }
            endLongOnes();
            assertTrue(readers.awaitTermination(PATIENCE_SECONDS, TimeUnit.SECONDS));
            assertAllWritten();
            assertEquals(0, late, "outputs that ended late, of " + outputs.size());
        } finally {
            launchers.shutdown();
            launchers.awaitTermination(PATIENCE_SECONDS, TimeUnit.SECONDS);
            try {
                endLongOnes();
            } finally {
                launched.forEach(WinProcess::close);
            }
        }
    }
}
