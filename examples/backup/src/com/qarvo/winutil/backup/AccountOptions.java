package com.qarvo.winutil.backup;

import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.Spec;

/** The options that say for whom something is read. */
final class AccountOptions {
    @Spec(Spec.Target.MIXEE)
    private CommandSpec spec;

    @Option(names = "--as", paramLabel = "DOMAIN\\USER",
            description = "Read only what this account may read; the rest is reported and left out. The domain is . for"
                    + " this machine.")
    private String account;

    @Option(names = "--password-env", paramLabel = "NAME",
            description = "Take the password of --as from this environment variable.")
    private String variable;

    @Option(names = "--password-file", paramLabel = "FILE",
            description = "Take the password of --as from this file, which holds nothing else.")
    private String file;

    /** Refuses what users are bound to try. Without this option, the message about it would repeat the password. */
    @Option(names = "--password", arity = "0..1", hidden = true)
    private void refuse(@SuppressWarnings("unused") String password) {
        throw new ParameterException(spec.commandLine(), "A password does not belong on a command line, where everyone"
                + " can see it; use --password-env or --password-file.");
    }

    /** Gives the account, null when none was asked for. */
    Account account(Passwords passwords) {
        if (account == null) {
            if (variable != null || file != null) {
                throw new ParameterException(spec.commandLine(), "There is a password, but no --as.");
            }
            return null;
        }
        String[] parts = account.split("\\\\", -1);
        if (parts.length != 2 || parts[0].isEmpty() || parts[1].isEmpty() || !Passwords.isPlainAscii(account)) {
            throw new ParameterException(spec.commandLine(), "--as needs DOMAIN\\USER in ASCII, with . as the domain"
                    + " for this machine.");
        }
        if (variable != null && file != null) {
            throw new ParameterException(spec.commandLine(), "--password-env and --password-file exclude each other.");
        }
        return new Account(parts[0], parts[1], password(passwords, new Account(parts[0], parts[1], "")));
    }

    private String password(Passwords passwords, Account owner) {
        if (variable != null) {
            return passwords.fromEnvironment(variable);
        }
        return file != null ? passwords.fromFile(file) : passwords.fromConsole(owner);
    }
}
