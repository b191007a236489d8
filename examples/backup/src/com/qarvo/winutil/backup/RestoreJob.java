package com.qarvo.winutil.backup;

import com.qarvo.dov.io.DiskFullException;
import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.ManifestEntry.Type;
import com.qarvo.winutil.backup.Transfer.Content;
import java.io.IOException;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/**
 * Writes the content of a store into a new folder. The order matters: directories and files first; then links, so
 * that nothing is ever written through one; the times and rights of directories last, as everything made in them
 * changes the times, and the rights might not allow it.
 */
final class RestoreJob {
    private final Job job;
    private final NativeFiles files;
    private final Metadata metadata;
    private final Store store;
    private final String target;
    private final Set<String> missingDirectories = new HashSet<>();

    private RestoreJob(Job job, boolean withSecurity, Store store, String target) {
        this.job = job;
        this.files = job.files();
        this.metadata = new Metadata(job.files(), job.report(), withSecurity);
        this.store = store;
        this.target = target;
    }

    /**
     * Restores a store; everything that can be wrong with the arguments is found before anything is made.
     *
     * @param withSecurity whether owners, groups and access rights are set
     */
    static void run(Job job, boolean withSecurity, String storePath, String target) {
        NativeFiles files = job.files();
        Store store = Store.open(files, storePath);
        if (files.exists(target) && !Folders.entries(files, target, "target").isEmpty()) {
            throw new ClientException("The target " + Escapes.printable(target) + " exists and is not empty.");
        }
        if (Names.isInside(files.realPath(target), files.realPath(storePath))) {
            throw new ClientException("The target " + Escapes.printable(target) + " must not lie inside the store.");
        }
        List<ManifestEntry> entries = store.readManifest();
        files.useRestorePrivileges();
        Folders.makeIfMissing(files, target, "target");
        new RestoreJob(job, withSecurity, store, target).restore(entries);
    }

    private void restore(List<ManifestEntry> entries) {
        List<ManifestEntry> links = new ArrayList<>();
        List<ManifestEntry> directories = new ArrayList<>();
        for (ManifestEntry entry : entries) {
            job.stop().check();
            if (isInMissingDirectory(entry)) {
                continue;
            }
            switch (entry.type()) {
                case DIRECTORY -> restoreDirectory(entry, directories);
                case FILE -> restoreFile(entry);
                default -> links.add(entry);
            }
        }
        links.forEach(this::restoreLink);
        for (int i = directories.size() - 1; i >= 0; i--) {
            metadata.restore(directories.get(i), targetOf(directories.get(i)));
        }
    }

    private boolean isInMissingDirectory(ManifestEntry entry) {
        if (entry.path().isEmpty() || !missingDirectories.contains(Names.parent(entry.path()))) {
            return false;
        }
        if (entry.type() == Type.DIRECTORY) {
            missingDirectories.add(entry.path());
        }
        job.report().leftOut(targetOf(entry), "its folder could not be made");
        return true;
    }

    private void restoreDirectory(ManifestEntry entry, List<ManifestEntry> made) {
        String path = targetOf(entry);
        try {
            if (entry.path().isEmpty() || files.makeDirectory(path)) {
                made.add(entry);
                job.progress().countDirectory();
                return;
            }
            // Two names that differ in case only can live in one directory elsewhere, and not here.
            job.report().leftOut(path, "something of that name is there already");
        } catch (DiskFullException e) {
            throw diskFull(e);
        } catch (IOException | SecurityException e) {
            job.report().leftOut(path, Reasons.of(e));
        }
        missingDirectories.add(entry.path());
    }

    private void restoreFile(ManifestEntry entry) {
        String path = targetOf(entry);
        job.progress().at(path);
        try {
            if (files.exists(path)) {
                throw new IOException("something of that name is there already");
            }
            if (entry.size() == 0) {
                requireContent(entry, Digests.ofNothing());
                write(entry, path, 0);
            } else {
                writeContent(entry, path);
            }
        } catch (DiskFullException e) {
            throw diskFull(e);
        } catch (IOException e) {
            job.progress().takeBack();
            job.report().leftOut(path, Reasons.of(e));
            return;
        }
        job.progress().countFile();
        metadata.restore(entry, path);
    }

