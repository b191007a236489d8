package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.ManifestEntry.Type;
import com.qarvo.winutil.backup.Transfer.Content;
import com.qarvo.winutil.backup.TreeWalk.Found;
import java.io.IOException;
import java.nio.ByteBuffer;

/** Copies a folder tree into a new store, in one pass. */
final class BackupJob implements TreeWalk.Visitor {
    // A file that is being written to may hold still a moment later; a log file never does.
    private static final int ATTEMPTS = 2;

    private final Job job;
    private final NativeFiles files;
    private final ReadCheck check;
    private final String source;
    private final Way way;
    private final Store store;
    private final ManifestWriter manifest;
    private long contents;

    private BackupJob(Job job, ReadCheck check, String source, Store store, ManifestWriter manifest) {
        this.job = job;
        this.files = job.files();
        this.check = check;
        this.source = source;
        this.way = Way.below(files, source);
        this.store = store;
        this.manifest = manifest;
    }

    /**
     * Backs up a folder; everything that can be wrong with the arguments is found before anything is made.
     *
     * @param account whose rights decide what is read, null for those of this process
     * @param withSecurity whether security descriptors are stored
     * @param shareStore whether a new store is as open as the folder that it is made in
     */
    static void run(Job job, Account account, boolean withSecurity, boolean shareStore, String source,
            String storePath) {
        NativeFiles files = job.files();
        files.useBackupPrivilege();
        Folders.requireFolder(files, source, "source");
        ReadCheck check = new ReadCheck(files, account);
        requireSource(check, source);
        Folders.entries(files, source, "source");
        String realSource = files.realPath(source);
        String realStore = files.realPath(storePath);
        if (Names.isInside(realStore, realSource)) {
            throw new ClientException("The store " + Escapes.printable(storePath) + " must not lie inside the source.");
        }
        if (Names.isInside(realSource, realStore)) {
            throw new ClientException("The source " + Escapes.printable(source) + " must not lie inside the store.");
        }
        try (Store store = Store.create(files, storePath, shareStore);
                NativeOutputStream out = store.startManifest()) {
            ManifestWriter manifest = new ManifestWriter(out);
            BackupJob backup = new BackupJob(job, check, source, store, manifest);
            new TreeWalk(files, job.report(), withSecurity, source).run(backup, job.stop());
            manifest.end();
            out.finish();
            store.finish();
        } catch (IOException e) {
            throw Store.failure(storePath, e);
        }
    }

    private static void requireSource(ReadCheck check, String source) {
        try {
            check.require(source);
        } catch (IOException e) {
            throw new ClientException("The source " + Escapes.printable(source) + " cannot be backed up: "
                    + Reasons.of(e), e);
        }
    }

    @Override
    public boolean directory(Found directory) {
        add(ManifestEntry.ofDirectory(directory));
        job.progress().countDirectory();
        reportSecurity(directory);
        // The source itself was asked about before anything was made.
        return directory.path().isEmpty() || mayRead(directory);
    }

    private void reportSecurity(Found found) {
        if (found.securityProblem() != null) {
            job.report().leftOut(found.entry().getPath(),
                    "its security descriptor cannot be read: " + found.securityProblem());
        }
    }

    private boolean mayRead(Found found) {
        try {
            check.require(found.entry().getPath());
            return true;
        } catch (IOException e) {
            job.report().leftOut(found.entry().getPath(), Reasons.of(e));
            return false;
        }
    }

    @Override
    public void link(Found link) {
        if (link.entry().getLinkTarget().isEmpty()) {
            job.report().leftOut(link.entry().getPath(), "it is a link, and where it leads cannot be read");
            return;
        }
        add(ManifestEntry.ofLink(link));
        job.progress().countLink();
        reportSecurity(link);
    }

    @Override
    public void file(Found file) {
        String path = file.entry().getPath();
        if (path.endsWith("\\" + store.unfinishedName())) {
            // Another drive letter, share or link led to the store; the comparison of paths could not see it.
            throw new ClientException("The store " + Escapes.printable(store.path()) + " must not lie inside the"
                    + " source " + Escapes.printable(source) + ".");
        }
        if (RestoreTarget.isMarker(file.path())) {
            job.report().leftOut(path, "it marks a restore that was not finished; what is missing there is missing in"
                    + " the backup");
            return;
        }
        job.progress().at(path);
        if (!mayRead(file)) {
            return;
        }
        try {
            for (int attempt = 1; !backUp(file); attempt++) {
                job.progress().takeBack();
                if (attempt == ATTEMPTS) {
                    job.report().leftOut(path, "it changed while it was being read");
                    return;
                }
            }
            job.progress().countFile();
            reportSecurity(file);
        } catch (IOException e) {
            job.progress().takeBack();
            job.report().leftOut(path, Reasons.of(e));
        }
    }

    /** Copies and notes one file; false when it changed meanwhile, so that the copy is neither old nor new. */
    private boolean backUp(Found found) throws IOException {
        String path = found.entry().getPath();
        long file = job.transfer().open(path);
        try (Copy copy = new Copy()) {
            requireInTree(found);
            long modified = found.modified(files);
            long size = files.size(file);
            Content content = job.transfer().read(file, copy);
            if (content.size() != size || files.size(file) != size || found.modified(files) != modified) {
                return false;
            }
            long number = copy.keep(size);
            WinFile entry = found.entry();
            add(new ManifestEntry(Type.FILE, found.path(), size, modified, entry.getAttributes(), content.sha256(),
                    number, "", found.securityNoted()));
            return true;
        } finally {
            files.close(file);
        }
    }

    /**
     * Requires of a file that is open that it was opened where it was found: that no folder on the way to it, nor it
     * itself, has become a link meanwhile.
     */
    private void requireInTree(Found found) throws IOException {
        way.require(Names.parent(found.path()));
        if (Attributes.isReparsePoint(files.attributes(found.entry().getPath())) != found.entry().isReparsePoint()) {
            throw new IOException("it was replaced meanwhile, or is no longer there");
        }
    }

    /** The copy of one file in the store, made when there is a first block. Unless it is kept, nothing stays of it. */
    private final class Copy implements Transfer.BlockSink, AutoCloseable {
        private String place;
        private long file;
        private boolean open;
        private boolean kept;

        @Override
        public void take(ByteBuffer buffer, int offset, int length) {
            try {
                if (!open) {
                    String next = store.placeForContent(contents + 1);
                    file = files.create(next, 0);
                    // Not before: what stands in the way of a new file is not for this backup to remove.
                    place = next;
                    open = true;
                }
                job.transfer().write(file, buffer, offset, length);
            } catch (IOException | SecurityException e) {
                throw Store.failure(store.path(), e);
            }
        }

        /** Keeps the copy and gives its number, 0 for an empty file, which needs none. */
        long keep(long size) {
            if (!open) {
                return 0;
            }
            closeFile();
            try {
                long arrived = files.entry(place, false).getSize();
                if (arrived != size) {
                    throw new IOException("only " + arrived + " of " + size + " bytes arrived in " + place);
                }
            } catch (IOException e) {
                throw Store.failure(store.path(), e);
            }
            kept = true;
            return ++contents;
        }

        @Override
        public void close() {
            closeFile();
            if (place != null && !kept) {
                files.delete(place);
            }
        }

        private void closeFile() {
            if (open) {
                open = false;
                files.close(file);
            }
        }
    }

    private void add(ManifestEntry entry) {
        try {
            manifest.add(entry);
        } catch (IOException e) {
            throw Store.failure(store.path(), e);
        }
    }
}
