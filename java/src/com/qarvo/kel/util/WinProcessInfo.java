package com.qarvo.kel.util;

/** One running process, as {@link WindowsUtil#getProcessInfo} found it. */
public final class WinProcessInfo {
    private final String executableName;
    private final long processId;
    private final long sessionId;
    private final String accountName;
    private final String domainName;

    /**
     * Describes a process.
     *
     * @param executableName the file name of its program, without folder
     * @param processId its process id
     * @param sessionId the terminal-services session it runs in
     * @param accountName the account it runs as
     * @param domainName the domain or machine of that account
     */
    public WinProcessInfo(String executableName, long processId, long sessionId, String accountName,
            String domainName) {
        this.executableName = executableName;
        this.processId = processId;
        this.sessionId = sessionId;
        this.accountName = accountName;
        this.domainName = domainName;
    }

    /**
     * Gives the program.
     *
     * @return the file name of the program, without folder
     */
    public String getExecutableName() {
        return executableName;
    }

    /**
     * Gives the process id.
     *
     * @return the process id
     */
    public long getProcessId() {
        return processId;
    }

    /**
     * Gives the session.
     *
     * @return the id of the terminal-services session
     */
    public long getSessionId() {
        return sessionId;
    }

    /**
     * Gives the account.
     *
     * @return the name of the account, without domain
     */
    public String getAccountName() {
        return accountName;
    }

    /**
     * Gives the domain.
     *
     * @return the domain or machine that the account belongs to
     */
    public String getDomainName() {
        return domainName;
    }

    @Override
    public String toString() {
        return executableName + " (process " + processId + ", session " + sessionId + ", "
                + domainName + '\\' + accountName + ')';
    }
}
