package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinProcess;
import com.qarvo.kel.util.WinProcessInfo;
import com.sun.management.OperatingSystemMXBean;
import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.atomic.AtomicLong;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.io.TempDir;

/**
 * Methods of all subsystems from 16 threads at once, for a minute: what they answer stays what one thread alone was
 * answered before, and neither handles nor memory grow, but for what a failed launch leaves behind on purpose.
 */
class AllSubsystemsTest extends EndToEnd {
    private static final int THREADS = 16;
    private static final String THREAD = "thread ";
    private static final String FIRST_THREAD = THREAD + 0;
    private static final long WARM_UP_SECONDS = 10;
    private static final int PERIODS = 5;
    private static final long PERIOD_SECONDS = 10;
    // The minute itself, and room for a busy machine before and after it.
    private static final int TIME_LIMIT_SECONDS = 170;
    /** The JVM's own: threads of its compiler and collector come and go. */
    private static final int HANDLES_OF_THE_JVM = 12;
    /** The JVM's own, too, in the middle one of the periods. A hundred bytes left by each call pass it. */
    private static final long BYTES_OF_THE_JVM = 512L << 10;

    /** The cells for a child's handles stay when it cannot be launched: three blocks of 8 bytes and what is around. */
    private static final long BYTES_OF_A_FAILED_LAUNCH = 3 * 32;

    /** This system's WMI falls over itself with more than one caller. */
    private static final Object WMI = new Object();
    /** The system keeps a connection to its service manager for each caller that it ever had at once. */
    private static final Object SERVICES = new Object();

    /** What is called, and what one thread alone was answered. */
    private record Job(String name, Callable<Object> call, Object answer) {
    }

    private final AtomicLong failedLaunches = new AtomicLong();
    private final ExecutorService servers = Executors.newFixedThreadPool(THREADS);

    @TempDir
    Path folder;

    @BeforeAll
    static void connectToTheServiceManager() {
        askForNoService();
    }

    @AfterEach
    void endServers() {
        servers.shutdownNow();
    }

    @Test
    @Timeout(TIME_LIMIT_SECONDS)
    void sixteenThreadsForAMinute() throws Exception {
        List<List<Job>> jobs = new ArrayList<>();
        for (int i = 0; i < THREADS; i++) {
            List<Job> own = new ArrayList<>();
            for (Map.Entry<String, Callable<Object>> job : jobsOf(THREAD + i).entrySet()) {
                own.add(new Job(job.getKey(), job.getValue(), job.getValue().call()));
            }
            jobs.add(own);
        }
        ExecutorService pool = Executors.newFixedThreadPool(THREADS);
        try {
            AtomicLong calls = new AtomicLong();
            runFor(WARM_UP_SECONDS, pool, jobs, calls);
            int handles = OpenHandles.ofAllKinds();
            calls.set(0);
            // A leak grows in each period, what the JVM takes for itself comes at once: the middle one tells which.
            long[] growth = new long[PERIODS];
            for (int i = 0; i < PERIODS; i++) {
                long bytes = bytesKept();
                runFor(PERIOD_SECONDS, pool, jobs, calls);
                growth[i] = bytesKept() - bytes;
            }
            int after = OpenHandles.ofAllKinds();
            Arrays.sort(growth);
            String grown = "bytes grown in " + PERIOD_SECONDS + " s: " + Arrays.toString(growth);
            System.out.printf("%d threads: %d calls, handles %d -> %d, %s%n", THREADS, calls.get(), handles, after,
                    grown);
            assertTrue(after <= handles + HANDLES_OF_THE_JVM, () -> handles + " handles became " + after);
            assertTrue(growth[PERIODS / 2] <= BYTES_OF_THE_JVM, grown);
        } finally {
            pool.shutdownNow();
        }
    }

    private static void runFor(long seconds, ExecutorService pool, List<List<Job>> jobs, AtomicLong calls)
            throws Exception {
        long end = System.nanoTime() + seconds * 1_000_000_000L;
        List<Future<?>> threads = new ArrayList<>();
        for (int i = 0; i < THREADS; i++) {
            List<Job> own = jobs.get(i);
            int first = i;
            threads.add(pool.submit(() -> {
                for (int next = first; System.nanoTime() < end; next++) {
                    Job job = own.get(next % own.size());
                    assertEquals(job.answer, job.call.call(), job.name);
                    calls.incrementAndGet();
                }
                return null;
            }));
        }
        for (Future<?> thread : threads) {
            thread.get();
        }
        System.gc();
    }

    /** What one thread does, by a name of its own; each gives the same whoever calls it. */
    private Map<String, Callable<Object>> jobsOf(String thread) throws Exception {
        Path own = Files.createDirectory(folder.resolve(thread));
        Map<String, Callable<Object>> jobs = new LinkedHashMap<>();
        addFileJobs(jobs, own);
        addRegistryJobs(jobs, "HKEY_CURRENT_USER\\Software\\WinUtilAllSubsystems\\" + thread);
        addVolumeJobs(jobs);
        addAccountJobs(jobs, own.resolve("plain").toString());
        addProcessJobs(jobs);
        addLaunchJobs(jobs, thread);
        addNetworkJobs(jobs, "\\\\.\\pipe\\winutil " + ProcessHandle.current().pid() + " " + thread);
        addHostJobs(jobs, "WINUTIL_" + thread.replace(' ', '_'));
        jobs.put("motherboard", () -> {
            synchronized (WMI) {
                return util.getMotherboardUUID();
            }
        });
        return jobs;
    }

