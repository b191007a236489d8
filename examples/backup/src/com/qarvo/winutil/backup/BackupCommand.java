package com.qarvo.winutil.backup;

import picocli.CommandLine;
import picocli.CommandLine.Parameters;

/** Command line of {@link BackupJob}. */
@CommandLine.Command(name = "backup", description = {
    "Copies a folder tree into a new store.",
    "A file that cannot be read, or that changes while it is read, is reported and left out. Junctions and symbolic"
        + " links are stored as links and not followed; folders that lead elsewhere in another way, such as mounted"
        + " volumes, are reported and left out."})
final class BackupCommand extends Command {
    @Parameters(index = "0", paramLabel = "SOURCE", description = "Folder to back up.")
    private String source;

    @Parameters(index = "1", paramLabel = "STORE", description = "Folder for the backup; must be missing or empty.")
    private String store;

    @Override
    public Integer call() {
        String from = files().absolutePath(source);
        String to = files().absolutePath(store);
        return run(from, "Backed up", "left out", job -> BackupJob.run(job, from, to));
    }
}
