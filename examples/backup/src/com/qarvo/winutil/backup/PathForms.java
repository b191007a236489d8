package com.qarvo.winutil.backup;

/** The two forms of an absolute path: the classic one, and the extended one that the system takes as it is. */
final class PathForms {
    private static final String EXTENDED = "\\\\?\\";
    private static final String EXTENDED_UNC = "\\\\?\\UNC\\";
    private static final String DEVICE = "\\\\.\\";
    private static final int CLASSIC_LIMIT = 248;

    private PathForms() {
    }

    static String extended(String path) {
        if (path.startsWith(EXTENDED)) {
            return path;
        }
        return path.startsWith("\\\\") ? EXTENDED_UNC + path.substring(2) : EXTENDED + path;
    }

    /**
     * Gives the classic form, which a listing needs; it brings that to the extended one itself.
     *
     * @throws ClientException when there is none: without its prefix the name of a volume would be a relative path
     */
    static String classic(String path) {
        if (path.regionMatches(true, 0, EXTENDED_UNC, 0, EXTENDED_UNC.length())) {
            return "\\\\" + path.substring(EXTENDED_UNC.length());
        }
        boolean extended = path.startsWith(EXTENDED);
        String plain = extended ? path.substring(EXTENDED.length()) : path;
        if (path.startsWith(DEVICE) || extended && !plain.matches("(?s)[A-Za-z]:\\\\.*")) {
            throw new ClientException(Escapes.printable(path) + " cannot be used: it takes a path that begins with a"
                    + " drive letter, or that of a share.");
        }
        return plain;
    }

    static boolean needsExtended(String path) {
        return path.length() >= CLASSIC_LIMIT || hasTrailingDotOrSpace(path);
    }

    /** Tells whether any component ends as the classic form does not allow. */
    static boolean hasTrailingDotOrSpace(String path) {
        return path.endsWith(".") || path.endsWith(" ") || path.contains(".\\") || path.contains(" \\");
    }
}
