package com.qarvo.kel.util;

/** Base of the exceptions that belong to this library alone; each failure has a nested class of its own. */
public class UtilException extends Exception {
    private static final long serialVersionUID = 1L;

    /**
     * Makes the exception.
     *
     * @param message what failed
     */
    public UtilException(String message) {
        super(message);
    }

    /**
     * Name and password of an account are right, but a restriction keeps it from logging on: an empty password, the
     * hours, a policy.
     */
    public static class AccountRestrictionException extends UtilException {
        private static final long serialVersionUID = 1L;

        /**
         * Makes the exception.
         *
         * @param message what failed, with the system's error code and text
         */
        public AccountRestrictionException(String message) {
            super(message);
        }
    }
}
