package com.qarvo.winutil.backup;

import com.qarvo.dov.io.DiskFullException;
import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.ManifestEntry.Type;
import com.qarvo.winutil.backup.Transfer.Content;
import java.io.IOException;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;
import java.util.stream.Collectors;

/**
 * Writes the content of a store into a new folder. The order matters: directories and files first; then links, so
 * that nothing is ever written through one; the times and rights of directories last and inner ones first, as
 * everything made in them changes the times, the rights might not allow it, and nothing that is still worked in may be
 * open to others.
 */
final class RestoreJob {
    /** How the library begins its message when a file was made, and could not be given its size. */
    private static final String MADE_WITHOUT_SIZE = "[createFileN]";
    private static final long UNKNOWN = -1;

    private final Job job;
    private final NativeFiles files;
    private final Metadata metadata;
    private final Store store;
    private final RestoreTarget target;
    private final Set<String> missingDirectories = new HashSet<>();

    private RestoreJob(Job job, Metadata metadata, Store store, RestoreTarget target) {
        this.job = job;
        this.files = job.files();
        this.metadata = metadata;
        this.store = store;
        this.target = target;
    }

    /**
     * Restores a store; everything that can be wrong with the arguments is found before anything is made.
     *
     * @param withSecurity whether owners, groups and access rights are set, and the target is closed until they are
     */
    static void run(Job job, boolean withSecurity, String storePath, String targetPath) {
        NativeFiles files = job.files();
        Store store = Store.open(files, storePath);
        RestoreTarget.requireUsable(files, targetPath);
        if (Names.isInside(files.realPath(targetPath), files.realPath(storePath))) {
            throw new ClientException("The target " + Escapes.printable(targetPath)
                    + " must not lie inside the store.");
        }
        List<ManifestEntry> entries = store.readManifest();
        if (withSecurity && entries.stream().noneMatch(ManifestEntry::hasSecurity)) {
            throw new ClientException("The store " + Escapes.printable(storePath) + " has no owners and access rights;"
                    + " --no-security restores without them.");
        }
        files.useRestorePrivileges();
        ClosedRights closed = withSecurity ? ClosedRights.of(files, targetPath) : null;
        boolean finished = false;
        try (RestoreTarget target = RestoreTarget.prepare(files, targetPath, closed, namesAtTheTop(entries))) {
            try {
                new RestoreJob(job, new Metadata(files, job.report(), closed), store, target).restore(entries);
                finished = true;
            } finally {
                if (!finished) {
                    job.report().endedEarly(target.leftBehind());
                }
            }
        }
    }

    private static Set<String> namesAtTheTop(List<ManifestEntry> entries) {
        return entries.stream().map(ManifestEntry::path).filter(path -> Names.parent(path).isEmpty())
                .map(path -> path.toLowerCase(Locale.ROOT)).collect(Collectors.toSet());
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
        target.releaseBesides("");
        for (int i = directories.size() - 1; i > 0; i--) {
            finishDirectory(directories.get(i));
        }
        finishTarget(directories.get(0));
    }

    private void finishDirectory(ManifestEntry entry) {
        job.stop().check();
        try {
            target.requirePlain(entry.path());
            metadata.restore(entry, targetOf(entry));
        } catch (IOException e) {
            job.report().leftOut(targetOf(entry), "its time, attributes and rights are not set: " + Reasons.of(e));
        }
    }

