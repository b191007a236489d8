package com.qarvo.winutil.backup;

import java.io.IOException;
import java.io.OutputStream;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;
import java.util.HexFormat;

/** Writes a manifest entry by entry. It is only complete after {@link #end}. */
final class ManifestWriter {
    private final OutputStream out;
    private final MessageDigest digest = Digests.sha256();
    private long entries;

    ManifestWriter(OutputStream out) throws IOException {
        this.out = out;
        line(ManifestFormat.HEADER);
        line(ManifestFormat.COLUMNS);
    }

    void add(ManifestEntry entry) throws IOException {
        line(ManifestFormat.write(entry));
        entries++;
    }

    /** Writes the last line, by which a reader sees that nothing is missing. The stream stays open. */
    void end() throws IOException {
        String sum = HexFormat.of().formatHex(digest.digest());
        line(String.join("\t", ManifestFormat.END, Long.toString(entries), sum));
        out.flush();
    }

    private void line(String text) throws IOException {
        byte[] bytes = (text + "\n").getBytes(StandardCharsets.UTF_8);
        digest.update(bytes);
        out.write(bytes);
    }
}
