package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import com.sun.jna.NativeLibrary;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.Kernel32Util;
import com.sun.jna.platform.win32.Shell32Util;
import com.sun.jna.platform.win32.ShlObj;
import com.sun.jna.platform.win32.WinNT;
import java.io.IOException;
import java.util.concurrent.CompletableFuture;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** The environment, the event log and what is known of the system. */
class HostTest extends EndToEnd {
    private static final String VARIABLE = "WINUTIL_END_TO_END";
    private static final int INVALID_PARAMETER = 87;
    private static final int NATION = 16;
    private static final int NO_SUCH_FOLDER = 0x7F;
    private static final int STARTED = 0;
    private static final int STARTED_ALREADY = 1;
    private static final int OTHER_MODEL = 0x80010106;

    @AfterEach
    void removeTheVariable() {
        Kernel32.INSTANCE.SetEnvironmentVariable(VARIABLE, null);
    }

    @Test
    void variablesAreThoseThatTheProcessBeganWith() {
        assertNotNull(System.getenv("SystemRoot"));
        assertEquals(System.getenv("SystemRoot"), util.getEnv("SystemRoot"));
        assertEquals(System.getenv("SystemRoot"), util.getEnv("SYSTEMROOT"));
    }

    @Test
    void aVariableThatIsNotSetIsNull() {
        assertNull(util.getEnv(VARIABLE));
        assertNull(util.getEnv(""));
        assertNull(util.getEnv("x".repeat(40_000)));
    }

    @Test
    void aVariableIsSetForTheSystemAndNotForGetEnv() throws IOException {
        util.setEnvironmentVariable(VARIABLE, "v\u00e4lue \u20ac \ud83d\udcbe");

        assertEquals("v\u00e4lue \u20ac \ud83d\udcbe", Kernel32Util.getEnvironmentVariable(VARIABLE));
        assertNull(util.getEnv(VARIABLE));
    }

    @Test
    void aVariableWithoutANameIsRefused() {
        assertFails(IOException.class, Witness.message("SetEnvironmentVariableW", INVALID_PARAMETER),
                () -> util.setEnvironmentVariable("", "value"));
    }

    @ParameterizedTest
    @ValueSource(ints = {ShlObj.CSIDL_APPDATA, ShlObj.CSIDL_WINDOWS, ShlObj.CSIDL_PERSONAL})
    void specialFoldersAreWhereTheSystemHasThem(int folder) {
        assertEquals(Shell32Util.getFolderPath(folder), util.getSHfolderPath(folder));
    }

    @Test
    void aFolderThatIsNoneIsNull() {
        assertNull(util.getSHfolderPath(NO_SUCH_FOLDER));
    }

    @Test
    void theVersionIsTheOneThatTheSystemShows() {
        WinNT.OSVERSIONINFOEX version = new WinNT.OSVERSIONINFOEX();
        assertTrue(Kernel32.INSTANCE.GetVersionEx(version));

        assertEquals(version.getMajor(), util.getMajorVersion());
        assertEquals(version.getMinor(), util.getMinorVersion());
        assertEquals(version.getProductType(), util.getProductType());
    }

    @Test
    void a64BitProcessIsNoneOfWow64() {
        assertFalse(util.isWindows64());
        assertFalse(util.Wow64EnableWow64FsRedirection(false));
        assertFalse(util.Wow64EnableWow64FsRedirection(true));
    }

    @Test
    void theUserIsAnAdministratorWhenTheShellSaysSo() {
        assertEquals(NativeLibrary.getInstance("shell32").getFunction("IsUserAnAdmin").invokeInt(new Object[0]) != 0,
                util.isUserAnAdmin());
    }

    @Test
    void theLocationIsTheUsersOwn() {
        assertEquals(NativeLibrary.getInstance("kernel32").getFunction("GetUserGeoID").invokeInt(new Object[] {NATION}),
                util.getLocationID());
    }

    /** The run has no console; with one, the call would wait for a key. */
    @Test
    void withoutAConsoleThereIsNoKey() {
        assertNull(Kernel32.INSTANCE.GetConsoleWindow());
        assertEquals(-1, util.getConsoleChar());
    }

    @Test
    void comIsStartedAndEndedOnEachThread() {
        int[] results = CompletableFuture.supplyAsync(() -> {
            int first = util.CoInitializeEx(Win32.COINIT_MULTITHREADED);
            int second = util.CoInitializeEx(Win32.COINIT_MULTITHREADED);
            int other = util.CoInitializeEx(Win32.COINIT_APARTMENTTHREADED);
            util.CoUninitialize();
            util.CoUninitialize();
            return new int[] {first, second, other};
        }, task -> new Thread(task).start()).join();

        assertEquals(STARTED, results[0]);
        assertEquals(STARTED_ALREADY, results[1]);
        assertEquals(OTHER_MODEL, results[2]);
    }

    /** What becomes of an entry is the log's business; here each is taken without an exception. */
    @Test
    void entriesOfEveryKindAreTaken() {
        for (int kind = 0; kind <= 3; kind++) {
            util.createEventLog("WinUtil end-to-end test", "An entry of kind " + kind, kind, kind == 2);
        }
        util.createEventLog("WinUtil end-to-end test", null, 0, false);
    }
}
