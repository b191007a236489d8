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

    Way(NativeFiles files, String top) {
        this.files = files;
        this.top = top;
    }

    /**
     * Requires that a folder, and each one above it below the top, is a plain folder. The top itself is not looked at.
     *
     * @param folder relative to the top, empty for the top
     * @throws IOException when one is not, with a message that names it
     */
    void require(String folder) throws IOException {
        for (int end = 0; end < folder.length(); end++) {
            end = endOfName(folder, end);
            String path = Names.join(top, folder.substring(0, end));
            if (!isPlainFolder(path)) {
                throw new IOException("the folder " + Escapes.printable(path)
                        + " was replaced meanwhile, or is no longer there");
            }
        }
    }

    /** Tells whether a path is that of a real folder: no link, no mounted volume but the root of a drive. */
    boolean isPlainFolder(String path) {
        int attributes = files.attributes(path);
        return attributes != Win32.INVALID_FILE_ATTRIBUTES && (attributes & Win32.FILE_ATTRIBUTE_DIRECTORY) != 0
                && (!Attributes.isReparsePoint(attributes) || Folders.isRoot(path));
    }

    private static int endOfName(String path, int start) {
        int separator = path.indexOf('\\', start);
        return separator < 0 ? path.length() : separator;
    }
}
