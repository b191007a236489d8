package com.qarvo.winutil.backup;

import java.io.IOException;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.List;

import com.qarvo.kel.util.WinFileList.WinFile;

/**
 * Goes through a folder tree, each directory before what it holds. It never leaves the tree: links are handed over
 * and not followed, directories that lead somewhere else in another way are reported and not entered.
 */
final class TreeWalk {
    private final NativeFiles files;
    private final Report report;
    private final boolean withSecurity;
    private final String root;
    private final Deque<Found> waiting = new ArrayDeque<>();

    /**
     * Something that was found.
     *
     * @param path relative to the top, empty for the top itself
     * @param entry what the system says of it; for reparse points the link kind is known
     */
    record Found(String path, WinFile entry) {
    }

    /** Takes what is found. */
    interface Visitor {
        void directory(Found directory);

        void file(Found file);

        void link(Found link);
    }

    TreeWalk(NativeFiles files, Report report, boolean withSecurity, String root) {
        this.files = files;
        this.report = report;
        this.withSecurity = withSecurity;
        this.root = root;
    }

    /**
     * Walks the tree.
     *
     * @throws ClientException when its top is no folder
     */
    void run(Visitor visitor, StopSignal stop) {
        WinFile top = Folders.requireFolder(files, root, "folder");
        if (withSecurity) {
            top = securedTop(top);
        }
        waiting.push(new Found("", top));
        while (!waiting.isEmpty()) {
            stop.check();
            Found directory = waiting.pop();
            visitor.directory(directory);
            visitEntries(directory, visitor, stop);
        }
    }

    private WinFile securedTop(WinFile top) {
        try {
            WinFile secured = files.entry(root, true);
            if (secured.getSecurityDescriptor().isEmpty()) {
                report.leftOut(root, "its security descriptor cannot be read");
            }
            return secured;
        } catch (IOException e) {
            report.leftOut(root, "its security descriptor cannot be read: " + Reasons.of(e));
            return top;
        }
    }

    private void visitEntries(Found directory, Visitor visitor, StopSignal stop) {
        List<Found> directories = new ArrayList<>();
        String path = Names.join(root, directory.path());
        int nameStart = Names.join(path, "x").length() - 1;
        for (WinFile entry : list(path)) {
            stop.check();
            String name = entry.getPath().substring(nameStart);
            visit(name, new Found(Names.join(directory.path(), name), entry), visitor, directories);
        }
        // Pushed backwards, so that the first is the next to be visited.
        for (int i = directories.size() - 1; i >= 0; i--) {
            waiting.push(directories.get(i));
        }
    }

    private List<WinFile> list(String directory) {
        List<WinFile> entries = new ArrayList<>();
        try {
            files.list(directory, withSecurity, entries::add, (path, reason) -> report.leftOut(path,
                    "its security descriptor cannot be read: " + Reasons.of(reason)));
        } catch (IOException e) {
            report.leftOut(directory, "it cannot be listed" + (entries.isEmpty() ? "" : " to the end") + ": "
                    + Reasons.of(e));
        }
        return entries;
    }

    private void visit(String name, Found found, Visitor visitor, List<Found> directories) {
        String problem = Names.problemOf(name);
        if (problem != null) {
            report.leftOut(found.entry().getPath(), problem);
        } else if (Attributes.isReparsePoint(found.entry().getAttributes())) {
            visitReparsePoint(found, visitor);
        } else if (found.entry().isDirectory()) {
            directories.add(found);
        } else {
            visitor.file(found);
        }
    }

    private void visitReparsePoint(Found found, Visitor visitor) {
        String path = found.entry().getPath();
        try {
            WinFile entry = files.entry(path, withSecurity);
            if (entry.isLink()) {
                visitor.link(new Found(found.path(), entry));
            } else if (entry.isDirectory()) {
                report.leftOut(path, "it is a mounted volume or a reparse point of an unknown kind, and not entered");
            } else {
                // Such as deduplicated or compressed content: the file system shows it as a file like any other.
                visitor.file(new Found(found.path(), entry));
            }
        } catch (IOException e) {
            report.leftOut(path, Reasons.of(e));
        }
    }
}
