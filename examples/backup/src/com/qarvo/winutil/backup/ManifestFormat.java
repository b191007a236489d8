package com.qarvo.winutil.backup;

import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.io.IOException;
import java.time.DateTimeException;
import java.time.Instant;
import java.util.HexFormat;

/**
 * The text of a manifest: UTF-8, lines ended by one line feed, fields separated by one tab.
 *
 * <pre>
 * winutil-backup 1
 * # type  path  size  modified  attributes  sha256  content  link-target  security
 * directory  .  0  2024-05-01T10:00:00.123Z  0x00000010  -  0  -  O:BAG:SYD:(A;;FA;;;SY)
 * file  docs/a.txt  5  2024-05-01T09:59:58Z  0x00000020  2cf2...  1  -  O:BAG:SYD:(A;;FA;;;SY)
 * end  2  SHA-256 of everything above this line
 * </pre>
 *
 * A path has slashes and is "." for the source itself; an empty field is written as a hyphen. A later version of the
 * format gets another number in the first line. Without its last line a manifest is cut off.
 */
final class ManifestFormat {
    static final String NAME = "winutil-backup";
    static final String HEADER = NAME + " 1";
    static final String COLUMNS = "# type\tpath\tsize\tmodified\tattributes\tsha256\tcontent\tlink-target\tsecurity";
    static final String END = "end";

    private static final String TOP = ".";
    private static final String NOTHING = "-";
    private static final int FIELDS = 9;
    private static final int ATTRIBUTE_DIGITS = 8;
    private static final int HASH_DIGITS = 64;

    private ManifestFormat() {
    }

    static String write(ManifestEntry entry) {
        return String.join("\t",
                entry.type().word(),
                entry.path().isEmpty() ? TOP : Escapes.escape(entry.path().replace('\\', '/')),
                Long.toString(entry.size()),
                Instant.ofEpochMilli(entry.modified()).toString(),
                "0x" + HexFormat.of().withUpperCase().toHexDigits(entry.attributes()),
                field(entry.sha256()),
                Long.toString(entry.content()),
                field(entry.linkTarget()),
                field(entry.security()));
    }

    /** Reads one line; what it says is well-formed, but not yet known to fit the lines before it. */
    static ManifestEntry read(String line) throws IOException {
        String[] fields = line.split("\t", -1);
        if (fields.length != FIELDS) {
            throw new IOException("it has " + fields.length + " fields instead of " + FIELDS);
        }
        Type type = Type.ofWord(fields[0]);
        if (type == null) {
            throw new IOException("unknown type");
        }
        ManifestEntry entry = new ManifestEntry(type, path(fields[1]), number(fields[2]), time(fields[3]),
                attributes(fields[4]), hash(fields[5]), number(fields[6]), text(fields[7]), text(fields[8]));
        String problem = problemOf(entry);
        if (problem != null) {
            throw new IOException(problem);
        }
        return entry;
    }

    private static String problemOf(ManifestEntry entry) {
        boolean file = entry.type() == Type.FILE;
        if (entry.path().isEmpty() && entry.type() != Type.DIRECTORY) {
            return "the source itself is not a directory";
        }
        if (file == entry.sha256().isEmpty()) {
            return "a SHA-256 is missing, or stands where none belongs";
        }
        if (!file && entry.size() != 0 || (entry.content() == 0) != (entry.size() == 0)) {
            return "size and content do not fit each other";
        }
        return entry.type().isLink() == entry.linkTarget().isEmpty()
                ? "a link target is missing, or stands where none belongs" : null;
    }

    /** Writes a field; a text that is a hyphen itself must not look like an empty one. */
    private static String field(String text) {
        if (text.isEmpty()) {
            return NOTHING;
        }
        return text.equals(NOTHING) ? "\\u002D" : Escapes.escape(text);
    }

    private static String text(String field) throws IOException {
        return field.equals(NOTHING) ? "" : Escapes.unescape(field);
    }

    /** Reads a path that may come from anyone: one that could lead out of a target folder is refused. */
    private static String path(String field) throws IOException {
        if (field.equals(TOP)) {
            return "";
        }
        String path = Escapes.unescape(field);
        if (path.indexOf('\\') >= 0) {
            throw new IOException("its path holds a backslash");
        }
        path = path.replace('/', '\\');
        String problem = Names.problemOfPath(path);
        if (problem != null) {
            throw new IOException("its path is not allowed, " + problem);
        }
        return path;
    }

    private static long number(String field) throws IOException {
        if (!field.matches("0|[1-9][0-9]{0,18}")) {
            throw new IOException("a number is malformed");
        }
        try {
            return Long.parseLong(field);
        } catch (NumberFormatException e) {
            throw new IOException("a number is too large", e);
        }
    }

    private static long time(String field) throws IOException {
        try {
            return Instant.parse(field).toEpochMilli();
        } catch (DateTimeException | ArithmeticException e) {
            throw new IOException("its time is malformed", e);
        }
    }

    private static int attributes(String field) throws IOException {
        if (!field.startsWith("0x") || field.length() != 2 + ATTRIBUTE_DIGITS) {
            throw new IOException("its attribute word is malformed");
        }
        try {
            return HexFormat.fromHexDigits(field, 2, field.length());
        } catch (IllegalArgumentException e) {
            throw new IOException("its attribute word is malformed", e);
        }
    }

    private static String hash(String field) throws IOException {
        if (field.equals(NOTHING)) {
            return "";
        }
        if (!field.matches("[0-9a-f]{" + HASH_DIGITS + "}")) {
            throw new IOException("its SHA-256 is malformed");
        }
        return field;
    }
}
