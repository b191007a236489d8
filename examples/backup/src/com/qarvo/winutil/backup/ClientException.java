package com.qarvo.winutil.backup;

/** Ends a command. The message is the one sentence that the user is told. */
final class ClientException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    ClientException(String sentence) {
        super(sentence);
    }

    ClientException(String sentence, Throwable cause) {
        super(sentence, cause);
    }
}
