package com.qarvo.winutil.backup;

import picocli.CommandLine;
import picocli.CommandLine.Parameters;

/** Command line of {@link RestoreJob}. */
@CommandLine.Command(name = "restore", description = {
    "Writes the content of a store into a new folder.",
    "Each file is checked against its SHA-256; what does not match is reported and removed. Times and the attributes"
        + " read-only, hidden, system and archive are set as they were, through Java where the library has no method"
        + " for it. Links are made when the library has the methods for it, else reported as left out. Security"
        + " descriptors are in the store for reference and not set."})
final class RestoreCommand extends Command {
    @Parameters(index = "0", paramLabel = "STORE", description = "Folder of the backup.")
    private String store;

    @Parameters(index = "1", paramLabel = "TARGET", description = "Folder to restore into; must be missing or empty.")
    private String target;

    @Override
    public Integer call() {
        String from = files().absolutePath(store);
        String to = files().absolutePath(target);
        return run(from, "Restored", "left out", job -> RestoreJob.run(job, from, to));
    }
}
