package com.qarvo.winutil.bench;

import java.nio.ByteBuffer;

/**
 * The floor without Java: each method does a whole pass in C++, with the system calls that the job cannot do without.
 * Results below 0 mean that a call failed.
 */
final class Bare {
    static {
        System.load(System.getProperty("winutil.bench.library"));
    }

    private Bare() {
    }

    /** Copies paths to where the passes find them without asking Java; freed with {@link #freePaths}. */
    static native long preparePaths(String[] paths);

    static native void freePaths(long paths);

    /** Lists a directory and returns the number of entries. */
    static native long list(String directory, boolean withSecurity);

    /** Lists a directory and returns its {@link Digest} over some fields. */
    static native long digest(String directory, boolean withSecurity, int fields);

    /** Lists a directory and returns the most memory that the process held meanwhile, in bytes. */
    static native long peakOfList(String directory);

    /** Walks through the numbers in a key of the current user's and returns how many there are. */
    static native long countNumbers(String key);

    /** Walks through all processes and returns how many of this name have an account. */
    static native long countProcesses(String executableName);

    static native long read(String path, ByteBuffer buffer, int block);

    static native long overwrite(String path, ByteBuffer buffer, int block, long total);

    static native long readFiles(long paths, ByteBuffer buffer);

    static native long countExisting(long paths);

    static native long sumAttributes(long paths);

    static native long sumLastModified(long paths);
}
