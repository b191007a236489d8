package com.qarvo.dov.io;

import java.io.IOException;

/**
 * A file could not be opened because another process holds it with a conflicting share mode, and kept holding it
 * through all the attempts that the open makes before it gives up.
 */
public class SharingViolationException extends IOException {
    private static final long serialVersionUID = 1L;

    /**
     * Makes the exception.
     *
     * @param message what failed, with the system's error code and text
     */
    public SharingViolationException(String message) {
        super(message);
    }
}
