package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayDeque;
import java.util.Deque;
import java.util.List;
import java.util.Set;
import java.util.regex.Pattern;

/**
 * The folder that a restore writes into. Where rights are restored it is closed to others, with everything below it,
 * from its first moment until everything in it is as it is to be. The folders that are written into are held open, so
 * that nobody can rename them, and are looked at before each step, for where that does not hold. A marker file says
 * until the end that the restore is not finished.
 */
final class RestoreTarget implements AutoCloseable {
    private static final String MARKER = "restore-unfinished";
    private static final Pattern MARKERS = Pattern.compile(MARKER + "(-[0-9]+)?");

    private final NativeFiles files;
    private final String path;
    private final ClosedRights rights;
    private final Way way;
    /** The innermost comes first. */
    private final Deque<Held> held = new ArrayDeque<>();
    private String ownSecurity = "";
    private boolean made;
    private String marker;

    /** A folder that is held open; its path is relative to the target. */
    private record Held(String folder, long file) {
    }

    private RestoreTarget(NativeFiles files, String path, ClosedRights rights) {
        this.files = files;
        this.path = path;
        this.rights = rights;
        this.way = Way.belowPlain(files, path);
    }

    /**
     * Requires that a path can become a target: nothing is there, or an empty folder.
     *
     * @throws ClientException when it cannot
     */
    static void requireUsable(NativeFiles files, String path) {
        if (!files.exists(path)) {
            return;
        }
        List<WinFile> found = Folders.entries(files, path, "target");
        if (isUnfinished(found)) {
            throw new ClientException("The target " + Escapes.printable(path) + " holds a restore that was not"
                    + " finished; a restore needs a new or an empty folder.");
        }
        if (!Folders.isEmpty(path, found)) {
            throw new ClientException("The target " + Escapes.printable(path) + " exists and is not empty.");
        }
        if (!Way.isPlainFolder(files, path)) {
            throw new ClientException("The target " + Escapes.printable(path) + " is a link or a mounted volume; a"
                    + " restore needs a folder itself.");
        }
    }

    /** Tells from what a folder holds whether a restore into it was not finished. */
    static boolean isUnfinished(List<WinFile> found) {
        return found.stream().anyMatch(entry -> isMarker(entry.getName()));
    }

    /** Tells whether a path relative to a target is that of a marker. */
    static boolean isMarker(String relative) {
        return MARKERS.matcher(relative).matches();
    }

    /**
     * Makes the target, or closes the one that is there, and puts the marker into it.
     *
     * @param rights those of a closed folder, null when the target is to stay as open as it is
     * @param names what is going to be at the top of the target, in lower case
     * @throws ClientException when that fails; what was made is removed then, and what was closed opened again
     */
    static RestoreTarget prepare(NativeFiles files, String path, ClosedRights rights, Set<String> names) {
        RestoreTarget target = new RestoreTarget(files, path, rights);
        try {
            target.makeOrTake();
            target.mark(names);
            return target;
        } catch (IOException e) {
            throw target.giveUp(new ClientException("The target " + Escapes.printable(path)
                    + " cannot be restored into: " + Reasons.of(e), e));
        } catch (ClientException e) {
            throw target.giveUp(e);
        }
    }

    private void makeOrTake() throws IOException {
        if (rights == null) {
            made = Folders.makeIfMissing(files, path, "target");
            hold("");
        } else {
            made = Folders.makeClosedIfMissing(files, path, "target");
            closeToOthers();
            hold("");
            // Only now nobody can put another one in its place.
            requireClosed();
        }
        List<WinFile> found = Folders.entries(files, path, "target");
        if (isUnfinished(found)) {
            leaveToAnotherRestore();
        }
        if (!Way.isPlainFolder(files, path) || !Folders.isEmpty(path, found)) {
            throw new IOException("somebody else is changing it");
        }
    }

    /** Leaves the target closed: another restore has begun in it, which must not find it open. */
    private void leaveToAnotherRestore() {
        ownSecurity = "";
    }

    private void closeToOthers() {
        try {
            if (made) {
                rights.closeMade(path);
            } else {
                ownSecurity = rights.closeExisting(path);
            }
        } catch (IOException e) {
            throw staysOpen(e);
        }
    }

    private void requireClosed() {
        try {
            rights.requireClosed(path);
        } catch (IOException e) {
            throw staysOpen(e);
        }
    }

    private ClientException staysOpen(IOException e) {
        return new ClientException("The target " + Escapes.printable(path) + " cannot be closed to others while it is"
                + " restored into: " + Reasons.of(e) + "; --no-security restores without owners and rights, and leaves"
                + " it open.", e);
    }

    private void mark(Set<String> names) throws IOException {
        String name = MARKER;
        for (int i = 2; names.contains(name); i++) {
            name = MARKER + "-" + i;
        }
        String text = "The restore into this folder is not finished.\n"
                + (ownSecurity.isEmpty() ? "" : "To give the folder its own rights back, set " + ownSecurity + "\n");
        String place = Names.join(path, name);
        try (NativeOutputStream out = createMarker(place)) {
            marker = place;
            out.write(text.getBytes(StandardCharsets.UTF_8));
            out.finish();
        }
    }

