package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** The checks on folders that stand at the beginning of a command. Each ends it with one sentence. */
final class Folders {
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

    /** Makes one folder when nothing is there. */
    static void makeIfMissing(NativeFiles files, String path, String role) {
        if (files.exists(path)) {
            return;
        }
        String shown = Escapes.printable(path);
        String parent = path.substring(0, Math.max(path.lastIndexOf('\\'), 0));
        if (!files.exists(parent + "\\")) {
            throw new ClientException("The " + role + " " + shown + " cannot be made, because the folder "
                    + Escapes.printable(parent) + " does not exist.");
        }
        try {
            if (!files.makeDirectory(path)) {
                throw new ClientException("The " + role + " " + shown + " cannot be made: something of that name is"
                        + " there.");
            }
        } catch (IOException | SecurityException e) {
            throw new ClientException("The " + role + " " + shown + " cannot be made: " + Reasons.of(e), e);
        }
    }
}
