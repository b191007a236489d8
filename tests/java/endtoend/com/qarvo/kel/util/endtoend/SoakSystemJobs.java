package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinProcess;
import com.qarvo.kel.util.WinProcessInfo;
import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.Executor;
import java.util.concurrent.atomic.AtomicLong;

/** What a thread of a soak does with registry, volumes, accounts, processes, network, WMI and host. */
final class SoakSystemJobs {
    private static final WindowsUtil util = EndToEnd.util;
    private static final String ENDLESS = "cmd.exe /c \"for /L %i in (1,0,2) do @rem\"";
    private static final int WINDOWS_FOLDER = 0x24;
    private static final String NO_SHARE = "\\\\winutil-no-such-server\\share";

    /** This system's WMI falls over itself with more than one caller. */
    private static final Object WMI = new Object();
    /** The system keeps a connection to its service manager for each caller that it ever had at once. */
    private static final Object SERVICES = new Object();

    private final SoakLedger ledger;
    private final String name;
    private final String key;
    private final String hiveFile;
    private final Executor servers;
    private final AtomicLong failedLaunches;

    SoakSystemJobs(SoakLedger ledger, String name, String hiveFile, Executor servers, AtomicLong failedLaunches) {
        this.ledger = ledger;
        this.name = name;
        this.key = "HKEY_CURRENT_USER\\" + Soak.KEY + "\\" + name;
        this.hiveFile = hiveFile;
        this.servers = servers;
        this.failedLaunches = failedLaunches;
    }

    void addTo(Map<String, Callable<Object>> jobs) {
        jobs.put("registry", this::registry);
        jobs.put("hive", this::hive);
        jobs.put("volumes", this::volumes);
        jobs.put("accounts", this::accounts);
        jobs.put("logons", this::logons);
        jobs.put("processes", this::processes);
        jobs.put("no process", this::noProcess);
        jobs.put("service", this::service);
        jobs.put("network", this::network);
        jobs.put("pipe", () -> PipeEnd.exchange(pipe(), "text", servers) + util.sendPipe(pipe() + " absent", "text"));
        jobs.put("inventory", this::inventory);
        jobs.put("host", this::host);
    }

    /** Each leaves something behind on purpose, so they are few. */
    void addFailingLaunchesTo(Map<String, Callable<Object>> jobs) {
        jobs.put("failed launch", this::failedLaunch);
    }

    /** New processes take this system so long that the others would hardly get a turn if all threads made some. */
    void addLaunchesTo(Map<String, Callable<Object>> jobs) {
        jobs.put("launch", this::launch);
        jobs.put("end", this::end);
        jobs.put("end by id", this::endById);
    }

    private Object registry() {
        List<Object> answers = new ArrayList<>(List.of(util.makeNewRegistryKey("HKEY_CURRENT_USER",
                key.substring(key.indexOf('\\') + 1) + "\\below"), util.setRegistryDWORD(key + "\\number", 42),
                util.setRegistryDWORDW(key + "\\wide number", 43), util.setRegistryString(key + "\\narrow", "narrow"),
                util.setRegistryStringW(key + "\\text", "text"), util.setRegistryMultiString(key + "\\list", "one"),
                util.setRegistryBinary(key + "\\bytes", new byte[] {1, 2, 3}, 0, 3)));
        OwnRegistryKey.Collector listed = new OwnRegistryKey.Collector();
        util.listRegistry(listed, "HKEY_CURRENT_USER", key.substring(key.indexOf('\\') + 1));
        answers.addAll(List.of(util.getRegistryDWORD(key + "\\number"), util.getRegistryString(key + "\\text"),
                util.getRegistryValueString(key, "narrow"), util.getRegistryValue(key + "\\text", 0, Win32.REG_SZ),
                Arrays.toString(util.getRegistryBinary(key + "\\bytes")), listed.items));
        return answers;
    }

    private Object hive() {
        String loaded = "WinUtilSoak " + name;
        assertTrue(util.enableBackupPrivilege() && util.enableRestorePrivilege());
        assertTrue(util.loadRegistry("HKEY_USERS", loaded, hiveFile));
        try (SoakLedger.Held held = ledger.hold(() -> assertTrue(util.unloadRegistry("HKEY_USERS", loaded)))) {
            return util.getRegistryString("HKEY_USERS\\" + loaded + "\\text");
        }
    }

    private Object volumes() {
        List<Object> answers = new ArrayList<>();
        util.listPartitions(answers);
        answers.add(Soak.outcome(() -> {
            util.listNTFSPartitions("\\\\.\\PhysicalDrive97", answers);
            return null;
        }));
        assertTrue(util.getFreeDiskSpace("C:\\") > 0);
        answers.addAll(List.of(util.getVolumeName("C:\\windows"), util.isNTFSVolume("C:\\"),
                util.getSystemVolumeDriveLetter(), util.setVolumeLabel("no volume", "label"),
                util.getDriveType("C:\\"), util.getTotalDiskSpace("C:\\"), List.of(util.getLogicalDrives())));
        return answers;
    }

