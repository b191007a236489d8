package com.qarvo.winutil.backup;

import java.io.IOException;

/** The library that was loaded does not have the native method that a job needs. */
final class MissingNativeException extends IOException {
    private static final long serialVersionUID = 1L;

    MissingNativeException(String message) {
        super(message);
    }
}
