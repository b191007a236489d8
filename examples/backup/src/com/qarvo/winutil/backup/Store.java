package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.util.List;

/**
 * The folder that holds a backup: {@code manifest.txt}, and below {@code data} the content of each file under a
 * number. The manifest is written under another name and gets its own when everything is in place, so that a backup
 * that was interrupted is never taken for a whole one.
 */
final class Store implements AutoCloseable {
    private static final String MANIFEST = "manifest.txt";
    private static final String UNFINISHED_PREFIX = "manifest-unfinished-";
    private static final String DATA = "data";
    // A directory with millions of entries is slow on every file system.
    private static final int FILES_PER_DIRECTORY = 1000;

    private final NativeFiles files;
    private final String path;
    private final String unfinishedName;
    private long lastDirectoryMade = -1;
    private long held;

    private Store(NativeFiles files, String path) {
        this.files = files;
        this.path = path;
        this.unfinishedName = UNFINISHED_PREFIX + Long.toHexString(ProcessHandle.current().pid()) + "-"
                + Long.toHexString(System.nanoTime());
    }

    /**
     * Makes a new store in a folder that is missing or empty.
     *
     * @param share whether a folder that is made gets the rights that its own folder gives it, instead of being closed
     */
    static Store create(NativeFiles files, String path, boolean share) {
        Store store = new Store(files, path);
        if (files.exists(path)) {
            store.refuseUnlessEmpty();
        }
        if (share) {
            Folders.makeIfMissing(files, path, "store");
        } else if (Folders.makeClosedIfMissing(files, path, "store")) {
            store.closeToOthers();
        }
        try {
            store.makeData();
        } catch (ClientException e) {
            store.close();
            throw e;
        }
        return store;
    }

    private void makeData() {
        try {
            if (!files.makeDirectory(Names.join(path, DATA))) {
                throw new ClientException("Something else is writing to " + Escapes.printable(path)
                        + "; a backup needs a folder of its own.");
            }
        } catch (IOException | SecurityException e) {
            throw failure(path, e);
        }
    }

    private void closeToOthers() {
        ClosedRights rights = ClosedRights.of(files, path);
        try {
            rights.closeMade(path);
            held = files.hold(path);
            // Only now nobody can put another one in its place.
            rights.requireClosed(path);
            if (!Folders.entries(files, path, "store").isEmpty()) {
                throw new IOException("somebody else is writing to it");
            }
        } catch (IOException e) {
            close();
            files.deleteEmptyDirectory(path);
            throw new ClientException("The store " + Escapes.printable(path) + " cannot be closed to others: "
                    + Reasons.of(e) + "; --share-store leaves it as open as its folder.", e);
        }
    }

    /** Opens a finished store. */
    static Store open(NativeFiles files, String path) {
        Store store = new Store(files, path);
        Folders.requireFolder(files, path, "store");
        if (!files.exists(Names.join(path, MANIFEST))) {
            throw new ClientException(store.holdsUnfinished()
                    ? Escapes.printable(path) + " holds a backup that was not finished."
                    : Escapes.printable(path) + " is not a store: it has no " + MANIFEST + ".");
        }
        return store;
    }

    String path() {
        return path;
    }

    /** Gives the name of the manifest while it is being written; no other file in the world has it. */
    String unfinishedName() {
        return unfinishedName;
    }

    /** Gives the place of a content; on the way there it makes the directory, once. */
    String placeForContent(long number) throws IOException {
        long directory = number / FILES_PER_DIRECTORY;
        if (directory != lastDirectoryMade) {
            files.makeDirectory(directoryOf(number));
            lastDirectoryMade = directory;
        }
        return contentPath(number);
    }

    String contentPath(long number) {
        return Names.join(directoryOf(number), String.format("%08d", number));
    }

    NativeOutputStream startManifest() throws IOException {
        return new NativeOutputStream(files, Names.join(path, unfinishedName));
    }

    /** Gives the manifest its name, which makes the store a whole one. */
    void finish() throws IOException {
        if (!files.rename(Names.join(path, unfinishedName), Names.join(path, MANIFEST))) {
            throw new IOException("the manifest cannot be renamed from " + unfinishedName + " to " + MANIFEST);
        }
    }

    List<ManifestEntry> readManifest() {
        String manifest = Names.join(path, MANIFEST);
        try (NativeInputStream in = new NativeInputStream(files, manifest)) {
            return withUnreadNamed(ManifestReader.read(in));
        } catch (IOException e) {
            throw new ClientException(Escapes.printable(manifest) + " cannot be used: " + Reasons.of(e), e);
        }
    }

    /** Older backups left it empty when a descriptor could not be read; all are empty only if none was wanted. */
    private static List<ManifestEntry> withUnreadNamed(List<ManifestEntry> entries) {
        if (entries.stream().noneMatch(ManifestEntry::hasSecurity)) {
            return entries;
        }
        return entries.stream().map(e -> e.hasSecurity() ? e : e.withSecurity(ManifestEntry.UNREAD)).toList();
    }

    /** Turns a failure to write into the sentence that ends a backup. */
    static ClientException failure(String path, Exception cause) {
        return new ClientException("The store " + Escapes.printable(path) + " cannot be written, and the backup is not"
                + " finished: " + Reasons.of(cause), cause);
    }

    /** Lets go of a store that was made. */
    @Override
    public void close() {
        if (held != 0) {
            files.close(held);
            held = 0;
        }
    }

    private String directoryOf(long number) {
        return Names.join(Names.join(path, DATA), String.format("%05d", number / FILES_PER_DIRECTORY));
    }

    private void refuseUnlessEmpty() {
        List<WinFile> found = Folders.entries(files, path, "store");
        String shown = Escapes.printable(path);
        if (files.exists(Names.join(path, MANIFEST))) {
            throw new ClientException(shown + " already is a store; a backup needs a new or an empty folder.");
        }
        if (holdsUnfinished()) {
            throw new ClientException(shown + " holds a backup that was not finished; a backup needs a new or an"
                    + " empty folder.");
        }
        if (!Folders.isEmpty(path, found)) {
            throw new ClientException(shown + " is not empty; a backup needs a new or an empty folder.");
        }
    }

    private boolean holdsUnfinished() {
        return Folders.entries(files, path, "store").stream().anyMatch(e -> e.getName().startsWith(UNFINISHED_PREFIX));
    }
}
