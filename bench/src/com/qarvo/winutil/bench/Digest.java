package com.qarvo.winutil.bench;

import java.util.List;

/**
 * A number that two lists of entries share when they hold the same entries, in whatever order; native/digest.h
 * computes the same one.
 */
final class Digest {
    static final int DIRECTORY = 1;
    static final int SIZE = 2;
    static final int TIME = 4;
    static final int ATTRIBUTES = 8;
    static final int SECURITY = 16;
    /** The four bits of the attribute word that java.nio knows; Java contenders only. */
    static final int DOS_FLAGS = 32;
    /** How many access control entries the descriptor has; Java contenders only. */
    static final int ACE_COUNT = 64;

    /** Read-only, hidden, system, archive. */
    static final int DOS_MASK = 0x1 | 0x2 | 0x4 | 0x20;

    private static final long START = 0xCBF29CE484222325L;
    private static final long PRIME = 0x100000001B3L;

    private long hash = START;

    private Digest() {
    }

    static long of(List<Entry> entries, int fields) {
        long sum = 0;
        for (Entry entry : entries) {
            sum += of(entry, fields);
        }
        return sum;
    }

    private static long of(Entry entry, int fields) {
        Digest digest = new Digest();
        digest.add(entry.name());
        if ((fields & DIRECTORY) != 0) {
            digest.add(entry.directory() ? 1 : 0);
        }
        if ((fields & SIZE) != 0) {
            digest.add(entry.size());
        }
        if ((fields & TIME) != 0) {
            digest.add(entry.lastModified());
        }
        if ((fields & ATTRIBUTES) != 0) {
            digest.add(entry.attributes() & 0xFFFFFFFFL);
        }
        if ((fields & SECURITY) != 0) {
            digest.add(entry.security());
        }
        if ((fields & DOS_FLAGS) != 0) {
            digest.add(entry.attributes() & DOS_MASK);
        }
        if ((fields & ACE_COUNT) != 0) {
            digest.add(entry.security().chars().filter(c -> c == '(').count());
        }
        return digest.hash;
    }

    private void add(String text) {
        for (int i = 0; i < text.length(); i++) {
            add(text.charAt(i));
        }
    }

    private void add(long value) {
        hash = (hash ^ value) * PRIME;
        hash ^= hash >>> 32;
    }
}
