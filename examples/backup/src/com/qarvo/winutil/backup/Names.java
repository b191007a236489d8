package com.qarvo.winutil.backup;

import java.util.Locale;
import java.util.Set;

/** Paths inside a backup: relative, components separated by a backslash, empty for the top. */
final class Names {
    private static final String FORBIDDEN = "\\/:*?\"<>|";
    private static final Set<String> DEVICES = Set.of("CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$");
    // A digit of a serial or parallel port may also be one of these three superscripts.
    private static final String PORT_DIGITS = "0123456789\u00B9\u00B2\u00B3";

    private Names() {
    }

    static String join(String directory, String name) {
        if (name.isEmpty() || directory.isEmpty()) {
            return directory + name;
        }
        return directory.endsWith("\\") ? directory + name : directory + "\\" + name;
    }

    /** Gives the directory part of a relative path, empty for what lies at the top. */
    static String parent(String path) {
        int separator = path.lastIndexOf('\\');
        return separator < 0 ? "" : path.substring(0, separator);
    }

    /**
     * Says why a name must not be used below a target folder, null when it may. One rule for both directions: what
     * a restore would refuse as dangerous, a backup reports instead of storing.
     */
    static String problemOf(String name) {
        if (name.isEmpty()) {
            return "it has an empty name";
        }
        if (name.chars().allMatch(c -> c == '.' || c == ' ')) {
            return "its name consists of dots and spaces only";
        }
        if (name.chars().anyMatch(c -> c < ' ' || FORBIDDEN.indexOf(c) >= 0)) {
            return "its name holds a character that Windows does not allow in names";
        }
        return isDevice(name) ? "its name is that of a device" : null;
    }

    /** As {@link #problemOf}, for each component of a relative path. */
    static String problemOfPath(String path) {
        for (String name : path.split("\\\\", -1)) {
            String problem = problemOf(name);
            if (problem != null) {
                return problem;
            }
        }
        return null;
    }

    /** Tells whether one path is the other or lies inside it; both are absolute. Case does not count. */
    static boolean isInside(String path, String directory) {
        String inner = withSeparator(path);
        String outer = withSeparator(directory);
        return inner.regionMatches(true, 0, outer, 0, outer.length());
    }

    private static String withSeparator(String path) {
        return path.endsWith("\\") ? path : path + "\\";
    }

    private static boolean isDevice(String name) {
        int dot = name.indexOf('.');
        String stem = (dot < 0 ? name : name.substring(0, dot)).stripTrailing().toUpperCase(Locale.ROOT);
        boolean port = stem.length() == 4 && (stem.startsWith("COM") || stem.startsWith("LPT"))
                && PORT_DIGITS.indexOf(stem.charAt(3)) >= 0;
        return port || DEVICES.contains(stem);
    }
}
