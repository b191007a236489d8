package com.qarvo.winutil.backup;

import java.io.IOException;

/** Asks before anything is read whether an account may read it; without an account everything may be read. */
final class ReadCheck {
    /** How the library begins its answer when the account could log on, and may not read the file. */
    private static final String REFUSED = "[CheckAccessToFile]";

    private final NativeFiles files;
    private final Account account;

    /**
     * Makes a check.
     *
     * @param account whom to ask for, null for no check
     */
    ReadCheck(NativeFiles files, Account account) {
        this.files = files;
        this.account = account;
    }

    /**
     * Checks a file or folder.
     *
     * @throws IOException when the account may not read it
     * @throws ClientException when it cannot log on: the next attempt would fail as well, and enough of them lock it
     */
    void require(String path) throws IOException {
        if (account == null) {
            return;
        }
        try {
            files.checkRead(path, account);
        } catch (IOException e) {
            String reason = Reasons.of(e);
            // A no about the file and a logon that failed are one kind of exception, told apart by the message alone.
            if (reason.startsWith(REFUSED)) {
                throw new IOException(account + " may not read it: " + reason, e);
            }
            throw new ClientException("The account " + account + " cannot log on: " + reason, e);
        }
    }
}
