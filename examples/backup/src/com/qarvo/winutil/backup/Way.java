package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import java.io.IOException;

/**
 * The folders on the way from the top of a tree down to something in it. Everything goes by path, so that whoever puts
 * a link in the place of one of them leads all below it elsewhere: they are looked at again and again.
 */
final class Way {
    private final NativeFiles files;
    private final String top;
    private final boolean linkAtTop;

    private Way(NativeFiles files, String top, boolean linkAtTop) {
        this.files = files;
        this.top = top;
        this.linkAtTop = linkAtTop;
    }

    /** Prepares for a tree. Its top may be a link, as whoever named it wanted, and must stay what it is. */
    static Way below(NativeFiles files, String top) {
        return new Way(files, top, Attributes.isReparsePoint(files.attributes(top)));
    }

    /** Prepares for a tree whose top must be a plain folder. */
    static Way belowPlain(NativeFiles files, String top) {
        return new Way(files, top, false);
    }

    /**
     * Requires that a folder, and each one above it up to the top, is the plain folder that it was.
     *
     * @param folder relative to the top, empty for the top
     * @throws IOException when one is not, with a message that names it
     */
    void require(String folder) throws IOException {
        require(top, linkAtTop);
        for (int end = 0; end < folder.length(); end++) {
            end = endOfName(folder, end);
            require(Names.join(top, folder.substring(0, end)), false);
        }
    }

    private void require(String path, boolean link) throws IOException {
        if (!isFolder(files, path, link)) {
            throw new IOException("the folder " + Escapes.printable(path)
                    + " was replaced meanwhile, or is no longer there");
        }
    }

    /** Tells whether a path is that of a real folder: no link, no mounted volume but the root of a drive. */
    static boolean isPlainFolder(NativeFiles files, String path) {
        return isFolder(files, path, false);
    }

    private static boolean isFolder(NativeFiles files, String path, boolean link) {
        int attributes = files.attributes(path);
        return attributes != Win32.INVALID_FILE_ATTRIBUTES && (attributes & Win32.FILE_ATTRIBUTE_DIRECTORY) != 0
                && (Attributes.isReparsePoint(attributes) == link || Folders.isRoot(path));
    }

    private static int endOfName(String path, int start) {
        int separator = path.indexOf('\\', start);
        return separator < 0 ? path.length() : separator;
    }
}
