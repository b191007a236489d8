package com.qarvo.kel.util;

/** The list as clients had it before records knew their link kind: only the older constructor. */
public class WinFileList {
    public static class WinFile {
        public final String path;
        public final boolean directory;
        public final long size;
        public final long lastModified;
        public final int attributes;
        public final String securityDescriptor;
        public final boolean reparsePoint;

        public WinFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint) {
            this.path = path;
            this.directory = directory;
            this.size = size;
            this.lastModified = lastModified;
            this.attributes = attributes;
            this.securityDescriptor = securityDescriptor;
            this.reparsePoint = reparsePoint;
        }
    }
}
