package com.qarvo.kel.util;

import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/**
 * Gathers the entries of a directory: make one, pass it to {@link WindowsUtil#listWinFiles} as the collector, and read
 * {@link #files}.
 *
 * <p>A listing keeps nothing itself, so a caller that wants to handle entries one at a time, without holding them all,
 * overrides {@link #addFile}, or passes an object of any other class that has a method of that name and signature.
 *
 * <p>An instance is not safe for use by several threads at once.
 */
public class WinFileList {
    private final List<WinFile> files = new ArrayList<>();

    /** Makes an empty list. */
    public WinFileList() {
    }

    /**
     * Takes one entry; a listing calls it once for each. An exception thrown here ends the listing and reaches its
     * caller.
     *
     * @param path the directory as it was given to the listing, a backslash unless it ends in one, and the name
     * @param directory whether the entry is a directory, a link to one included
     * @param size the size in bytes, 0 for a directory
     * @param lastModified the time of the last write, in milliseconds since 1970-01-01 UTC
     * @param attributes the Win32 attribute word, 0 when attributes were not asked for
     * @param securityDescriptor owner, group and DACL as SDDL text, empty when not asked for or not readable
     * @param reparsePoint whether the entry is a reparse point; always false when attributes were not asked for
     */
    public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
            String securityDescriptor, boolean reparsePoint) {
        files.add(new WinFile(path, directory, size, lastModified, attributes, securityDescriptor, reparsePoint));
    }

    /**
     * Gives the entries added so far.
     *
     * @return the entries in the order in which they were added; a view that cannot be changed
     */
    public List<WinFile> files() {
        return Collections.unmodifiableList(files);
    }

    /** One file or directory as it was found; immutable. */
    public static class WinFile {
        /** Link kind of a plain directory, of a mounted volume, and of a directory with any other reparse tag. */
        public static final byte DIRECTORY = 0;
        /** Link kind of a plain file, and of a file with a reparse tag that is not a symbolic link. */
        public static final byte FILE = 2;
        /** Link kind of a directory junction that does not mount a volume. */
        public static final byte JUNCTION = 16;
        /** Link kind of a symbolic link to a file. */
        public static final byte FILE_SYMBOLIC_LINK = 17;
        /** Link kind of a symbolic link to a directory. */
        public static final byte DIRECTORY_SYMBOLIC_LINK = 18;

        private final String path;
        private final boolean directory;
        private final long size;
        private final long lastModified;
        private final int attributes;
        private final String securityDescriptor;
        private final boolean reparsePoint;
        private final byte linkKind;
        private final String linkTarget;

        /**
         * Makes a record that knows what kind of link it is; {@link WindowsUtil#WinFile} makes these.
         *
         * @param path the path as it was asked for
         * @param directory whether it is a directory, a link to one included
         * @param size the size in bytes
         * @param lastModified the time of the last write, in milliseconds since 1970-01-01 UTC
         * @param attributes the Win32 attribute word
         * @param securityDescriptor owner, group and DACL as SDDL text, or empty
         * @param linkKind one of the link kinds above
         * @param linkTarget where the link leads, empty for what is no link
         */
        public WinFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, byte linkKind, String linkTarget) {
            this(path, directory, size, lastModified, attributes, securityDescriptor,
                    (attributes & Win32.FILE_ATTRIBUTE_REPARSE_POINT) != 0, linkKind, linkTarget);
        }

        /**
         * Makes a record that knows only whether it is a reparse point; a listing makes these. Its link kind is
         * {@link #DIRECTORY} or {@link #FILE}, its link target empty.
         *
         * @param path the directory listed, and the name
         * @param directory whether it is a directory, a link to one included
         * @param size the size in bytes
         * @param lastModified the time of the last write, in milliseconds since 1970-01-01 UTC
         * @param attributes the Win32 attribute word, or 0
         * @param securityDescriptor owner, group and DACL as SDDL text, or empty
         * @param reparsePoint whether it is a reparse point
         */
        public WinFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint) {
            this(path, directory, size, lastModified, attributes, securityDescriptor, reparsePoint,
                    directory ? DIRECTORY : FILE, "");
        }

        private WinFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint, byte linkKind, String linkTarget) {
            this.path = path;
            this.directory = directory;
            this.size = size;
            this.lastModified = lastModified;
            this.attributes = attributes;
            this.securityDescriptor = securityDescriptor;
            this.reparsePoint = reparsePoint;
            this.linkKind = linkKind;
            this.linkTarget = linkTarget;
        }

        /**
         * Gives the path.
         *
         * @return the path
         */
        public String getPath() {
            return path;
        }

        /**
         * Gives the last component of the path.
         *
         * @return the text behind the last backslash, the whole path when it has none
         */
        public String getName() {
            return path.substring(path.lastIndexOf('\\') + 1);
        }

        /**
         * Tells whether this is a directory.
         *
         * @return true for directories, junctions and links to directories
         */
        public boolean isDirectory() {
            return directory;
        }

        /**
         * Gives the size.
         *
         * @return the size in bytes
         */
        public long getSize() {
            return size;
        }

        /**
         * Gives the time of the last write.
         *
         * @return milliseconds since 1970-01-01 UTC
         */
        public long getLastModified() {
            return lastModified;
        }

        /**
         * Gives the attribute word; {@link Win32} names its bits.
         *
         * @return the Win32 attribute word, 0 when a listing was not asked for attributes
         */
        public int getAttributes() {
            return attributes;
        }

        /**
         * Gives the security descriptor.
         *
         * @return owner, group and DACL as SDDL text; empty when not asked for or not readable
         */
        public String getSecurityDescriptor() {
            return securityDescriptor;
        }

        /**
         * Tells whether this is a reparse point of any kind.
         *
         * @return true for links, mounted volumes and all other reparse points
         */
        public boolean isReparsePoint() {
            return reparsePoint;
        }

        /**
         * Gives the kind of link. A record that came from a listing does not know it and answers
         * {@link #DIRECTORY} or {@link #FILE}: for its reparse points ask {@link WindowsUtil#WinFile} again.
         *
         * @return one of the link kinds above
         */
        public byte getLinkKind() {
            return linkKind;
        }

        /**
         * Tells whether this is a junction or a symbolic link, as far as the link kind says.
         *
         * @return true for {@link #JUNCTION}, {@link #FILE_SYMBOLIC_LINK} and {@link #DIRECTORY_SYMBOLIC_LINK}
         */
        public boolean isLink() {
            return linkKind == JUNCTION || linkKind == FILE_SYMBOLIC_LINK || linkKind == DIRECTORY_SYMBOLIC_LINK;
        }

        /**
         * Gives the target of the link.
         *
         * @return the target, relative for a link that was made so; empty for what is no link
         */
        public String getLinkTarget() {
            return linkTarget;
        }

        @Override
        public String toString() {
            return path;
        }
    }
}
