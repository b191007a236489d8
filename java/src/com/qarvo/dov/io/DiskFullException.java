package com.qarvo.dov.io;

import java.io.IOException;

/** The volume has no room left for the file, the directory or the bytes that were to be written. */
public class DiskFullException extends IOException {
    private static final long serialVersionUID = 1L;

    /**
     * Makes the exception.
     *
     * @param message what failed, with the system's error code and text
     */
    public DiskFullException(String message) {
        super(message);
    }
}