    private NativeOutputStream createMarker(String place) throws IOException {
        try {
            return new NativeOutputStream(files, place);
        } catch (IOException e) {
            if (files.exists(place)) {
                leaveToAnotherRestore();
            }
            throw e;
        }
    }

    /** Leaves what was there as it was, as nothing has been restored yet; gives the reason, and what could not be. */
    private ClientException giveUp(ClientException reason) {
        boolean atItsPlace = Way.isPlainFolder(files, path);
        if (marker != null && atItsPlace) {
            files.delete(marker);
        }
        try {
            putBackOwnSecurity();
            return reason;
        } catch (IOException e) {
            return new ClientException(reason.getMessage() + " The folder's own rights cannot be put back to "
                    + Escapes.printable(ownSecurity) + ": " + Reasons.of(e), reason);
        } finally {
            close();
            if (made && atItsPlace) {
                files.deleteEmptyDirectory(path);
            }
        }
    }

    private void putBackOwnSecurity() throws IOException {
        if (!ownSecurity.isEmpty()) {
            Descriptor own = Descriptor.parse(ownSecurity);
            files.setSecurity(path, own.parts(), own.text());
        }
    }

    /** Tells whether nobody else can read what is made below it, whatever it is made of. */
    boolean isClosed() {
        return rights != null;
    }

    /** Gives what has to be set to give a folder its own rights back, empty when it was made or never closed. */
    String ownSecurity() {
        return ownSecurity;
    }

    /** Gives the place of something that is restored, from its path relative to the target. */
    String place(String relative) {
        return Names.join(path, relative);
    }

    /**
     * Requires that a folder of the target still is where it was made, and holds it open until another branch of the
     * tree is entered. Before anything is made, changed or removed in it, this must be asked again: a system that
     * follows links does not keep everybody from renaming what is held.
     *
     * @param folder relative to the target, empty for the target itself
     * @throws IOException when the folder, or one on the way to it, was replaced or cannot be opened
     */
    void requireWayTo(String folder) throws IOException {
        requireStillClosed();
        holdDownTo(folder);
        requirePlain(folder);
    }

    /** Whoever had a folder open before it was closed may still be able to change its rights. */
    private void requireStillClosed() {
        if (rights == null || made) {
            return;
        }
        try {
            rights.requireClosed(path);
        } catch (IOException e) {
            throw new ClientException("Somebody is changing the rights of the target " + Escapes.printable(path)
                    + ", and the restore is not finished: " + Reasons.of(e), e);
        }
    }

    /** As {@link #requireWayTo}, without holding the folder: some changes to a folder need it closed. */
    void requirePlain(String folder) throws IOException {
        way.require(folder);
    }

    /** Tells whether something in the target is a plain folder. */
    boolean isPlain(String folder) {
        return Way.isPlainFolder(files, place(folder));
    }

    private void holdDownTo(String folder) throws IOException {
        releaseBesides(folder);
        String inner = held.peek().folder();
        while (inner.length() < folder.length()) {
            int separator = folder.indexOf('\\', inner.length() + 1);
            inner = separator < 0 ? folder : folder.substring(0, separator);
            hold(inner);
        }
    }

    /** Lets go of the folders that are not on the way to this one; the target itself is on every way. */
    void releaseBesides(String folder) {
        while (!held.isEmpty() && !isOnTheWay(held.peek().folder(), folder)) {
            files.close(held.pop().file());
        }
    }

    private static boolean isOnTheWay(String outer, String folder) {
        return outer.isEmpty() || folder.equals(outer) || folder.startsWith(outer + "\\");
    }

    private void hold(String folder) throws IOException {
        held.push(new Held(folder, files.hold(place(folder))));
    }

    /** Runs something that needs the target not to be held. */
    void whileReleased(Runnable body) throws IOException {
        close();
        body.run();
        hold("");
        requirePlain("");
        if (rights != null) {
            rights.requireClosed(path);
        }
    }

    /** Removes the marker: everything below the target is finished. */
    void unmark() throws IOException {
        requireWayTo("");
        if (!files.delete(marker)) {
            throw new IOException("its marker " + Escapes.printable(marker) + " cannot be removed");
        }
    }

    /** Says how a restore that ended early has left the target. */
    String leftBehind() {
        return Escapes.printable(path) + " holds a restore that was not finished; " + (isClosed()
                ? "what was not finished in it is closed to others."
                : "it is as open as its folder.")
                + (ownSecurity.isEmpty() ? "" : " " + Escapes.printable(marker) + " has the folder's own rights.");
    }

    @Override
    public void close() {
        while (!held.isEmpty()) {
            files.close(held.pop().file());
        }
    }
}
