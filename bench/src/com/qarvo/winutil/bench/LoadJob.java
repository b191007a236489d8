package com.qarvo.winutil.bench;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.util.List;

/** Loading the DLL in a fresh JVM, against a DLL that imports the same functions and does nothing. */
final class LoadJob {
    private LoadJob() {
    }

    static Job job(String libraryFile, String emptyFile) {
        return new Job(Aims.LOAD, "load", 1, Job.Clock.OWN,
                List.of(contender(Contender.LIBRARY, libraryFile), contender(Contender.EMPTY_DLL, emptyFile)));
    }

    private static Contender contender(String name, String file) {
        return new Contender(name, () -> load(file), () -> {
            if (load(file) <= 0) {
                throw new Contender.WrongResult("loading took no time");
            }
        });
    }

    /** Returns how long a fresh JVM took to load a DLL, in nanoseconds. */
    private static long load(String file) throws IOException, InterruptedException, Contender.WrongResult {
        Process process = new ProcessBuilder(System.getProperty("java.home") + "\\bin\\java.exe", "-cp",
                System.getProperty("java.class.path"), LoadOne.class.getName(), file)
                .redirectError(ProcessBuilder.Redirect.INHERIT).start();
        String line;
        try (BufferedReader out = new BufferedReader(
                new InputStreamReader(process.getInputStream(), StandardCharsets.US_ASCII))) {
            line = out.readLine();
        }
        if (process.waitFor() != 0 || line == null) {
            throw new Contender.WrongResult("loading " + file + " failed");
        }
        return Long.parseLong(line.trim());
    }
}