    private static void addFileJobs(Map<String, Callable<Object>> jobs, Path own) throws Exception {
        String plain = Files.writeString(own.resolve("plain"), "text").toString();
        String written = own.resolve("written").toString();
        jobs.put("write and read", () -> {
            try (NativeFile file = preallocate(written, 10_000)) {
                util.write(file.record, new byte[] {1, 2, 3}, 0, 3);
            }
            byte[] back = new byte[10];
            try (NativeFile file = open(written)) {
                return util.read(file.record, back, 0, back.length) + Arrays.toString(back);
            }
        });
        jobs.put("list", () -> list(own).stream().map(file -> Path.of(file.getPath()).getFileName() + " "
                + file.isDirectory()).sorted().toList());
        jobs.put("missing", () -> assertThrows(java.io.FileNotFoundException.class,
                () -> util.openFile(own.resolve("missing").toString())).getMessage());
        jobs.put("descriptor", () -> util.getWinSecurityDescriptor(plain, 7, null));
        jobs.put("encrypted", () -> assertThrows(Exception.class, () -> util.openEncryptFile(plain, 0)).getMessage());
        jobs.put("link", () -> util.getLinkType(plain) + " " + util.isLink(plain) + util.isShortcut(plain));
        jobs.put("search", () -> String.valueOf(util.searchPathFromLibrary("kernel32.dll")));
    }

    private static void addRegistryJobs(Map<String, Callable<Object>> jobs, String key) {
        jobs.put("registry", () -> {
            assertTrue(util.setRegistryDWORD(key + "\\number", 42));
            assertTrue(util.setRegistryStringW(key + "\\text", "text"));
            OwnRegistryKey.Collector listed = new OwnRegistryKey.Collector();
            util.listRegistry(listed, "HKEY_CURRENT_USER", key.substring(key.indexOf('\\') + 1));
            return util.getRegistryDWORD(key + "\\number") + util.getRegistryValue(key + "\\text", 0, 1) + listed.items;
        });
    }

    private static void addVolumeJobs(Map<String, Callable<Object>> jobs) {
        jobs.put("drives", () -> List.of(util.getLogicalDrives()));
        jobs.put("drive C", () -> util.getDriveType("C:\\") + util.getVolumeLabel("C:\\") + util.isNTFSVolume("C:\\")
                + util.getTotalDiskSpace("C:\\") + util.getVolumeName("C:\\windows"));
        jobs.put("volumes", () -> {
            List<Object> volumes = new ArrayList<>();
            util.listPartitions(volumes);
            return volumes;
        });
    }

    private static void addAccountJobs(Map<String, Callable<Object>> jobs, String path) {
        jobs.put("user", () -> util.getUsername() + util.getSID() + util.getV6DomainName());
        jobs.put("refused logon", () -> assertThrows(Exception.class,
                () -> util.isAccessRead(path, "nowhere", "nobody", "none")).getMessage());
    }

    private static void addProcessJobs(Map<String, Callable<Object>> jobs) {
        long self = ProcessHandle.current().pid();
        jobs.put("command line", () -> util.getProcessCommandLineArguments(self, false));
        jobs.put("processes", () -> ProcessesTest.processes("java.exe").stream()
                .filter(process -> process.getProcessId() == self).map(WinProcessInfo::toString).toList());
        jobs.put("service", AllSubsystemsTest::askForNoService);
        jobs.put("session", util::getSessionId);
        jobs.put("no pipe to read", () -> assertThrows(IOException.class,
                () -> util.readHandle(0, new byte[1], 0, 1)).getMessage());
    }

    private void addLaunchJobs(Map<String, Callable<Object>> jobs, String thread) {
        jobs.put("failed launch", () -> {
            failedLaunches.incrementAndGet();
            return assertThrows(IOException.class, () -> ProcessesTest.launch("no-such-program.exe")).getMessage();
        });
        // A new process takes this system so long that the others would hardly get a turn if all threads made some.
        if (thread.equals(FIRST_THREAD)) {
            jobs.put("launch", () -> {
                try (WinProcess child = ProcessesTest.launch("cmd.exe /c \"echo text& exit 5\"")) {
                    String output = new String(child.getStandardOutput().readAllBytes(), StandardCharsets.UTF_8);
                    return output + child.waitFor();
                }
            });
        }
    }

    private void addNetworkJobs(Map<String, Callable<Object>> jobs, String pipe) {
        jobs.put("network path", () -> String.valueOf(util.getUNC("C:\\windows")));
        jobs.put("connections", () -> util.getNetUsed(new NetworkTest.Connections()));
        jobs.put("connected", util::isNetworkConnected);
        jobs.put("absent server", () -> util.sendPipe(pipe + " absent", "text"));
        jobs.put("message", () -> PipeEnd.exchange(pipe, "text", servers));
    }

    private static void addHostJobs(Map<String, Callable<Object>> jobs, String variable) {
        jobs.put("environment", () -> {
            util.setEnvironmentVariable(variable, "value");
            return util.getEnv(variable);
        });
        jobs.put("folder", () -> util.getSHfolderPath(0x25));
        jobs.put("version", () -> util.getMajorVersion() + "." + util.getMinorVersion() + " " + util.getProductType()
                + util.isWindows64() + util.isUserAnAdmin() + util.getLocationID());
    }

    private static Object askForNoService() {
        synchronized (SERVICES) {
            return assertThrows(IOException.class, () -> util.isServiceRunning("no such service")).getMessage();
        }
    }

    /** What the process holds, without what was left behind on purpose. */
    private long bytesKept() {
        return ManagementFactory.getPlatformMXBean(OperatingSystemMXBean.class).getCommittedVirtualMemorySize()
                - failedLaunches.get() * BYTES_OF_A_FAILED_LAUNCH;
    }
}
