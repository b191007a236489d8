package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.qarvo.kel.util.WinProcessInfo;
import org.junit.jupiter.api.Test;

class PsTest {
    private final Bed bed = new Bed();
    private final FakeProcesses processes = bed.processes;

    private static String lines(String text) {
        return text.replace(System.lineSeparator(), "\n");
    }

    @Test
    void processesAreListedByTheirIds() {
        processes.running.add(new WinProcessInfo("b\u0007.exe", 4711, 1, "SYSTEM", "NT AUTHORITY"));
        processes.running.add(new WinProcessInfo("a.exe", 8, 10, "ann", ""));
        processes.running.add(new WinProcessInfo("java.exe", 4294967295L, 0, "bob", "OFFICE"));

        Bed.Result result = bed.run("ps");

        assertEquals("""
                     Process  Session  Account              Program
                           8       10  ann                  a.exe
                        4711        1  NT AUTHORITY\\SYSTEM  b\\u0007.exe
                  4294967295        0  OFFICE\\bob           java.exe
                """, lines(result.out()));
        assertEquals(0, result.code());
        assertEquals("", processes.filter);
    }

    @Test
    void theFilterGoesToTheSystemAsItIs() {
        bed.run("ps", "JAVA.exe");

        assertEquals("JAVA.exe", processes.filter);
    }

    @Test
    void noProcessIsSaidInWords() {
        assertEquals(new Bed.Result(0, "No such process." + System.lineSeparator(), ""), bed.run("ps", "none.exe"));
    }

    @Test
    void aListThatFailsIsOneSentence() {
        processes.listFailure = "[x] Failed  (5) Access denied.\r\n";

        assertEquals(new Bed.Result(2, "", "The processes cannot be listed: [x] Failed (5) Access denied.\n"),
                bed.run("ps"));
    }
}
