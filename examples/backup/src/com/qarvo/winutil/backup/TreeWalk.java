package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/**
 * Goes through a folder tree, each directory before what it holds. It never leaves the tree: links are handed over
 * and not followed, directories that lead somewhere else in another way are reported and not entered.
 */
final class TreeWalk {
    private final NativeFiles files;
    private final Report report;
    private final boolean withSecurity;
    private final String root;
    private final Way way;
    private final Deque<Found> waiting = new ArrayDeque<>();

    /**
     * Something that was found.
     *
     * @param path relative to the top, empty for the top itself
     * @param entry what the system says of it; for reparse points the link kind is known
     * @param security its security descriptor as SDDL text, empty when it has none here
     * @param securityProblem why it has none, null when it has one or none was wanted
     */
    record Found(String path, WinFile entry, String security, String securityProblem) {
        /** Gives its descriptor as a manifest has it. */
        String securityNoted() {
            return securityProblem == null ? security : ManifestEntry.UNREAD;
        }

        /**
         * Gives the time of the last write of a file as it is now: what its folder says of a file that is open
         * elsewhere may be out of date. Where the file does not tell, it is good enough.
         */
        long modified(NativeFiles files) {
            long asked = files.lastModified(entry.getPath());
            return asked != 0 ? asked : entry.getLastModified();
        }
    }

    /** Takes what is found. */
    interface Visitor {
        /** Tells whether to go into it. */
        boolean directory(Found directory);

        void file(Found file);

        void link(Found link);
    }

    /**
     * Prepares a walk.
     *
     * @param withSecurity whether security descriptors are wanted
     * @param root the top of the tree
     */
    TreeWalk(NativeFiles files, Report report, boolean withSecurity, String root) {
        this.files = files;
        this.report = report;
        this.withSecurity = withSecurity;
        this.root = root;
        this.way = Way.below(files, root);
    }

    /**
     * Walks the tree.
     *
     * @throws ClientException when its top is no folder
     */
    void run(Visitor visitor, StopSignal stop) {
        WinFile top = Folders.requireFolder(files, root, "folder");
        waiting.push(foundTop(top));
        long held = holdIfPossible(root);
        try {
            while (!waiting.isEmpty()) {
                stop.check();
                visitDirectory(waiting.pop(), visitor, stop);
            }
        } finally {
            release(held);
        }
    }

    /** Holds a directory while what it holds is visited: where that works, nobody can put another in its place. */
    private void visitDirectory(Found directory, Visitor visitor, StopSignal stop) {
        long held = holdIfPossible(Names.join(root, directory.path()));
        try {
            if (isStillThere(directory) && visitor.directory(directory)) {
                visitEntries(directory, visitor, stop);
            }
        } finally {
            release(held);
        }
    }

    /** Gives 0 where somebody is about to rename a directory, or it may not be opened: that must not keep it out. */
    private long holdIfPossible(String directory) {
        try {
            return files.hold(directory);
        } catch (IOException e) {
            return 0;
        }
    }

    private void release(long held) {
        if (held != 0) {
            files.close(held);
        }
    }

    /** Looks again at a directory that has waited for its turn, or was listed: it may lead out of the tree now. */
    private boolean isStillThere(Found directory) {
        try {
            way.require(directory.path());
            return true;
        } catch (IOException e) {
            report.leftOut(Names.join(root, directory.path()), Reasons.of(e));
            return false;
        }
    }

    private Found foundTop(WinFile top) {
        if (!withSecurity) {
            return new Found("", top, "", null);
        }
        try {
            return found("", files.entry(root, true), Map.of());
        } catch (IOException e) {
            return new Found("", top, "", Reasons.of(e));
        }
    }

    /** Makes a find of an entry, with the reason from the listing where it has no descriptor. */
    private Found found(String path, WinFile entry, Map<String, String> reasons) {
        String security = entry.getSecurityDescriptor();
        if (withSecurity && security.isEmpty() && entry.isDirectory()) {
            // On some file systems that know rights, what describes a directory leaves them out.
            security = files.security(entry.getPath());
        }
        boolean missing = withSecurity && security.isEmpty();
        return new Found(path, entry, security,
                missing ? reasons.getOrDefault(entry.getPath(), "the system gives none") : null);
    }

    private void visitEntries(Found directory, Visitor visitor, StopSignal stop) {
        List<Found> directories = new ArrayList<>();
        String path = Names.join(root, directory.path());
        int nameStart = Names.join(path, "x").length() - 1;
        Map<String, String> reasons = new HashMap<>();
        List<WinFile> entries = list(path, reasons);
        if (!isStillThere(directory)) {
            return;
        }
        for (WinFile entry : entries) {
            stop.check();
            String name = entry.getPath().substring(nameStart);
            visit(name, found(Names.join(directory.path(), name), entry, reasons), visitor, directories);
        }
        // Pushed backwards, so that the first is the next to be visited.
        for (int i = directories.size() - 1; i >= 0; i--) {
            waiting.push(directories.get(i));
        }
    }

    private List<WinFile> list(String directory, Map<String, String> reasons) {
        List<WinFile> entries = new ArrayList<>();
        try {
            files.list(directory, withSecurity, entries::add,
                    (path, reason) -> reasons.put(path, Reasons.of(reason)));
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
            Found reparsed = found(found.path(), files.entry(path, withSecurity), Map.of());
            if (reparsed.entry().isLink()) {
                visitor.link(reparsed);
            } else if (reparsed.entry().isDirectory()) {
                report.leftOut(path, "it is a mounted volume or a reparse point of an unknown kind, and not entered");
            } else if (!files.isKnownToBeNoLink(path)) {
                report.leftOut(path, "it may be a link, and its reparse point cannot be read");
            } else {
                // Such as deduplicated or compressed content: the file system shows it as a file like any other.
                visitor.file(reparsed);
            }
        } catch (IOException e) {
            report.leftOut(path, Reasons.of(e));
        }
    }
}
