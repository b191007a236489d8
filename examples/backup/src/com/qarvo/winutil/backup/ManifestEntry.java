package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.TreeWalk.Found;

/**
 * What a backup knows of one file, directory or link.
 *
 * @param type what it is
 * @param path relative to the source, empty for the source itself
 * @param size bytes, 0 for all but files
 * @param modified time of the last write, in milliseconds since 1970-01-01 UTC
 * @param attributes the Win32 attribute word
 * @param sha256 of the content as 64 hexadecimal digits, empty for all but files
 * @param content number of the content in the store, 0 for empty files and all that is no file
 * @param linkTarget where a link leads, empty for what is no link
 * @param security owner, group and DACL as SDDL text; {@link #UNREAD} when they could not be read, empty when nobody
 *        asked for them
 */
record ManifestEntry(Type type, String path, long size, long modified, int attributes, String sha256, long content,
        String linkTarget, String security) {
    /** Stands for a security descriptor that could not be read; no descriptor looks like that. */
    static final String UNREAD = "unread";

    /** The kinds of entries, with the words that stand for them in a manifest. */
    enum Type {
        DIRECTORY("directory", WinFile.DIRECTORY),
        FILE("file", WinFile.FILE),
        JUNCTION("junction", WinFile.JUNCTION),
        FILE_LINK("file-link", WinFile.FILE_SYMBOLIC_LINK),
        DIRECTORY_LINK("directory-link", WinFile.DIRECTORY_SYMBOLIC_LINK);

        private final String word;
        private final byte linkKind;

        Type(String word, byte linkKind) {
            this.word = word;
            this.linkKind = linkKind;
        }

        String word() {
            return word;
        }

        byte linkKind() {
            return linkKind;
        }

        boolean isLink() {
            return this != DIRECTORY && this != FILE;
        }

        /** Gives the type of something that was found. */
        static Type of(WinFile found) {
            for (Type type : values()) {
                if (type.isLink() && type.linkKind == found.getLinkKind()) {
                    return type;
                }
            }
            return found.isDirectory() ? DIRECTORY : FILE;
        }

        /** Gives the type that a word stands for, null for any other word. */
        static Type ofWord(String word) {
            for (Type type : values()) {
                if (type.word.equals(word)) {
                    return type;
                }
            }
            return null;
        }
    }

    static ManifestEntry ofDirectory(Found found) {
        WinFile entry = found.entry();
        return new ManifestEntry(Type.DIRECTORY, found.path(), 0, entry.getLastModified(), entry.getAttributes(), "", 0,
                "", found.securityNoted());
    }

    static ManifestEntry ofLink(Found found) {
        WinFile entry = found.entry();
        return new ManifestEntry(Type.of(entry), found.path(), 0, entry.getLastModified(), entry.getAttributes(), "", 0,
                entry.getLinkTarget(), found.securityNoted());
    }

    boolean hasSecurity() {
        return !security.isEmpty();
    }

    boolean isSecurityUnread() {
        return security.equals(UNREAD);
    }

    /** Gives the same entry with another descriptor. */
    ManifestEntry withSecurity(String other) {
        return new ManifestEntry(type, path, size, modified, attributes, sha256, content, linkTarget, other);
    }
}