    /** Finishes the target itself: its rights, which open it to others, come last of all. */
    private void finishTarget(ManifestEntry top) {
        String path = targetOf(top);
        try {
            if (Metadata.isCompressed(top)) {
                target.whileReleased(() -> metadata.compress(path));
            }
            target.unmark();
            target.requirePlain("");
            metadata.restoreAllButCompression(
                    target.ownSecurity().isEmpty() ? top : top.withSecurity(target.ownSecurity()), path);
        } catch (IOException e) {
            throw new ClientException("The restore cannot be finished: " + Reasons.of(e), e);
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
            if (entry.path().isEmpty() || makeDirectory(entry, path)) {
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

    private boolean makeDirectory(ManifestEntry entry, String path) throws IOException {
        target.requireWayTo(Names.parent(entry.path()));
        boolean made = files.makeDirectory(path);
        target.requirePlain(Names.parent(entry.path()));
        return made;
    }

    private void restoreFile(ManifestEntry entry) {
        String path = targetOf(entry);
        job.progress().at(path);
        try {
            target.requireWayTo(Names.parent(entry.path()));
            if (files.exists(path)) {
                throw new IOException("something of that name is there already");
            }
            if (entry.size() == 0) {
                requireContent(entry, Digests.ofNothing());
                write(entry, path, 0);
            } else {
                writeContent(entry, path);
            }
            target.requirePlain(Names.parent(entry.path()));
            metadata.restore(entry, path);
        } catch (DiskFullException e) {
            throw diskFull(e);
        } catch (IOException e) {
            job.progress().takeBack();
            job.report().leftOut(path, Reasons.of(e));
            return;
        }
        job.progress().countFile();
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
        long file = create(entry, path);
        long left = UNKNOWN;
        boolean whole = false;
        try {
            try {
                // It was made where the way leads now. Nothing is written into it if that is somewhere else.
                target.requirePlain(Names.parent(entry.path()));
                if (entry.size() > 0) {
                    copy(entry, content, file);
                }
            } finally {
                left = positionOf(file);
                files.close(file);
            }
            left = files.entry(path, false).getSize();
            if (left != entry.size()) {
                throw new IOException("only " + left + " of " + entry.size() + " bytes arrived");
            }
            whole = true;
        } finally {
            if (!whole) {
                remove(entry, path, left);
            }
        }
    }

    /** Makes a file, and reserves its size where nobody else can read what the disk held there before. */
    private long create(ManifestEntry entry, String path) throws IOException {
        try {
            return files.create(path, target.isClosed() ? entry.size() : 0);
        } catch (IOException e) {
            if (Reasons.of(e).startsWith(MADE_WITHOUT_SIZE)) {
                remove(entry, path, 0);
            }
            throw e;
        }
    }

    private long positionOf(long file) {
        try {
            return files.position(file);
        } catch (IOException e) {
            return UNKNOWN;
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

    /**
     * Removes a file that this restore has made. No handle tells whose a file is, so that it must still be where it
     * was made, and have the size that it was left with.
     */
    private void remove(ManifestEntry entry, String path, long size) {
        try {
            target.requireWayTo(Names.parent(entry.path()));
            if (files.entry(path, false).getSize() != size) {
                throw new IOException("it is not as it was left");
            }
            if (!files.delete(path)) {
                throw new IOException("the system refuses");
            }
        } catch (IOException e) {
            job.report().leftOut(path, "what was begun of it cannot be removed: " + Reasons.of(e));
        }
    }

    private void restoreLink(ManifestEntry entry) {
        job.stop().check();
        String path = targetOf(entry);
        try {
            target.requireWayTo(Names.parent(entry.path()));
            if (files.exists(path)) {
                job.report().leftOut(path, "something of that name is there already");
                return;
            }
        } catch (IOException e) {
            job.report().leftOut(path, Reasons.of(e));
            return;
        }
        boolean made = false;
        try {
            files.makeLink(entry.type().linkKind(), path, entry.linkTarget());
            made = true;
            target.requirePlain(Names.parent(entry.path()));
            requireLink(entry, path);
        } catch (IOException e) {
            job.report().leftOut(path, "the link cannot be made: " + Reasons.of(e));
            removeFailedLink(entry, path, made);
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

    /** Removes a link that was made and is not right, or what an attempt to make a junction has left: its directory. */
    private void removeFailedLink(ManifestEntry entry, String path, boolean made) {
        try {
            target.requireWayTo(Names.parent(entry.path()));
            boolean begun = made ? files.exists(path) : entry.type() == Type.JUNCTION && target.isPlain(entry.path());
            if (begun && !(made && files.delete(path)) && !files.deleteEmptyDirectory(path)) {
                throw new IOException("the system refuses");
            }
        } catch (IOException e) {
            job.report().leftOut(path, "what was begun of it cannot be removed: " + Reasons.of(e));
        }
    }

    private String targetOf(ManifestEntry entry) {
        return target.place(entry.path());
    }

    private ClientException diskFull(DiskFullException cause) {
        return new ClientException("The disk of the target " + Escapes.printable(target.place("")) + " is full, and the"
                + " restore is not finished: " + Reasons.of(cause), cause);
    }
}
