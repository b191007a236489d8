package com.qarvo.winutil.backup;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.security.MessageDigest;
import java.util.HexFormat;

/** Reads files block by block into one direct buffer that is used again and again, hashing what it reads. */
final class Transfer {
    private static final int USUAL_SECTOR_SIZE = 4096;

    private final NativeFiles files;
    private final Progress progress;
    private final StopSignal stop;
    private final boolean unbuffered;
    private final int blockSize;
    private final int sectorSize;
    private final MessageDigest digest = Digests.sha256();
    private final ByteBuffer buffer;
    private final ByteBuffer hashed;
    private final int start;

    /** What was read of a file. */
    record Content(long size, String sha256) {
    }

    /** Takes each block of a file. */
    interface BlockSink {
        void take(ByteBuffer buffer, int offset, int length) throws IOException;
    }

    /**
     * Prepares the buffer.
     *
     * @param source the folder whose files are going to be read, for its volume's sector size
     * @throws ClientException when the block size does not suit unbuffered reading there
     */
    Transfer(NativeFiles files, Progress progress, StopSignal stop, Options options, String source) {
        this.files = files;
        this.progress = progress;
        this.stop = stop;
        this.unbuffered = options.unbuffered();
        this.blockSize = options.blockSize();
        int found = files.sectorSize(source);
        this.sectorSize = found > 0 ? found : USUAL_SECTOR_SIZE;
        if (unbuffered && blockSize % sectorSize != 0) {
            throw new ClientException("Unbuffered reading needs a block size that is a multiple of the sector size, "
                    + sectorSize + " bytes; " + blockSize + " is not.");
        }
        // Unbuffered reading wants addresses at multiples of the sector size, and pages are good for any reading.
        int alignment = Math.max(sectorSize, USUAL_SECTOR_SIZE);
        this.buffer = ByteBuffer.allocateDirect(blockSize + alignment);
        this.start = (int) (-files.address(buffer) & (alignment - 1));
        this.hashed = buffer.duplicate();
    }

    /**
     * How files are read.
     *
     * @param blockSize bytes read at a time
     * @param unbuffered whether to go past the system's cache
     */
    record Options(int blockSize, boolean unbuffered) {
    }

    long open(String path) throws IOException {
        return files.open(path, unbuffered);
    }

    /**
     * Reads an open file to its end.
     *
     * @param file the file, at its beginning
     * @param sink takes the blocks; what it throws ends the reading
     */
    Content read(long file, BlockSink sink) throws IOException {
        digest.reset();
        long size = 0;
        int count = files.read(file, buffer, start, blockSize, sectorSize);
        while (count > 0) {
            stop.check();
            sink.take(buffer, start, count);
            digest.update(hashed.limit(start + count).position(start));
            size += count;
            progress.countBytes(count);
            // A short block is the last one. Unbuffered, the system would refuse to read on from there.
            count = count < blockSize ? 0 : files.read(file, buffer, start, blockSize, sectorSize);
        }
        return new Content(size, HexFormat.of().formatHex(digest.digest()));
    }

    /** Writes a block to another file. */
    void write(long file, ByteBuffer block, int offset, int length) throws IOException {
        WholeWrites.write(files, file, block, offset, length, sectorSize);
    }
}
