package com.qarvo.kel.util;

/**
 * Counts the calls that are using something native, so that it is freed once, after it was closed and the last of
 * them has returned. Freeing a handle cell under a read or a wait on another thread would crash the process.
 */
final class NativeResource {
    private final Runnable free;
    private int users;
    private boolean closed;

    NativeResource(Runnable free) {
        this.free = free;
    }

    /** Marks the start of a use; false once closed, and then no {@link #leave} must follow. */
    synchronized boolean enter() {
        if (!closed) {
            users++;
        }
        return !closed;
    }

    /** Marks the end of a use. */
    void leave() {
        if (isLastOut()) {
            free.run();
        }
    }

    /** Lets no further use begin; frees at once, or when the last use in progress ends. */
    void close() {
        if (isUnusedAtClose()) {
            free.run();
        }
    }

    private synchronized boolean isLastOut() {
        users--;
        return closed && users == 0;
    }

    private synchronized boolean isUnusedAtClose() {
        boolean first = !closed;
        closed = true;
        return first && users == 0;
    }
}
