package com.qarvo.winutil.backup;

import java.io.IOException;
import java.io.OutputStream;
import java.nio.ByteBuffer;

/** A new file written through the native methods as a stream, in blocks. What is not flushed is lost at the end. */
final class NativeOutputStream extends OutputStream {
    private static final int BLOCK_SIZE = 1 << 16;

    private final NativeFiles files;
    private final String path;
    private final long file;
    private final ByteBuffer block = ByteBuffer.allocateDirect(BLOCK_SIZE);
    private long written;
    private boolean closed;

    NativeOutputStream(NativeFiles files, String path) throws IOException {
        this.files = files;
        this.path = path;
        this.file = files.create(path, 0);
    }

    @Override
    public void write(int value) throws IOException {
        if (!block.hasRemaining()) {
            flush();
        }
        block.put((byte) value);
    }

    @Override
    public void write(byte[] bytes, int offset, int length) throws IOException {
        int done = 0;
        while (done < length) {
            if (!block.hasRemaining()) {
                flush();
            }
            int count = Math.min(length - done, block.remaining());
            block.put(bytes, offset + done, count);
            done += count;
        }
    }

    @Override
    public void flush() throws IOException {
        int length = block.position();
        if (length > 0) {
            WholeWrites.write(files, file, block, 0, length, 1);
            written += length;
            block.clear();
        }
    }

    /** Closes the file and makes sure that the disk has all of it. */
    void finish() throws IOException {
        flush();
        close();
        files.flushToDisk(path);
        long size = files.entry(path, false).getSize();
        if (size != written) {
            throw new IOException("only " + size + " of " + written + " bytes arrived in " + path);
        }
    }

    @Override
    public void close() {
        if (!closed) {
            closed = true;
            files.close(file);
        }
    }
}
