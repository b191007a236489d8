package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.io.IOException;
import java.io.PrintWriter;
import java.time.Instant;
import java.time.ZoneId;
import java.time.format.DateTimeFormatter;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** Lists one folder. */
@CommandLine.Command(name = "list", description = {
    "Lists a folder: attributes, size, time of the last write, name, and where links lead.",
    "The letters stand for directory, link or other reparse point, read-only, hidden, system, archive, compressed and"
        + " encrypted."})
final class ListCommand implements Callable<Integer> {
    private static final DateTimeFormatter TIME = DateTimeFormatter.ofPattern("yyyy-MM-dd HH:mm:ss.SSS");

    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Parameters(paramLabel = "DIR", description = "Folder to list.")
    private String directory;

    @Option(names = "--security", description = "Show owner, group and DACL below each name.")
    private boolean security;

    @Override
    public Integer call() {
        NativeFiles files = main.files();
        PrintWriter out = spec.commandLine().getOut();
        Report report = new Report(spec.commandLine().getErr(), new Progress(null, System::nanoTime));
        String path = files.absolutePath(directory);
        Folders.requireFolder(files, path, "folder");
        List<WinFile> entries = new ArrayList<>();
        try {
            files.list(path, security, entries::add, (entry, reason) -> report.leftOut(entry,
                    "its security descriptor cannot be read: " + Reasons.of(reason)));
        } catch (IOException e) {
            report.leftOut(path, "it cannot be listed: " + Reasons.of(e));
        }
        for (WinFile entry : entries) {
            print(out, entry, link(files, entry, report));
        }
        return report.count() == 0 ? Main.EXIT_ALL : Main.EXIT_INCOMPLETE;
    }

    private void print(PrintWriter out, WinFile entry, String link) {
        String time = TIME.format(Instant.ofEpochMilli(entry.getLastModified()).atZone(ZoneId.systemDefault()));
        out.printf("%s %15d  %s  %s%s%n", Attributes.letters(entry.getAttributes()), entry.getSize(), time,
                Escapes.printable(entry.getName()), link);
        if (security) {
            out.println("    " + Escapes.printable(entry.getSecurityDescriptor()));
        }
    }

    private static String link(NativeFiles files, WinFile entry, Report report) {
        if (!entry.isReparsePoint()) {
            return "";
        }
        try {
            WinFile found = files.entry(entry.getPath(), false);
            if (!found.isLink()) {
                return " (reparse point)";
            }
            return " -> " + Escapes.printable(found.getLinkTarget()) + " (" + Type.of(found).word() + ")";
        } catch (IOException e) {
            report.leftOut(entry.getPath(), Reasons.of(e));
            return "";
        }
    }
}
