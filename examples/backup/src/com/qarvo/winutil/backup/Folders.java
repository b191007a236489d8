package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.Set;

/** The checks on folders that stand at the beginning of a command. Each ends it with one sentence. */
final class Folders {
    private static final Set<String> OF_THE_SYSTEM = Set.of("system volume information", "$recycle.bin");

    private Folders() {
    }

    /** Gives the entry of a folder that must be there; the role is the word for it in the sentence. */
    static WinFile requireFolder(NativeFiles files, String path, String role) {
        WinFile found;
        try {
            if (!files.exists(path)) {
                throw new ClientException("The " + role + " " + Escapes.printable(path) + " does not exist.");
            }
            found = files.entry(path, false);
        } catch (IOException e) {
            throw new ClientException("The " + role + " " + Escapes.printable(path) + " cannot be reached: "
                    + Reasons.of(e), e);
        }
        if (!found.isDirectory()) {
            throw new ClientException("The " + role + " " + Escapes.printable(path) + " is not a folder.");
        }
        return found;
    }

    /** Lists a folder that must be there, without descriptors. */
    static List<WinFile> entries(NativeFiles files, String path, String role) {
        requireFolder(files, path, role);
        List<WinFile> found = new ArrayList<>();
        try {
            files.list(path, false, found::add, (entry, reason) -> { });
        } catch (IOException e) {
            throw new ClientException("The " + role + " " + Escapes.printable(path) + " cannot be listed: "
                    + Reasons.of(e), e);
        }
        return found;
    }

    /** Tells whether a path is that of the root of a drive. */
    static boolean isRoot(String path) {
        return path.endsWith(":\\");
    }

    /** Tells from what a folder holds whether it is empty; the root of a drive never is without the system's own. */
    static boolean isEmpty(String path, List<WinFile> found) {
        return found.stream().allMatch(entry -> isRoot(path) && OF_THE_SYSTEM.contains(
                entry.getName().toLowerCase(Locale.ROOT)));
    }

    /** Makes one folder when nothing is there; tells whether it was made. */
    static boolean makeIfMissing(NativeFiles files, String path, String role) {
        return makeIfMissing(files, path, role, files::makeDirectory);
    }

    /** As {@link #makeIfMissing}, with rights for nobody, which its maker has to change. */
    static boolean makeClosedIfMissing(NativeFiles files, String path, String role) {
        return makeIfMissing(files, path, role, files::makeClosedDirectory);
    }

    private interface Maker {
        boolean make(String path) throws IOException;
    }

    private static boolean makeIfMissing(NativeFiles files, String path, String role, Maker maker) {
        if (files.exists(path)) {
            return false;
        }
        String shown = Escapes.printable(path);
        String parent = path.substring(0, Math.max(path.lastIndexOf('\\'), 0));
        if (!files.exists(parent + "\\")) {
            throw new ClientException("The " + role + " " + shown + " cannot be made, because the folder "
                    + Escapes.printable(parent) + " does not exist.");
        }
        try {
            if (!maker.make(path)) {
                throw new ClientException("The " + role + " " + shown + " cannot be made: something of that name is"
                        + " there.");
            }
            return true;
        } catch (IOException | SecurityException e) {
            throw new ClientException("The " + role + " " + shown + " cannot be made: " + Reasons.of(e), e);
        }
    }
}
