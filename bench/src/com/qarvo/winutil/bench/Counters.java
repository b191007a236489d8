package com.qarvo.winutil.bench;

/** What this process holds right now. */
final class Counters {
    static {
        System.load(System.getProperty("winutil.bench.library"));
    }

    private Counters() {
    }

    /** Memory that no file backs, in bytes. */
    static native long privateBytes();

    static native long openHandles();

    /** The version of Wine, null on Windows itself. */
    static native String wineVersion();
}
