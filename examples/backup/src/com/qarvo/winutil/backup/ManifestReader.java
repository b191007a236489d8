package com.qarvo.winutil.backup;

import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.HexFormat;
import java.util.List;
import java.util.Map;

/**
 * Reads a whole manifest before anything is done with it. It may be damaged or written by an enemy, so that an entry
 * is only accepted when its directory came before it as a real directory: no link can stand in the middle of a path.
 */
final class ManifestReader {
    // More than a path and a descriptor of the greatest length need, each character escaped.
    private static final int LONGEST_LINE = 1 << 20;

    private final InputStream in;
    private final MessageDigest digest = Digests.sha256();
    private final ByteArrayOutputStream line = new ByteArrayOutputStream();
    private final Map<String, Type> seen = new HashMap<>();
    private final List<ManifestEntry> entries = new ArrayList<>();
    private int lineNumber;

    private ManifestReader(InputStream in) {
        this.in = in;
    }

    /**
     * Reads a manifest.
     *
     * @param in a buffered stream
     * @return its entries, the source itself first and each directory before what it holds
     * @throws IOException with a message that names the line at fault
     */
    static List<ManifestEntry> read(InputStream in) throws IOException {
        ManifestReader reader = new ManifestReader(in);
        try {
            reader.readAll();
        } catch (IOException e) {
            throw new IOException("line " + reader.lineNumber + ": " + e.getMessage(), e);
        }
        return reader.entries;
    }

    private void readAll() throws IOException {
        readHeader();
        String text = nextLine();
        while (!text.startsWith(ManifestFormat.END + "\t")) {
            if (!text.startsWith("#")) {
                add(ManifestFormat.read(text));
            }
            digestLine();
            text = nextLine();
        }
        checkEnd(text);
    }

    private void readHeader() throws IOException {
        String header = nextLine();
        if (!header.startsWith(ManifestFormat.NAME + " ")) {
            throw new IOException("this is not the manifest of a backup");
        }
        if (!header.equals(ManifestFormat.HEADER)) {
            throw new IOException("this format is not known, it may be that of a newer version");
        }
        digestLine();
    }

    private void add(ManifestEntry entry) throws IOException {
        if (entry.path().isEmpty() != entries.isEmpty()) {
            throw new IOException("the first entry, and no other, must be the source itself");
        }
        if (!entry.path().isEmpty() && seen.get(Names.parent(entry.path())) != Type.DIRECTORY) {
            throw new IOException("it lies in no directory that came before it");
        }
        if (seen.put(entry.path(), entry.type()) != null) {
            throw new IOException("its path came before");
        }
        entries.add(entry);
    }

    private void checkEnd(String text) throws IOException {
        String expected = String.join("\t", ManifestFormat.END, Integer.toString(entries.size()),
                HexFormat.of().formatHex(digest.digest()));
        if (!text.equals(expected)) {
            throw new IOException("count or checksum are wrong, so that something was changed or is missing");
        }
        if (in.read() >= 0) {
            throw new IOException("something follows the last line");
        }
        if (entries.isEmpty()) {
            throw new IOException("it has no entries");
        }
    }

    private void digestLine() {
        digest.update(line.toByteArray());
        digest.update((byte) '\n');
    }

    private String nextLine() throws IOException {
        lineNumber++;
        line.reset();
        int next = in.read();
        while (next != '\n') {
            if (next < 0) {
                throw new IOException("the file ends here, its last part is missing");
            }
            if (line.size() == LONGEST_LINE) {
                throw new IOException("the line is too long");
            }
            line.write(next);
            next = in.read();
        }
        return decode(line.toByteArray());
    }

    private static String decode(byte[] bytes) throws IOException {
        try {
            return StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes)).toString();
        } catch (CharacterCodingException e) {
            throw new IOException("the line is not UTF-8", e);
        }
    }
}