    private Object accounts() {
        List<Object> answers = new ArrayList<>(List.of(util.getUsername(), util.getDomainName(), util.getV6DomainName(),
                util.getNetBIOSComputerName(), util.getSID(), util.getSIDForUser("BUILTIN", "Administrators")));
        util.getDomainUserGroups(null, util.getUsername(), answers);
        answers.add(util.isMemberOf(new ArrayList<>(List.of("Staff"))));
        return answers;
    }

    private Object logons() throws Exception {
        util.impersonateToSelf();
        util.validateUserNative("DOM", "somebody", "secret");
        return Soak.outcome(() -> util.impersonateUser("nowhere", "nobody", "none"))
                + util.networkAuthenticate("DOM", "somebody", "secret");
    }

    private Object processes() throws IOException {
        long self = ProcessHandle.current().pid();
        return ProcessesTest.processes("java.exe").stream().filter(process -> process.getProcessId() == self)
                .map(WinProcessInfo::toString).toList() + util.getProcessCommandLineArguments(self, false)
                + util.getSessionId() + util.setPriority();
    }

    private Object noProcess() {
        util.closeHandle(0);
        util.unloadUserProfile(0, 0);
        return util.waitForSingleObject(0) + Soak.outcome(() -> util.exitValue(0))
                + Soak.outcome(() -> util.readHandle(0, new byte[1], 0, 1))
                + Soak.outcome(() -> util.terminateProcessByProcessID(Long.MAX_VALUE, false));
    }

    private Object failedLaunch() {
        failedLaunches.incrementAndGet();
        return Soak.outcome(() -> ProcessesTest.launch("no-such-program.exe")) + Soak.outcome(
                () -> util.createProcessAsUserN(null, "cmd.exe", null, null, ".", "nobody", "secret"));
    }

    private Object launch() throws IOException {
        WinProcess child = ProcessesTest.launch("cmd.exe /c \"echo text& exit 5\"");
        try (SoakLedger.Held held = ledger.hold(child::close)) {
            String output = new String(child.getStandardOutput().readAllBytes(), StandardCharsets.UTF_8);
            return output + child.waitFor() + child.exitValue();
        }
    }

    private Object end() throws IOException {
        WinProcess child = ProcessesTest.launch(ENDLESS);
        try (SoakLedger.Held held = ledger.hold(child::close)) {
            child.end();
            return child.waitFor();
        }
    }

    private Object endById() throws Exception {
        Process child = Starting.process(new ProcessBuilder("cmd.exe", "/c", "set /p line=")::start);
        util.terminateProcessByProcessID(child.pid(), false);
        int code = child.waitFor();
        child.destroy();
        return code;
    }

    private Object service() {
        synchronized (SERVICES) {
            return Soak.outcome(() -> util.isServiceRunning("no such service"));
        }
    }

    private String pipe() {
        return "\\\\.\\pipe\\winutil soak " + ProcessHandle.current().pid() + " " + name;
    }

    private Object network() {
        return Soak.outcome(() -> {
            util.netUse("user", "secret", NO_SHARE);
            return null;
        }) + Soak.outcome(() -> {
            util.removeNetUsed(NO_SHARE);
            return null;
        }) + Soak.outcome(() -> util.getUserByNetUsedPath(NO_SHARE)) + util.getUNC("C:\\windows")
                + util.getNetUsed(new NetworkTest.Connections()) + util.isNetworkConnected();
    }

    private Object inventory() throws IOException {
        synchronized (WMI) {
            InventoryTest.Collector collector = new InventoryTest.Collector();
            DiskSerialsTest.Collector disks = new DiskSerialsTest.Collector();
            util.getProcessorInfo(collector);
            util.getMemoryInfo(collector);
            util.getWindowsInstalledFeatures(collector.items);
            util.getHardDiskSN(disks);
            // The frequency of a processor is what it is at this moment.
            return collector.items.size() + util.getSystemModel() + util.getMotherboardUUID() + disks.disks;
        }
    }

    private Object host() throws IOException {
        String variable = "WINUTIL_" + name.replace(' ', '_');
        util.setEnvironmentVariable(variable, "value");
        util.createEventLog("WinUtil soak", "An entry", 0, false);
        return util.getEnv("SystemRoot") + util.getEnv(variable) + util.getSHfolderPath(WINDOWS_FOLDER)
                + util.getMajorVersion() + util.getMinorVersion() + util.getProductType() + util.isWindows64()
                + util.Wow64EnableWow64FsRedirection(true) + util.isUserAnAdmin() + util.getLocationID()
                + util.getConsoleChar() + util.getPipeSlotPath() + util.getMessagePipeSlotPath();
    }
}
