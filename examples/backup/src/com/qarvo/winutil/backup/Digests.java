package com.qarvo.winutil.backup;

import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;

/** Gives message digests; every Java platform has SHA-256. */
final class Digests {
    private Digests() {
    }

    static MessageDigest sha256() {
        try {
            return MessageDigest.getInstance("SHA-256");
        } catch (NoSuchAlgorithmException e) {
            throw new IllegalStateException(e);
        }
    }
}
