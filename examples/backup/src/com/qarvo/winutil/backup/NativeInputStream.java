package com.qarvo.winutil.backup;

import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;

/** A file read through the native methods as a stream, in blocks. */
final class NativeInputStream extends InputStream {
    private static final int BLOCK_SIZE = 1 << 16;

    private final NativeFiles files;
    private final long file;
    private final ByteBuffer block = ByteBuffer.allocateDirect(BLOCK_SIZE).limit(0);

    NativeInputStream(NativeFiles files, String path) throws IOException {
        this.files = files;
        this.file = files.open(path, false);
    }

    @Override
    public int read() throws IOException {
        return block.hasRemaining() || fill() ? block.get() & 0xFF : -1;
    }

    @Override
    public int read(byte[] bytes, int offset, int length) throws IOException {
        if (length == 0) {
            return 0;
        }
        if (!block.hasRemaining() && !fill()) {
            return -1;
        }
        int count = Math.min(length, block.remaining());
        block.get(bytes, offset, count);
        return count;
    }

    @Override
    public void close() {
        files.close(file);
    }

    private boolean fill() throws IOException {
        int count = files.read(file, block, 0, BLOCK_SIZE, 1);
        block.position(0).limit(Math.max(count, 0));
        return count > 0;
    }
}
