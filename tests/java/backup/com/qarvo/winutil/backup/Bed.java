package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;
import java.util.HashMap;
import java.util.HexFormat;
import java.util.List;
import java.util.Map;
import java.util.function.Function;

/** A disk in memory, and the client run on it as from the command line. */
final class Bed {
    final FakeFiles files = new FakeFiles();
    final FakeInventory inventory = new FakeInventory();
    final FakeMessages messages = new FakeMessages();
    final FakeProcesses processes = new FakeProcesses();
    final StopSignal stop = new StopSignal();
    final Map<String, String> environment = new HashMap<>();
    /** What someone types where the password is asked for; null when nobody is there. */
    Function<String, char[]> console;

    /** What a command left: exit code, standard output and standard error. */
    record Result(int code, String out, String err) {
    }

    Result run(String... arguments) {
        StringWriter out = new StringWriter();
        StringWriter err = new StringWriter();
        int code = Main.run(new Natives(() -> files, () -> inventory, () -> messages, () -> processes),
                new Passwords(environment::get, console), stop, new PrintWriter(out, true),
                new PrintWriter(err, true), arguments);
        return new Result(code, out.toString(), err.toString().replace(System.lineSeparator(), "\n"));
    }

    /** Natives of which every part fails to load. */
    static Natives without(Error failure) {
        return new Natives(() -> {
            throw failure;
        }, () -> {
            throw failure;
        }, () -> {
            throw failure;
        }, () -> {
            throw failure;
        });
    }

    Result backup() {
        return run("backup", "C:\\src", "C:\\store");
    }

    Result restore() {
        return run("restore", "C:\\store", "C:\\out");
    }

    Result verify(String tree) {
        return run("verify", "C:\\store", tree);
    }

    List<ManifestEntry> manifest() {
        return Store.open(files, "C:\\store").readManifest();
    }

    /** What the store has for a path, null when it has nothing. */
    ManifestEntry entry(String path) {
        return manifest().stream().filter(e -> e.path().equals(path)).findFirst().orElse(null);
    }

    /** A source of two directories and three files. */
    Bed withSource() {
        files.addDirectory("C:\\src");
        files.addFile("C:\\src\\a.txt", "alpha");
        files.addDirectory("C:\\src\\sub");
        files.addFile("C:\\src\\sub\\b.txt", "beta");
        files.addFile("C:\\src\\sub\\empty", "");
        return this;
    }

    /** Puts a store together whose manifest has these lines, first and last line right. */
    Bed withManifest(String... lines) {
        StringBuilder text = new StringBuilder(ManifestFormat.HEADER + "\n");
        for (String line : lines) {
            text.append(line).append('\n');
        }
        files.addDirectory("C:\\store");
        files.addFile("C:\\store\\manifest.txt", text + "end\t" + lines.length + "\t" + sha256(text.toString()) + "\n");
        return this;
    }

    static String directoryLine(String path) {
        return "directory\t" + path + "\t0\t2024-05-01T10:00:00.123Z\t0x00000010\t-\t0\t-\t" + FakeDisk.SDDL;
    }

    static String fileLine(String path, long size, String sha256, long content) {
        return "file\t" + path + "\t" + size + "\t2024-05-01T10:00:00Z\t0x00000020\t" + sha256 + "\t" + content
                + "\t-\t" + FakeDisk.SDDL;
    }

    static String sha256(String text) {
        MessageDigest digest = Digests.sha256();
        return HexFormat.of().formatHex(digest.digest(text.getBytes(StandardCharsets.UTF_8)));
    }
}
