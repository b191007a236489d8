package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinPipe;
import com.qarvo.kel.util.WinProcess;
import com.qarvo.kel.util.WinProcessInfo;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.Kernel32Util;
import com.sun.jna.platform.win32.WinDef.DWORD;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import com.sun.jna.ptr.IntByReference;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.util.List;
import java.util.Locale;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;

/** Processes: launching them, their output and their end, and looking at others. */
class ProcessesTest extends EndToEnd {
    private static final int INVALID_PARAMETER = 87;
    private static final int NO_SUCH_PROCESS = 0x7FFFFFF0;
    private static final long OWN_ID = ProcessHandle.current().pid();

    static WinProcess launch(String commandLine) throws IOException {
        return Starting.process(
                () -> util.createProcessAsUserSession(null, commandLine, null, null, util.getSessionId()));
    }

    private static byte[] readAll(WinPipe pipe) {
        try {
            return pipe.readAllBytes();
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    private static String text(byte[] bytes) {
        return new String(bytes, StandardCharsets.UTF_8).strip();
    }

    private static String java(Class<?> program) {
        return "java " + Starting.WITHOUT_WARNINGS + " -cp \"" + System.getProperty("java.class.path") + "\" "
                + program.getName();
    }

    private static WinProcess launch(Class<?> program) throws IOException {
        String file = System.getProperty("java.home") + "\\bin\\java.exe";
        return Starting.process(
                () -> util.createProcessAsUserSession(file, java(program), "unused", "C:\\", 1));
    }

    /** Says that it has begun, and goes on. */
    static final class Endless {
        public static void main(String[] arguments) throws InterruptedException {
            System.out.println("ready");
            Thread.sleep(600_000);
        }
    }

    /** A program that runs until its input ends. */
    private static Process startWaiting() throws IOException {
        return Starting.process(
                new ProcessBuilder("cmd.exe", "/c", "set /p line= & rem \u00E4 two  blanks")::start);
    }

    @SuppressWarnings("unchecked")
    static List<WinProcessInfo> processes(String name) throws IOException {
        return util.getProcessInfo(name);
    }

    @Test
    void aLaunchedProgramGivesItsOutputAndItsExitCode() throws IOException {
        try (WinProcess process = launch("cmd.exe /c \"echo output& echo problem>&2& exit 5\"")) {
            assertEquals("output", text(readAll(process.getStandardOutput())));
            assertEquals("problem", text(readAll(process.getStandardError())));
            assertEquals(5, process.waitFor());
            assertEquals(5, process.exitValue());
            assertEquals(0, process.getTokenHandle());
            assertEquals(0, process.getProfileHandle());
        }
    }

    /** Writes more than a pipe holds to both streams, in turns. */
    static final class Flood {
        static final int SIZE = 300_000;

        static byte[] bytes(boolean error) {
            byte[] all = new byte[SIZE];
            for (int i = 0; i < SIZE; i++) {
                all[i] = (byte) ((error ? 'A' : 'a') + i % 23);
            }
            return all;
        }

        public static void main(String[] arguments) {
            byte[] output = bytes(false);
            byte[] error = bytes(true);
            for (int i = 0; i < SIZE; i += 10_000) {
                System.out.write(output, i, 10_000);
                System.err.write(error, i, 10_000);
            }
            System.out.flush();
            System.err.flush();
            System.exit(42);
        }
    }

    @Test
    void moreThanAPipeHoldsArrivesOnBothStreams() throws IOException {
        try (WinProcess process = launch(Flood.class)) {
            CompletableFuture<byte[]> error =
                    CompletableFuture.supplyAsync(() -> readAll(process.getStandardError()));

            assertArrayEquals(Flood.bytes(false), readAll(process.getStandardOutput()));

            assertArrayEquals(Flood.bytes(true), error.join());
            assertEquals(42, process.waitFor());
        }
    }

    @Test
    void aRunningProgramIsReadAndEnded() throws IOException {
        try (WinProcess process = launch(Endless.class)) {
            assertEquals('r', process.getStandardOutput().read());
            assertEquals(Win32.STILL_ACTIVE, process.exitValue());
            process.end();
            assertEquals(0, process.waitFor());
            assertEquals("eady", text(readAll(process.getStandardOutput())));
        }
    }

    /** A process may be asked for its exit code and yet not waited for, as its handle has it. */
    @Test
    void aWaitThatFailsIsNoEnd() {
        HANDLE handle = Kernel32.INSTANCE.OpenProcess(WinNT.PROCESS_QUERY_INFORMATION, false, (int) OWN_ID);
        Memory cell = new Memory(Native.POINTER_SIZE);
        cell.setPointer(0, handle.getPointer());
        // Not closed: the cell is the test's own.
        WinProcess process = new WinProcess(Pointer.nativeValue(cell), new WinPipe(0), new WinPipe(0), 0, 0);
        try {
            assertFails(IOException.class, "The wait for the process failed.", process::waitFor);
        } finally {
            Kernel32.INSTANCE.CloseHandle(handle);
            cell.clear();
        }
    }

    @Test
    void aProgramThatIsNotThereIsToldWithTheLaunchsOwnWords() {
        String step = "[WindowsUtil:createProcessAsUserSession] Failed to CreateProcessAsUserW for wcAppName='(null)'"
                + " wcArguments='no-such-program.exe' wcWorkingDir='(null)'.";
        assertFails(IOException.class, message(step, FILE_NOT_FOUND), () -> launch("no-such-program.exe"));
    }

    /** This system's logon answers every account with a token that nobody knows. */
    @Test
    void aLaunchForAnAccountStopsAtTheFirstUseOfItsToken() {
        String step = "[WindowsUtil:createProcessAsUserN] Failed to GetUserProfileDirectory for wcDomain='.'"
                + " username='nobody'.";
        assertFails(IOException.class, message(step, INVALID_HANDLE),
                () -> util.createProcessAsUserN(null, "cmd.exe", null, null, ".", "nobody", "secret"));
    }

    @Test
    void cellsThatAreNoneAreLeftAlone() {
        for (long cell : new long[] {0, -1, Long.MIN_VALUE}) {
            util.closeHandle(cell);
            util.unloadUserProfile(cell, cell);
            assertEquals(-1, util.waitForSingleObject(cell));
            assertEquals(-1, util.WriteHandle(cell, new byte[1], 0, 1));
            assertFails(IOException.class, ' ' + errorWords("[WindowsUtil:exitValue]", INVALID_HANDLE),
                    () -> util.exitValue(cell));
            assertFails(IOException.class, ' ' + errorWords("[WinUtil:endProcess]", INVALID_HANDLE),
                    () -> util.endProcess(cell));
            assertFails(IOException.class, ' ' + errorWords("[WindowsUtil:readHandle]", INVALID_HANDLE),
                    () -> util.readHandle(cell, new byte[1], 0, 1));
        }
    }

    @Test
    void theListHasThisProcessWithItsOwnerAndSession() throws IOException {
        String name = ProcessHandle.current().info().command().map(path -> path.substring(path.lastIndexOf('\\') + 1))
                .orElse("java.exe");
        IntByReference session = new IntByReference();
        Kernel32.INSTANCE.ProcessIdToSessionId((int) OWN_ID, session);

        List<WinProcessInfo> found = processes(name.toUpperCase(Locale.ROOT));

        assertTrue(found.stream().allMatch(process -> process.getExecutableName().equalsIgnoreCase(name)));
        WinProcessInfo own = found.stream().filter(process -> process.getProcessId() == OWN_ID).findFirst()
                .orElseThrow();
        assertEquals(name, own.getExecutableName());
        assertEquals(session.getValue(), own.getSessionId());
        assertEquals(session.getValue(), util.getSessionId());
        assertEquals(Advapi32Util.getUserName(), own.getAccountName());
        assertEquals(Kernel32Util.getComputerName(), own.getDomainName());
    }

    @Test
    void withoutANameAllProcessesAreListed() throws IOException {
        List<Long> all = processes(null).stream().map(WinProcessInfo::getProcessId).collect(Collectors.toList());

        assertTrue(all.contains(OWN_ID));
        assertTrue(processes("").stream().anyMatch(process -> process.getProcessId() == OWN_ID));
        assertTrue(processes("no-such-program.exe").isEmpty());
    }

    /** Until it has begun a process is not yet all that it will be. */
    private static String commandLine(long id) throws IOException, InterruptedException {
        for (int i = 0; i < 100; i++) {
            try {
                String found = util.getProcessCommandLineArguments(id, false);
                if (!found.isEmpty()) {
                    return found;
                }
            } catch (IOException tooEarly) {
                assertFalse(tooEarly.getMessage().contains("open process"), tooEarly.getMessage());
            }
            Thread.sleep(20);
        }
        return util.getProcessCommandLineArguments(id, true);
    }

    @Test
    void theCommandLineIsThatOfTheProgramAsItWasStarted() throws Exception {
        Process started = startWaiting();
        try {
            assertEquals("cmd.exe /c \"set /p line= & rem \u00E4 two  blanks\"", commandLine(started.pid()));
        } finally {
            started.destroyForcibly().waitFor();
        }
    }

    @Test
    void theCommandLineOfNoProcessIsAFailure() {
        assertFails(IOException.class, message("Failed to open process(" + NO_SUCH_PROCESS + ")\n", INVALID_PARAMETER),
                () -> util.getProcessCommandLineArguments(NO_SUCH_PROCESS, true));
    }

    @Test
    void aProcessIsEndedByItsId() throws Exception {
        Process started = startWaiting();

        assertTrue(started.isAlive());
        util.terminateProcessByProcessID(started.pid(), true);

        assertTrue(started.waitFor(20, TimeUnit.SECONDS));
        assertEquals(0, started.exitValue());
        started.destroy();
    }

    @Test
    void endingNoProcessIsAFailure() {
        assertFails(IOException.class, message("Failed to open process (" + NO_SUCH_PROCESS + ")\n", INVALID_PARAMETER),
                () -> util.terminateProcessByProcessID(NO_SUCH_PROCESS, false));
    }

    @Test
    void thePriorityIsLowered() {
        Kernel32 kernel = Kernel32.INSTANCE;
        DWORD before = kernel.GetPriorityClass(kernel.GetCurrentProcess());
        try {
            assertEquals(1, util.setPriority());
            assertEquals(0x4000, kernel.GetPriorityClass(kernel.GetCurrentProcess()).intValue());
        } finally {
            kernel.SetPriorityClass(kernel.GetCurrentProcess(), before);
        }
    }

    @Test
    void aServiceIsRunningOrNot() throws IOException {
        assertTrue(util.isServiceRunning("PlugPlay"));
        assertFalse(util.isServiceRunning("Spooler"));
        assertFails(IOException.class, message("[WindowsUtil:getServiceStatus] OpenService failed.", 1060),
                () -> util.isServiceRunning("NoSuchService"));
    }

    private static String errorWords(String tag, int code) {
        return tag + " (" + code + ") " + Witness.systemText(code);
    }

    private static String message(String step, int code) {
        return step + ' ' + errorWords("", code);
    }
}