    private void writeContent(ManifestEntry entry, String path) throws IOException {
        long content = openContent(entry);
        try {
            // Before the file is made: a manifest that lies must not reserve the whole disk.
            long size = files.size(content);
            if (size != entry.size()) {
                throw new IOException("its content in the store is damaged: it has " + size + " bytes instead of "
                        + entry.size());
            }
            write(entry, path, content);
        } finally {
            files.close(content);
        }
    }

    private long openContent(ManifestEntry entry) throws IOException {
        try {
            return job.transfer().open(store.contentPath(entry.content()));
        } catch (IOException e) {
            throw new IOException("its content in the store cannot be read: " + Reasons.of(e), e);
        }
    }

    /** Makes, fills and checks one file. Unless it is whole, nothing stays of it. */
    private void write(ManifestEntry entry, String path, long content) throws IOException {
        long file = create(path, entry.size());
        boolean whole = false;
        try {
            try {
                if (entry.size() > 0) {
                    copy(entry, content, file);
                }
            } finally {
                files.close(file);
            }
            checkSize(entry, path);
            whole = true;
        } finally {
            if (!whole) {
                remove(path);
            }
        }
    }

    private long create(String path, long size) throws IOException {
        try {
            return files.create(path, size);
        } catch (IOException e) {
            if (size > 0) {
                removeUnfilled(path);
            }
            throw e;
        }
    }

    private void copy(ManifestEntry entry, long content, long file) throws IOException {
        Content copied = job.transfer().read(content,
                (buffer, offset, length) -> job.transfer().write(file, buffer, offset, length));
        requireContent(entry, copied.sha256());
    }

    private static void requireContent(ManifestEntry entry, String sha256) throws IOException {
        if (!sha256.equals(entry.sha256())) {
            throw new IOException("its content in the store is damaged: the SHA-256 is another one");
        }
    }

    private void checkSize(ManifestEntry entry, String path) throws IOException {
        long size = files.entry(path, false).getSize();
        if (size != entry.size()) {
            throw new IOException("only " + size + " of " + entry.size() + " bytes arrived");
        }
    }

    /** Removes what a failed reservation may have left: nothing was there before, and nothing is in it. */
    private void removeUnfilled(String path) {
        try {
            if (files.exists(path) && files.entry(path, false).getSize() == 0) {
                remove(path);
            }
        } catch (IOException e) {
            job.report().leftOut(path, "what was begun of it may still be there: " + Reasons.of(e));
        }
    }

    private void remove(String path) {
        if (!files.delete(path)) {
            job.report().leftOut(path, "what was begun of it cannot be removed");
        }
    }

    private void restoreLink(ManifestEntry entry) {
        job.stop().check();
        String path = targetOf(entry);
        if (files.exists(path)) {
            job.report().leftOut(path, "something of that name is there already");
            return;
        }
        try {
            files.makeLink(entry.type().linkKind(), path, entry.linkTarget());
            requireLink(entry, path);
        } catch (IOException e) {
            job.report().leftOut(path, "the link cannot be made: " + Reasons.of(e));
            removeFailedLink(path);
            return;
        }
        job.progress().countLink();
        metadata.restore(entry, path);
    }

    /** Requires that the link is there and leads where it should: not every system that says so has made it. */
    private void requireLink(ManifestEntry entry, String path) throws IOException {
        WinFile made = entryOf(path);
        if (made == null || Type.of(made) != entry.type()) {
            throw new IOException("the system says that it was made, but it is not there");
        }
        if (!made.getLinkTarget().equals(entry.linkTarget())) {
            throw new IOException("it would lead to " + Escapes.printable(made.getLinkTarget()) + " instead of "
                    + Escapes.printable(entry.linkTarget()));
        }
    }

    private WinFile entryOf(String path) {
        try {
            return files.entry(path, false);
        } catch (IOException e) {
            return null;
        }
    }

    /** Removes what a failed attempt left, such as the directory of a junction: nothing was there before. */
    private void removeFailedLink(String path) {
        if (files.exists(path) && !files.delete(path) && !files.deleteEmptyDirectory(path)) {
            job.report().leftOut(path, "what was begun of it cannot be removed");
        }
    }

    private String targetOf(ManifestEntry entry) {
        return Names.join(target, entry.path());
    }

    private ClientException diskFull(DiskFullException cause) {
        return new ClientException("The disk of the target " + Escapes.printable(target) + " is full, and the restore"
                + " is not finished: " + Reasons.of(cause), cause);
    }
}
