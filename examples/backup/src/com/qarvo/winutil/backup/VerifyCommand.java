package com.qarvo.winutil.backup;

import picocli.CommandLine;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Parameters;

/** Command line of {@link VerifyJob}. */
@CommandLine.Command(name = "verify", description = {
    "Compares a folder tree with a store.",
    "Compared are names, sizes, SHA-256 of the content, times, the attributes read-only, hidden, system, compressed and"
        + " encrypted, owner, group and access rights; of links their kind, target, time and the first three"
        + " attributes."})
final class VerifyCommand extends Command {
    @Parameters(index = "0", paramLabel = "STORE", description = "Folder of the backup.")
    private String store;

    @Parameters(index = "1", paramLabel = "TREE", description = "Folder to compare, the source or a restored one.")
    private String tree;

    @Mixin
    private SecurityOption security;

    @Override
    public Integer call() {
        String from = files().absolutePath(store);
        String compared = files().absolutePath(tree);
        return run(compared, "Compared", "different or unreadable",
                job -> VerifyJob.run(job, security.included(), from, compared));
    }
}
