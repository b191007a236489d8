package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.Win32;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.WinReg;
import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.atomic.AtomicLong;

/**
 * Methods of all subsystems from 16 threads at once: what they answer stays what one thread alone was answered before.
 * Every few seconds all threads rest, and what the process holds then becomes a line of a table.
 * {@code Soak SECONDS FOLDER TABLE}
 */
final class Soak {
    /** Below the current user's root. */
    static final String KEY = "Software\\WinUtilSoak";
    private static final int THREADS = 16;
    private static final long ROUND_MILLIS = 5_000;

    /**
     * The cells for handles stay when a launch fails, three for a session and five for an account: blocks of 8 bytes
     * and what is around.
     */
    private static final long BYTES_OF_FAILED_LAUNCHES = (3 + 5) * 32;

    /** What is called, and what one thread alone was answered. */
    private record Job(String name, Callable<Object> call, Object answer) {
    }

    private final SoakLedger ledger = new SoakLedger();
    private final AtomicLong failedLaunches = new AtomicLong();
    private final AtomicLong jobsDone = new AtomicLong();
    private final ExecutorService threads = Executors.newFixedThreadPool(THREADS);
    private final ExecutorService servers = Executors.newFixedThreadPool(THREADS);
    private final List<List<Job>> jobs = new ArrayList<>();

    public static void main(String[] arguments) throws Exception {
        Soak soak = new Soak();
        // Held throughout: this system does not take its shell out of a process and put it back without a loss.
        EndToEnd.util.CoInitializeEx(Win32.COINIT_MULTITHREADED);
        try (PrintWriter table = new PrintWriter(arguments[2])) {
            soak.prepare(Path.of(arguments[1]));
            soak.run(Long.parseLong(arguments[0]) * 1000, table);
        } finally {
            OwnRegistryKey.remove(KEY);
            soak.threads.shutdownNow();
            soak.servers.shutdownNow();
        }
    }

    /** What a call answers: its value, or the exception that it raises. */
    static String outcome(Callable<?> call) {
        try {
            return String.valueOf(call.call());
        } catch (Exception e) {
            return e.toString();
        }
    }

    private void prepare(Path folder) throws Exception {
        String hive = hiveFile(folder, KEY + "\\hive");
        for (int i = 0; i < THREADS; i++) {
            String name = "thread " + i;
            Map<String, Callable<Object>> calls = new LinkedHashMap<>();
            new SoakFileJobs(ledger, Files.createDirectory(folder.resolve(name))).addTo(calls);
            // A hive is locked by whoever has it loaded.
            Path own = Files.copy(Path.of(hive), folder.resolve("hive of " + name));
            SoakSystemJobs system = new SoakSystemJobs(ledger, name, own.toString(), servers, failedLaunches);
            system.addTo(calls);
            if (i <= 1) {
                system.addFailingLaunchesTo(calls);
            }
            if (i == 0) {
                system.addLaunchesTo(calls);
            }
            List<Job> prepared = new ArrayList<>();
            for (Map.Entry<String, Callable<Object>> call : calls.entrySet()) {
                prepared.add(new Job(call.getKey(), call.getValue(), call.getValue().call()));
            }
            jobs.add(prepared);
        }
    }

    /** Stores a key with one text in it as a hive. */
    static String hiveFile(Path folder, String key) throws IOException {
        String file = folder.resolve("hive").toString();
        Files.deleteIfExists(Path.of(file));
        EndToEnd.util.enableBackupPrivilege();
        Advapi32Util.registryCreateKey(WinReg.HKEY_CURRENT_USER, key);
        Advapi32Util.registrySetStringValue(WinReg.HKEY_CURRENT_USER, key, "text", "in the hive");
        OwnRegistryKey.save(key, file);
        return file;
    }

    private void run(long millis, PrintWriter table) throws Exception {
        table.println("seconds,jobs,private bytes,JVM bytes,Java heap,handles,ledger,global references,"
                + "left on purpose");
        long start = System.nanoTime();
        long seconds;
        do {
            oneRound();
            System.gc();
            seconds = (System.nanoTime() - start) / 1_000_000_000L;
            table.printf("%d,%d,%d,%d,%d,%d,%d,%d,%d%n", seconds, jobsDone.get(), ProcessMeter.privateBytes(),
                    ProcessMeter.bytesOfTheJvm(), ProcessMeter.heapBytes(), OpenHandles.ofAllKinds(), ledger.open(),
                    ProcessMeter.globalReferences(), failedLaunches.get() * BYTES_OF_FAILED_LAUNCHES);
            table.flush();
        } while (seconds * 1000 < millis);
    }

    private void oneRound() throws Exception {
        long end = System.nanoTime() + ROUND_MILLIS * 1_000_000L;
        List<Future<?>> working = new ArrayList<>();
        for (int i = 0; i < THREADS; i++) {
            List<Job> own = jobs.get(i);
            int first = i;
            working.add(threads.submit(() -> {
                for (int next = first; System.nanoTime() < end; next++) {
                    Job job = own.get(next % own.size());
                    Object answer = job.call.call();
                    if (!job.answer.equals(answer)) {
                        throw new AssertionError(job.name + " answered " + answer + " in place of " + job.answer);
                    }
                    jobsDone.incrementAndGet();
                }
                return null;
            }));
        }
        for (Future<?> thread : working) {
            thread.get();
        }
    }
}
