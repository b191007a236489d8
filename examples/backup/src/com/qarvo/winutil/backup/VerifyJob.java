package com.qarvo.winutil.backup;

import com.qarvo.winutil.backup.ManifestEntry.Type;
import com.qarvo.winutil.backup.TreeWalk.Found;
import java.io.IOException;
import java.time.Instant;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** Compares a folder tree with what a store says it should be, and reports each difference. */
final class VerifyJob implements TreeWalk.Visitor {
    private final Job job;
    private final Map<String, ManifestEntry> expected = new LinkedHashMap<>();
    private final String tree;
    private final boolean withSecurity;

    private VerifyJob(Job job, boolean withSecurity, String tree) {
        this.job = job;
        this.tree = tree;
        this.withSecurity = withSecurity;
    }

    /**
     * Compares.
     *
     * @param withSecurity whether owners, groups and access rights are compared
     */
    static void run(Job job, boolean withSecurity, String storePath, String tree) {
        VerifyJob verify = new VerifyJob(job, withSecurity, tree);
        job.files().useBackupPrivilege();
        Store store = Store.open(job.files(), storePath);
        if (RestoreTarget.isUnfinished(Folders.entries(job.files(), tree, "tree"))) {
            job.report().differs(tree, "a restore into it was not finished");
        }
        store.readManifest().forEach(entry -> verify.expected.put(entry.path(), entry));
        new TreeWalk(job.files(), job.report(), withSecurity, tree).run(verify, job.stop());
        verify.expected.values().forEach(entry -> verify.differs(entry.path(), "it is missing"));
    }

    @Override
    public boolean directory(Found directory) {
        job.progress().countDirectory();
        ManifestEntry entry = take(directory, Type.DIRECTORY);
        if (entry != null) {
            compareTime(entry, directory, directory.entry().getLastModified());
            compareAttributes(entry, directory, Attributes.COMPARED);
            compareSecurity(entry, directory);
        }
        return true;
    }

    @Override
    public void file(Found file) {
        ManifestEntry entry = take(file, Type.FILE);
        if (entry != null) {
            job.progress().at(file.entry().getPath());
            job.progress().countFile();
            compareContent(entry, file);
            compareTime(entry, file, file.modified(job.files()));
            compareAttributes(entry, file, Attributes.COMPARED);
            compareSecurity(entry, file);
        }
    }

    @Override
    public void link(Found link) {
        job.progress().countLink();
        ManifestEntry entry = take(link, Type.of(link.entry()));
        if (entry == null) {
            return;
        }
        if (!entry.linkTarget().equals(link.entry().getLinkTarget())) {
            differs(link.path(), "it leads to " + Escapes.printable(link.entry().getLinkTarget()) + " instead of "
                    + Escapes.printable(entry.linkTarget()));
        }
        compareTime(entry, link, link.entry().getLastModified());
        compareAttributes(entry, link, Attributes.PLAIN);
    }

    /** Finds the entry for what was found and crosses it off; null when there is none of this type. */
    private ManifestEntry take(Found found, Type type) {
        ManifestEntry entry = expected.remove(found.path());
        if (entry == null) {
            differs(found.path(), "it is not in the store");
            return null;
        }
        if (entry.type() != type) {
            differs(found.path(), "it is a " + type.word() + " instead of a " + entry.type().word());
            return null;
        }
        return entry;
    }

    private void compareContent(ManifestEntry entry, Found found) {
        String path = found.entry().getPath();
        try {
            long file = job.transfer().open(path);
            try {
                long size = job.files().size(file);
                if (size != entry.size()) {
                    differs(found.path(), "it has " + size + " bytes instead of " + entry.size());
                } else if (!hash(file).equals(entry.sha256())) {
                    differs(found.path(), "its content is another one");
                }
            } finally {
                job.files().close(file);
            }
        } catch (IOException e) {
            job.report().leftOut(path, Reasons.of(e));
        }
    }

    private String hash(long file) throws IOException {
        return job.transfer().read(file, (buffer, offset, length) -> { }).sha256();
    }

    private void compareTime(ManifestEntry entry, Found found, long modified) {
        if (modified != entry.modified()) {
            differs(found.path(), "its time is " + time(modified) + " instead of " + time(entry.modified()));
        }
    }

    private void compareAttributes(ManifestEntry entry, Found found, int compared) {
        int attributes = found.entry().getAttributes();
        if (((attributes ^ entry.attributes()) & compared) != 0) {
            differs(found.path(), "its attributes are " + Attributes.letters(attributes) + " instead of "
                    + Attributes.letters(entry.attributes()));
        }
    }

    private void compareSecurity(ManifestEntry entry, Found found) {
        if (!withSecurity || !entry.hasSecurity()) {
            return;
        }
        if (entry.isSecurityUnread()) {
            job.report().unknown(found.entry().getPath(), "its security descriptor could not be read for the backup,"
                    + " so that there is nothing to compare with");
            return;
        }
        if (found.securityProblem() != null) {
            job.report().leftOut(found.entry().getPath(),
                    "its security descriptor cannot be read: " + found.securityProblem());
            return;
        }
        differencesOf(entry.security(), found.security())
                .forEach(difference -> differs(found.path(), difference));
    }

    private static List<String> differencesOf(String wanted, String found) {
        if (wanted.equals(found)) {
            return List.of();
        }
        try {
            return Descriptor.parse(wanted).differencesOf(Descriptor.parse(found));
        } catch (IOException e) {
            return List.of("its security descriptor is " + Escapes.printable(found) + " instead of "
                    + Escapes.printable(wanted));
        }
    }

    private void differs(String path, String reason) {
        job.report().differs(Names.join(tree, path), reason);
    }

    private static String time(long milliseconds) {
        return Instant.ofEpochMilli(milliseconds).toString();
    }
}
