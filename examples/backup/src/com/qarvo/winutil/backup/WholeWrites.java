package com.qarvo.winutil.backup;

import com.qarvo.dov.io.DiskFullException;
import java.io.IOException;
import java.nio.ByteBuffer;

/**
 * Writes blocks as a whole. A disk may take the part for which it has room and report success; only the attempt to
 * write the rest says that it is full.
 */
final class WholeWrites {
    private WholeWrites() {
    }

    static void write(NativeFiles files, long file, ByteBuffer buffer, int offset, int length, int sectorSize)
            throws IOException {
        long start = files.position(file);
        int done = 0;
        while (done < length) {
            files.write(file, buffer, offset + done, length - done, sectorSize);
            int reached = (int) (files.position(file) - start);
            if (reached <= done) {
                throw new DiskFullException("the disk takes nothing more");
            }
            done = reached;
        }
    }
}
