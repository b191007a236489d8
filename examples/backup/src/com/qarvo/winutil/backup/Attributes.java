package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;

/** What this client does with the Win32 attribute word. */
final class Attributes {
    /** The bits that a restore sets again. The others tell how the file system keeps a file. */
    static final int RESTORED = Win32.FILE_ATTRIBUTE_READONLY | Win32.FILE_ATTRIBUTE_HIDDEN
            | Win32.FILE_ATTRIBUTE_SYSTEM | Win32.FILE_ATTRIBUTE_ARCHIVE;

    /** Those among them that tell about the file; the archive bit only says who was backed up when. */
    static final int PLAIN = RESTORED & ~Win32.FILE_ATTRIBUTE_ARCHIVE;

    /** The bits of a file or directory that must be equal; of a link only the plain ones. */
    static final int COMPARED = PLAIN | Win32.FILE_ATTRIBUTE_COMPRESSED | Win32.FILE_ATTRIBUTE_ENCRYPTED;

    private static final int[] LETTER_BITS = {
        Win32.FILE_ATTRIBUTE_DIRECTORY, Win32.FILE_ATTRIBUTE_REPARSE_POINT, Win32.FILE_ATTRIBUTE_READONLY,
        Win32.FILE_ATTRIBUTE_HIDDEN, Win32.FILE_ATTRIBUTE_SYSTEM, Win32.FILE_ATTRIBUTE_ARCHIVE,
        Win32.FILE_ATTRIBUTE_COMPRESSED, Win32.FILE_ATTRIBUTE_ENCRYPTED,
    };
    private static final String LETTERS = "dlrhsace";

    private Attributes() {
    }

    static boolean isReparsePoint(int attributes) {
        return (attributes & Win32.FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    }

    static boolean isCompressed(int attributes) {
        return (attributes & Win32.FILE_ATTRIBUTE_COMPRESSED) != 0;
    }

    static boolean isEncrypted(int attributes) {
        return (attributes & Win32.FILE_ATTRIBUTE_ENCRYPTED) != 0;
    }

    /** Tells whether a new file or directory has these attributes already, so that nothing need be set. */
    static boolean isAsMade(int attributes, boolean directory) {
        return (attributes & RESTORED) == (directory ? 0 : Win32.FILE_ATTRIBUTE_ARCHIVE);
    }

    /** Gives one letter for each common attribute, a hyphen for each that is missing. */
    static String letters(int attributes) {
        StringBuilder text = new StringBuilder();
        for (int i = 0; i < LETTER_BITS.length; i++) {
            text.append((attributes & LETTER_BITS[i]) != 0 ? LETTERS.charAt(i) : '-');
        }
        return text.toString();
    }
}
