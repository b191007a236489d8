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
    private final ClosedRights closed;

    /**
     * Prepares for the entries of one restore.
     *
     * @param closed the rights of what nothing better is known for, null when no rights are set at all
     */
    Metadata(NativeFiles files, Report report, ClosedRights closed) {
        this.files = files;
        this.report = report;
        this.closed = closed;
    }

    /** Finishes one file, directory or link; what cannot be set is reported. */
    void restore(ManifestEntry entry, String path) {
        if (isCompressed(entry)) {
            compress(path);
        }
        restoreAllButCompression(entry, path);
    }

    /** As {@link #restore}, of something that has been compressed already where it is to be. */
    void restoreAllButCompression(ManifestEntry entry, String path) {
        setTime(entry, path);
        if (isCompressed(entry) || !Attributes.isAsMade(entry.attributes(), isDirectory(entry.type()))) {
            setAttributes(entry, path);
        }
        if (!entry.type().isLink() && Attributes.isEncrypted(entry.attributes())) {
            report.leftOut(path, "it was encrypted, and is restored without encryption");
        }
        if (closed != null) {
            setSecurity(entry, path);
        }
    }

    /** Tells whether something is to be compressed; a link is opened through for that, and never is. */
    static boolean isCompressed(ManifestEntry entry) {
        return !entry.type().isLink() && Attributes.isCompressed(entry.attributes());
    }

    private static boolean isDirectory(Type type) {
        return type != Type.FILE && type != Type.FILE_LINK;
    }

    /** Compresses a file or directory, which must not be held open. */
    void compress(String path) {
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
        if (entry.isSecurityUnread()) {
            close(entry, path, "its security descriptor could not be read for the backup");
            return;
        }
        Descriptor descriptor;
        try {
            descriptor = Descriptor.parse(entry.security());
        } catch (IOException e) {
            close(entry, path, "its security descriptor in the store is no such thing, and not set");
            return;
        }
        if (descriptor.dacl() == 0) {
            close(entry, path, "its security descriptor in the store has no access rights");
            return;
        }
        if (entry.type().isLink()) {
            setLinkRights(descriptor, path);
            return;
        }
        try {
            files.setSecurity(path, descriptor.parts(), descriptor.text());
        } catch (IOException e) {
            if (setRightsOnly(descriptor, path)) {
                report.leftOut(path, "its owner and group cannot be set, only its access rights: " + Reasons.of(e));
            } else {
                close(entry, path, "its security descriptor cannot be set: " + Reasons.of(e));
            }
        }
    }

    /** Sets the rights of a link, which nobody could use with those of a closed folder. Its owner is a new one. */
    private void setLinkRights(Descriptor descriptor, String path) {
        try {
            files.setLinkRights(path, descriptor.only(false).text());
        } catch (IOException e) {
            report.leftOut(path, "its access rights cannot be set, and it is closed to others: " + Reasons.of(e));
        }
    }

    /** Tries without owner and group, which only an administrator may give away; the rights protect the content. */
    private boolean setRightsOnly(Descriptor descriptor, String path) {
        if (descriptor.dacl() == descriptor.parts()) {
            return false;
        }
        try {
            files.setSecurity(path, descriptor.dacl(), descriptor.text());
            return true;
        } catch (IOException e) {
            return false;
        }
    }

    /** Closes to others what nobody knows the rights of, so that it is not more open than it was. */
    private void close(ManifestEntry entry, String path, String reason) {
        String outcome = "it is closed to others";
        // A link is as it was made: what closes others would go through it.
        if (!entry.type().isLink()) {
            try {
                files.setSecurity(path, Win32.DACL_SECURITY_INFORMATION, closed.text(isDirectory(entry.type())));
            } catch (IOException e) {
                outcome = "it cannot be closed to others either";
            }
        }
        report.leftOut(path, reason + "; " + outcome);
    }
}
