package com.qarvo.winutil.bench;

import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinDef.DWORD;
import com.sun.jna.platform.win32.WinReg;
import java.io.PrintWriter;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.Option;

/** How the cost of a listing grows with what is listed: the library and the same system calls in a bare loop. */
@Command(name = "growth", mixinStandardHelpOptions = true, sortOptions = false, description = {
    "Lists ever larger directories, registry keys and sets of processes, with WinUtil64.dll and with the same system"
            + " calls in a C++ loop without Java."})
public final class Growth implements Callable<Integer> {
    private static final String KEY = "Software\\WinUtilGrowth";
    private static final int[] KEY_SIZES = {10, 100, 1000, 10_000};
    private static final int[] PROCESS_COUNTS = {10, 50, 100, 200, 500};
    private static final int ROUNDS = 5;
    /** A round takes at least so long: the time of one pass over few items could not be told. */
    private static final long ROUND_NANOS = 200_000_000L;
    private static final int SAMPLE_INTERVAL = 1000;

    @Option(names = "--folders", required = true, paramLabel = "DIR", description = "Where directories lie, each named"
            + " by the number of files in it.")
    private Path folders;

    @Option(names = "--sizes", required = true, split = ",", description = "Their names.")
    private int[] sizes;

    @Option(names = "--idle", required = true, paramLabel = "FILE", description = "A program that does nothing.")
    private Path idle;

    @Option(names = "--csv", required = true, paramLabel = "FILE", description = "Where the figures go.")
    private Path csv;

    private final WindowsUtil util = new WindowsUtil();

    private Growth() {
    }

    /** A pass over some items; gives how many it met. */
    private interface Pass {
        long run() throws Exception;
    }

    /** Counts the items and drops them, and looks at the process meanwhile. */
    public static final class Sink {
        private long count;
        private long peak;

        public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint) {
            item();
        }

        public void addDwordNode(String root, String key, String name, long value) {
            item();
        }

        private void item() {
            if (count++ % SAMPLE_INTERVAL == 0) {
                peak = Math.max(peak, Counters.privateBytes());
            }
        }
    }

    private final Sink sink = new Sink();

    public static void main(String[] arguments) {
        System.exit(new CommandLine(new Growth()).execute(arguments));
    }

    @Override
    public Integer call() throws Exception {
        try (PrintWriter table = new PrintWriter(csv.toFile())) {
            table.println("job,items,contender,round,us per item,peak KiB,left KiB of Java");
            for (int size : sizes) {
                measureFolder(table, folders.resolve(Integer.toString(size)).toString(), size);
            }
            for (int size : KEY_SIZES) {
                measureKey(table, size);
            }
            measureProcesses(table);
        }
        return 0;
    }

    private void measureFolder(PrintWriter table, String folder, int size) throws Exception {
        Contender.expect("the number of entries", size, Bare.list(folder, false));
        measure(table, "directory", size, () -> {
            util.listWinFiles(sink, folder, false, true, null, false);
            return sink.count;
        }, () -> {
            sink.peak = Math.max(sink.peak, Bare.peakOfList(folder));
            return size;
        });
    }

    private void measureKey(PrintWriter table, int size) throws Exception {
        Advapi32Util.registryCreateKey(WinReg.HKEY_CURRENT_USER, KEY);
        try {
            for (int i = 0; i < size; i++) {
                util.setRegistryDWORDW("HKEY_CURRENT_USER\\" + KEY + String.format("\\value %05d", i), i);
            }
            measure(table, "registry key", size, () -> {
                util.listRegistry(sink, "HKEY_CURRENT_USER", KEY);
                return sink.count;
            }, () -> Bare.countNumbers(KEY));
        } finally {
            Advapi32Util.registryDeleteKey(WinReg.HKEY_CURRENT_USER, KEY);
        }
    }

    private void measureProcesses(PrintWriter table) throws Exception {
        String name = idle.getFileName().toString();
        List<WinBase.PROCESS_INFORMATION> running = new ArrayList<>();
        try {
            for (int count : PROCESS_COUNTS) {
                while (running.size() < count) {
                    running.add(start());
                }
                measure(table, "processes", count, () -> util.getProcessInfo(name).size(),
                        () -> Bare.countProcesses(name));
            }
        } finally {
            for (WinBase.PROCESS_INFORMATION each : running) {
                Kernel32.INSTANCE.TerminateProcess(each.hProcess, 0);
                Kernel32.INSTANCE.CloseHandle(each.hThread);
                Kernel32.INSTANCE.CloseHandle(each.hProcess);
            }
        }
    }

    private WinBase.PROCESS_INFORMATION start() {
        WinBase.PROCESS_INFORMATION started = new WinBase.PROCESS_INFORMATION();
        DWORD flags = new DWORD(WinBase.CREATE_NO_WINDOW);
        if (!Kernel32.INSTANCE.CreateProcess(null, '"' + idle.toString() + '"', null, null, false, flags, null, null,
                new WinBase.STARTUPINFO(), started)) {
            throw new IllegalStateException("No process: " + Kernel32.INSTANCE.GetLastError());
        }
        return started;
    }

    /** Has both contenders go over the same items, in turns. */
    private void measure(PrintWriter table, String job, int items, Pass library, Pass bare) throws Exception {
        // What the system itself keeps of so many items is there from here on.
        bare.run();
        for (int round = 0; round < ROUNDS; round++) {
            measure(table, job, items, "library", round, library);
            measure(table, job, items, "bare", round, bare);
        }
        table.flush();
        System.out.println(job + ": " + items);
    }

    private void measure(PrintWriter table, String job, int items, String contender, int round, Pass pass)
            throws Exception {
        long heap = liveHeap();
        long memory = Counters.privateBytes();
        sink.peak = 0;
        int passes = 0;
        long nanos;
        long begin = System.nanoTime();
        do {
            sink.count = 0;
            Contender.expect("the number of items", items, pass.run());
            passes++;
            nanos = System.nanoTime() - begin;
        } while (nanos < ROUND_NANOS);
        double micros = nanos / 1000.0 / passes / items;
        long peak = Math.max(sink.peak, Counters.privateBytes()) - memory;
        table.printf("%s,%d,%s,%d,%.4f,%.1f,%.1f%n", job, items, contender, round, micros, peak / 1024.0,
                (liveHeap() - heap) / 1024.0);
    }

    private static long liveHeap() {
        System.gc();
        Runtime runtime = Runtime.getRuntime();
        return runtime.totalMemory() - runtime.freeMemory();
    }
}
