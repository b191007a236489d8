package com.qarvo.winutil.bench;

import java.nio.ByteBuffer;

/** The floor with Java: the leanest native methods that make the system calls of a job and build its objects. */
final class Lean {
    static {
        System.load(System.getProperty("winutil.bench.library"));
    }

    private Lean() {
    }

    static native void list(Object collector, String directory, boolean withSecurity);

    static native long open(String path, int access);

    static native int read(long file, ByteBuffer buffer, int length);

    static native int write(long file, ByteBuffer buffer, int length);

    static native int read(long file, byte[] data, int length);

    static native int write(long file, byte[] data, int length);

    static native void close(long file);

    static native boolean exists(String path);

    static native int attributes(String path);

    static native long lastModified(String path);
}
