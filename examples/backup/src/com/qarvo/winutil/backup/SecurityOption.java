package com.qarvo.winutil.backup;

import picocli.CommandLine.Option;

/** The option of the commands that read, set or compare security descriptors. */
final class SecurityOption {
    @Option(names = "--security", negatable = true, defaultValue = "true", fallbackValue = "true",
            description = "Include owner, group and access rights, or do not; by default they are included. Not all"
                    + " file systems keep them.")
    private boolean security;

    boolean included() {
        return security;
    }
}
