package com.qarvo.winutil.backup;

import picocli.CommandLine;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;

/** Command line of {@link BackupJob}. */
@CommandLine.Command(name = "backup", description = {
    "Copies a folder tree into a new store.",
    "A file that cannot be read, or that changes while it is read, is reported and left out. Junctions and symbolic"
        + " links are stored as links and not followed; folders that lead elsewhere in another way, such as mounted"
        + " volumes, are reported and left out.",
    "A new store is closed to all but the system and administrators, and the account of this process; --share-store"
        + " makes it as open as the folder that it is made in. One that is there already stays as it is.",
    "With --as the account is logged on for each file and folder and asked about before its content is read. Its"
        + " password is never part of the command line: it is asked for, or taken from the environment or a file. The"
        + " question comes before the reading: it is no boundary against somebody who can change the tree meanwhile."})
final class BackupCommand extends Command {
    @Parameters(index = "0", paramLabel = "SOURCE", description = "Folder to back up.")
    private String source;

    @Parameters(index = "1", paramLabel = "STORE", description = "Folder for the backup; must be missing or empty.")
    private String store;

    @Mixin
    private AccountOptions as;

    @Mixin
    private SecurityOption security;

    @Option(names = "--share-store",
            description = "Let everybody read a new store who may read the folder that it is made in.")
    private boolean shareStore;

    @Override
    public Integer call() {
        Account account = as.account(passwords());
        String from = files().absolutePath(source);
        String to = files().absolutePath(store);
        return run(from, "Backed up", "left out",
                job -> BackupJob.run(job, account, security.included(), shareStore, from, to));
    }
}
