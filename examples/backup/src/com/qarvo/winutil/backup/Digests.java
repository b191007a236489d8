package com.qarvo.winutil.backup;

import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;

/** Gives message digests; every Java platform has SHA-256. */
final class Digests {
    private Digests() {
    }

    /** Gives the SHA-256 of no bytes at all, as a manifest has it. */
    static String ofNothing() {
        return HexFormat.of().formatHex(sha256().digest());
    }

    static MessageDigest sha256() {
        try {
            return MessageDigest.getInstance("SHA-256");
        } catch (NoSuchAlgorithmException e) {
            throw new IllegalStateException(e);
        }
    }
}
