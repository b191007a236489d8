package com.qarvo.winutil.backup;

/** An account whose rights are asked for. Its text, which may go into any message, does not have the password. */
final class Account {
    private final String domain;
    private final String user;
    private final String password;

    Account(String domain, String user, String password) {
        this.domain = domain;
        this.user = user;
        this.password = password;
    }

    String domain() {
        return domain;
    }

    String user() {
        return user;
    }

    String password() {
        return password;
    }

    @Override
    public String toString() {
        return domain + "\\" + user;
    }
}
