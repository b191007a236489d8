package com.qarvo.kel.util;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.BufferedReader;
import java.io.File;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.List;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.io.TempDir;

/** In a JVM of its own: a DLL that this one has loaded cannot fail to load any more. */
class FailedLoadTest {
    @TempDir
    Path folder;

    @Test
    @Timeout(60)
    void everyAttemptGetsTheSameClearError() throws Exception {
        File missing = folder.resolve("missing.dll").toFile();

        List<String> lines = runAttempts(missing);

        String problem = File.separatorChar == '\\'
                ? "WinUtil64.dll cannot be loaded because -Dwinutil.library names " + missing + ", which is missing."
                : "WinUtil64.dll can only be loaded on Windows, and this system is " + System.getProperty("os.name")
                        + ".";
        assertEquals(3, lines.size(), lines.toString());
        for (String line : lines) {
            assertEquals("java.lang.UnsatisfiedLinkError: " + problem, line);
        }
    }

    private static List<String> runAttempts(File library) throws IOException, InterruptedException {
        Process java = new ProcessBuilder(
                Paths.get(System.getProperty("java.home"), "bin", "java").toString(),
                "-cp", System.getProperty("java.class.path"),
                "-Dwinutil.library=" + library,
                Attempts.class.getName()).redirectErrorStream(true).start();
        try (BufferedReader out = new BufferedReader(new InputStreamReader(java.getInputStream()))) {
            List<String> lines = out.lines().collect(Collectors.toList());
            assertTrue(java.waitFor(30, TimeUnit.SECONDS));
            return lines;
        } finally {
            java.destroyForcibly();
        }
    }

    /** Makes three instances, the last one on another thread, and prints what came of each. */
    static class Attempts {
        public static void main(String[] arguments) throws InterruptedException {
            attempt();
            attempt();
            Thread thread = new Thread(Attempts::attempt);
            thread.start();
            thread.join();
        }

        private static void attempt() {
            try {
                new WindowsUtil();
                System.out.println("loaded");
            } catch (Throwable e) {
                System.out.println(e);
            }
        }
    }
}
