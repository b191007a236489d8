package com.qarvo.kel.util;

import java.io.IOException;
import java.io.InputStream;

/**
 * The read end of the pipe that a child process writes its standard output or standard error to, as an input stream.
 * The native methods that start processes make it; see {@link WinProcess}.
 *
 * <p>Reading blocks until the child has written something or has closed its end; a write of no bytes reads like the
 * end, though the child goes on. One thread may read while another closes: the pipe is then given back when the read
 * has returned.
 */
public class WinPipe extends InputStream {
    private final long handle;
    private final NativeResource resource;

    /**
     * Takes over the read end of a pipe.
     *
     * @param handle the handle cell of the read end; owned by this object from here on
     */
    public WinPipe(long handle) {
        this.handle = handle;
        this.resource = new NativeResource(() -> new WindowsUtil().closeHandle(handle));
    }

    /**
     * Gives the handle cell, for {@link WindowsUtil#readHandle}. It stays owned by this object, and must not be used
     * after {@link #close}.
     *
     * @return the handle cell of the read end
     */
    public long getHandle() {
        return handle;
    }

    @Override
    public int read() throws IOException {
        byte[] one = new byte[1];
        return read(one, 0, 1) < 0 ? -1 : one[0] & 0xFF;
    }

    @Override
    public int read(byte[] buffer, int offset, int length) throws IOException {
        // The native method reads into the array unchecked.
        if (offset < 0 || length < 0 || length > buffer.length - offset) {
            throw new IndexOutOfBoundsException(
                    "offset " + offset + ", length " + length + ", array of " + buffer.length);
        }
        if (length == 0) {
            return 0;
        }
        if (!resource.enter()) {
            throw new IOException("The pipe is closed.");
        }
        try {
            return new WindowsUtil().readHandle(handle, buffer, offset, length);
        } finally {
            resource.leave();
        }
    }

    /** Closes the read end; a second call does nothing. A child that goes on writing then gets an error. */
    @Override
    public void close() {
        resource.close();
    }
}
