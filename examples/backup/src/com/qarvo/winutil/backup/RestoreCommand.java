package com.qarvo.winutil.backup;

import picocli.CommandLine;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Parameters;

/** Command line of {@link RestoreJob}. */
@CommandLine.Command(name = "restore", description = {
    "Writes the content of a store into a new folder.",
    "Each file is checked against its SHA-256; what does not match is reported and removed. Times, the attributes"
        + " read-only, hidden, system, archive and compressed, owner, group and access rights are set as they were."
        + " Links are made again, with their time, attributes and rights; owner and group they get as new ones do,"
        + " since to set them might change what they lead to. What cannot be set or made is reported. Making symbolic"
        + " links, and giving files to other owners, takes an administrator.",
    "Until all of it is restored the target is closed to all but the system and administrators, and the account of this"
        + " process. A folder that is there already gets its own rights back at the end, a new one those of the backup."
        + " What has no known rights stays closed, and is reported. A restore that ends early leaves what was not"
        + " finished closed, and the target marked: it is refused from then on. With --no-security nothing is closed."})
final class RestoreCommand extends Command {
    @Parameters(index = "0", paramLabel = "STORE", description = "Folder of the backup.")
    private String store;

    @Parameters(index = "1", paramLabel = "TARGET", description = "Folder to restore into; must be missing or empty.")
    private String target;

    @Mixin
    private SecurityOption security;

    @Override
    public Integer call() {
        String from = files().absolutePath(store);
        String to = files().absolutePath(target);
        return run(from, "Restored", "left out", job -> RestoreJob.run(job, security.included(), from, to));
    }
}
