package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.io.IOException;

/**
 * Gives what a restore has made its time, attributes, owner and rights. Each of them can take away what the ones before
 * it need: compressing may change the time, a read-only file takes no time any more, and the rights may lock out this
 * process itself. So they come in this order.
 */
final class Metadata {
    /** 1601-01-01, where the system begins to count: asked to set it, it leaves the time as it is. */
    private static final long NO_TIME = -11_644_473_600_000L;

    private final NativeFiles files;
    private final Report report;
    private final boolean withSecurity;

    Metadata(NativeFiles files, Report report, boolean withSecurity) {
        this.files = files;
        this.report = report;
        this.withSecurity = withSecurity;
    }

    /** Finishes one file, directory or link; what cannot be set is reported. */
    void restore(ManifestEntry entry, String path) {
        // A link is opened through to be compressed or to have its rights set, which would change where it leads.
        boolean link = entry.type().isLink();
        boolean compressed = !link && Attributes.isCompressed(entry.attributes());
        if (compressed) {
            compress(path);
        }
        setTime(entry, path);
        if (compressed || !Attributes.isAsMade(entry.attributes(), isDirectory(entry.type()))) {
            setAttributes(entry, path);
        }
        if (!link && Attributes.isEncrypted(entry.attributes())) {
            report.leftOut(path, "it was encrypted, and is restored without encryption");
        }
        if (withSecurity && !link && !entry.security().isEmpty()) {
            setSecurity(entry, path);
        }
    }

    private static boolean isDirectory(Type type) {
        return type != Type.FILE && type != Type.FILE_LINK;
    }

    private void compress(String path) {
        try {
            files.setAttributes(path, Win32.FILE_ATTRIBUTE_COMPRESSED);
        } catch (IOException e) {
            report.leftOut(path, "it cannot be compressed: " + Reasons.of(e));
        }
    }

    private void setTime(ManifestEntry entry, String path) {
        if (entry.modified() == NO_TIME || !files.setLastModified(path, entry.modified())) {
            report.leftOut(path, "its time cannot be set");
        }
    }

    private void setAttributes(ManifestEntry entry, String path) {
        int wanted = entry.attributes() & Attributes.RESTORED;
        try {
            files.setAttributes(path, wanted);
            // The library does not say whether it could, so that the only way to know is to look.
            int found = files.entry(path, false).getAttributes();
            if (((found ^ wanted) & Attributes.PLAIN) != 0) {
                throw new IOException("the system did not take them");
            }
        } catch (IOException e) {
            report.leftOut(path, "its attributes cannot be set: " + Reasons.of(e));
        }
    }

    private void setSecurity(ManifestEntry entry, String path) {
        Descriptor descriptor;
        try {
            descriptor = Descriptor.parse(entry.security());
        } catch (IOException e) {
            report.leftOut(path, "its security descriptor in the store is no such thing, and not set");
            return;
        }
        try {
            files.setSecurity(path, descriptor.parts(), descriptor.text());
        } catch (IOException e) {
            report.leftOut(path, setRightsOnly(descriptor, path)
                    ? "its owner and group cannot be set, only its access rights: " + Reasons.of(e)
                    : "its security descriptor cannot be set: " + Reasons.of(e));
        }
    }

    /** Tries without owner and group, which only an administrator may give away; the rights protect the content. */
    private boolean setRightsOnly(Descriptor descriptor, String path) {
        if (descriptor.dacl() == 0 || descriptor.dacl() == descriptor.parts()) {
            return false;
        }
        try {
            files.setSecurity(path, descriptor.dacl(), descriptor.text());
            return true;
        } catch (IOException e) {
            return false;
        }
    }
}
