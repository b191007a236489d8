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

    /** An account was refused for a reason other than its name or password: disabled, locked, out of hours. */
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
