package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Random;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class TransferTest extends EndToEnd {
    private static final int SECTOR = 512;
    private static final int END_OF_FILE = -1;

    @TempDir
    Path folder;

    private static byte[] noise(int length) {
        byte[] bytes = new byte[length];
        new Random(length).nextBytes(bytes);
        return bytes;
    }

    private static ByteBuffer direct(byte[] bytes) {
        return ByteBuffer.allocateDirect(bytes.length).put(bytes);
    }

    private static byte[] contentOf(ByteBuffer buffer) {
        byte[] bytes = new byte[buffer.capacity()];
        buffer.get(0, bytes);
        return bytes;
    }

    @Test
    void anArrayIsWrittenFromItsOffset() throws IOException {
        Path path = folder.resolve("a.bin");
        byte[] bytes = noise(100_000);
        try (NativeFile file = create(path, 0)) {
            util.write(file.record, bytes, 0, 60_000);
            util.write(file.record, bytes, 60_000, 40_000);
            util.write(file.record, bytes, 5, 0);
        }
        assertArrayEquals(bytes, Files.readAllBytes(path));
        assertArrayEquals(noise(100_000), bytes);
    }

    @Test
    void anArrayIsReadToItsOffsetAndNotBeyond() throws IOException {
        byte[] bytes = noise(1000);
        Path path = Files.write(folder.resolve("a.bin"), bytes);
        byte[] into = new byte[1010];
        try (NativeFile file = open(path)) {
            assertEquals(300, util.read(file.record, into, 5, 300));
            assertEquals(700, util.read(file.record, into, 305, 705));
            assertEquals(END_OF_FILE, util.read(file.record, into, 0, 10));
            assertEquals(END_OF_FILE, util.read(file.record, into, 0, 10));
        }
        assertArrayEquals(bytes, Arrays.copyOfRange(into, 5, 1005));
        assertArrayEquals(new byte[5], Arrays.copyOf(into, 5));
        assertArrayEquals(new byte[5], Arrays.copyOfRange(into, 1005, 1010));
    }

    @Test
    void aDirectBufferIsWrittenAndReadAtItsOffset() throws IOException {
        Path path = folder.resolve("a.bin");
        ByteBuffer buffer = direct(noise(4096));
        try (NativeFile file = create(path, 0)) {
            util.write(file.record, buffer, 96, 4000, SECTOR);
        }
        ByteBuffer into = ByteBuffer.allocateDirect(5000);
        try (NativeFile file = open(path)) {
            assertEquals(4000, util.read(file.record, into, 500, 4100, SECTOR));
            assertEquals(END_OF_FILE, util.read(file.record, into, 0, 100, SECTOR));
        }
        assertArrayEquals(Arrays.copyOfRange(noise(4096), 96, 4096), Files.readAllBytes(path));
        assertArrayEquals(Files.readAllBytes(path), Arrays.copyOfRange(contentOf(into), 500, 4500));
        // The Java side's own bookkeeping is left alone.
        assertEquals(0, into.position());
    }

    @Test
    void readingAnEmptyFileIsItsEnd() throws IOException {
        Path path = Files.createFile(folder.resolve("empty"));
        try (NativeFile file = open(path)) {
            assertEquals(END_OF_FILE, util.read(file.record, new byte[10], 0, 10));
            assertEquals(END_OF_FILE, util.read(file.record, ByteBuffer.allocateDirect(10), 0, 10, SECTOR));
        }
    }

    @Test
    void readingNothingLooksLikeTheEnd() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        try (NativeFile file = open(path)) {
            assertEquals(END_OF_FILE, util.read(file.record, new byte[0], 0, 0));
            assertEquals(7, util.read(file.record, new byte[7], 0, 7));
        }
    }

    @Test
    void whatIsOpenForReadingCannotBeWritten() throws IOException {
        Path path = Files.writeString(folder.resolve("a.bin"), "content");
        String message = Witness.message("WriteFile", ACCESS_DENIED);
        try (NativeFile file = open(path)) {
            assertFails(IOException.class, message, () -> util.write(file.record, new byte[4], 0, 4));
            assertFails(IOException.class, message,
                    () -> util.write(file.record, ByteBuffer.allocateDirect(4), 0, 4, SECTOR));
        }
        assertEquals("content", Files.readString(path));
    }

    @Test
    void whatIsOpenForWritingCannotBeRead() throws IOException {
        Path path = folder.resolve("a.bin");
        String message = Witness.message("ReadFile", ACCESS_DENIED);
        try (NativeFile file = adopt(util.createFileNC(path.toString(), GENERIC_WRITE, CREATE_NEW, 0))) {
            assertFails(IOException.class, message, () -> util.read(file.record, new byte[4], 0, 4));
            assertFails(IOException.class, message,
                    () -> util.read(file.record, ByteBuffer.allocateDirect(4), 0, 4, SECTOR));
        }
    }

    @Test
    void aBufferWithoutAnAddressIsRefusedByTheSystem() throws IOException {
        Path path = Files.write(folder.resolve("a.bin"), noise(100));
        int[] codes = Witness.nullBufferErrors(path.toString());
        assertNotEquals(0, codes[0]);
        assertNotEquals(0, codes[1]);
        ByteBuffer heap = ByteBuffer.allocate(100);
        try (NativeFile file = adopt(util.createFileN(path.toString(), READ_WRITE, 0))) {
            assertFails(IOException.class, Witness.message("WriteFile", codes[0]),
                    () -> util.write(file.record, heap, 8, 16, SECTOR));
            assertFails(IOException.class, Witness.message("ReadFile", codes[1]),
                    () -> util.read(file.record, heap, 8, 16, SECTOR));
        }
        assertArrayEquals(noise(100), Files.readAllBytes(path));
    }

    @ParameterizedTest
    @ValueSource(ints = {1000, 1, 511, 513})
    void anUnbufferedWriteOfPartOfASectorIsRefusedAndWritesNothing(int length) throws IOException {
        Path path = folder.resolve("a.bin");
        try (NativeFile file = create(path, NO_BUFFERING)) {
            assertFails(IOException.class, "[WindowsUtil.write] Must write in multiple of disk sector size when "
                    + "opening in FILE_FLAG_NO_BUFFERING, incorrect write size " + length,
                    () -> util.write(file.record, ByteBuffer.allocateDirect(4096), 0, length, SECTOR));
        }
        assertEquals(0, Files.size(path));
    }

    @Test
    void onlyAnUnbufferedFileIsParticularAboutSectors() throws IOException {
        Path path = folder.resolve("a.bin");
        try (NativeFile file = create(path, 0)) {
            util.write(file.record, direct(noise(1000)), 0, 1000, SECTOR);
        }
        assertArrayEquals(noise(1000), Files.readAllBytes(path));
    }

    @Test
    void anUnbufferedFileIsReadUpToItsExactEnd() throws IOException {
        Path path = folder.resolve("a.bin");
        byte[] bytes = noise(4 * 4096);
        ByteBuffer buffer = ByteBuffer.allocateDirect(3 * 4096).alignedSlice(4096);
        try (NativeFile file = create(path, NO_BUFFERING)) {
            for (int offset = 0; offset < bytes.length; offset += 4096) {
                buffer.put(0, bytes, offset, 4096);
                util.write(file.record, buffer, 0, 4096, SECTOR);
            }
        }
        try (NativeFile file = adopt(util.createFileNC(path.toString(), GENERIC_READ, OPEN_EXISTING, NO_BUFFERING))) {
            for (int offset = 0; offset < bytes.length; offset += 8192) {
                assertEquals(8192, util.read(file.record, buffer, 0, 8192, SECTOR));
                assertEquals(ByteBuffer.wrap(bytes, offset, 8192), buffer.slice(0, 8192));
            }
            assertEquals(bytes.length, util.getFilePosition(file.record));
            assertEquals(END_OF_FILE, util.read(file.record, buffer, 0, 8192, SECTOR));
        }
    }

    @Test
    void anUnbufferedReadStopsInTheMiddleOfTheLastSector() throws IOException {
        Path path = Files.write(folder.resolve("a.bin"), noise(5000));
        ByteBuffer buffer = ByteBuffer.allocateDirect(3 * 4096).alignedSlice(4096);
        try (NativeFile file = adopt(util.createFileNC(path.toString(), GENERIC_READ, OPEN_EXISTING, NO_BUFFERING))) {
            assertEquals(4096, util.read(file.record, buffer, 0, 4096, SECTOR));
            assertEquals(904, util.read(file.record, buffer, 0, 4096, SECTOR));
            assertEquals(END_OF_FILE, util.read(file.record, buffer, 0, 4096, SECTOR));
        }
    }

    @Test
    void aLargeBlockGoesThroughInOneCall() throws IOException {
        Path path = folder.resolve("a.bin");
        byte[] bytes = noise(8 << 20);
        try (NativeFile file = create(path, 0)) {
            util.write(file.record, bytes, 0, bytes.length);
            util.seek(file.record, 0);
            ByteBuffer buffer = ByteBuffer.allocateDirect(bytes.length);
            assertEquals(bytes.length, util.read(file.record, buffer, 0, bytes.length, SECTOR));
            assertArrayEquals(bytes, contentOf(buffer));
        }
    }

    @Test
    void writeHandleHasNeverWrittenAnything() {
        assertEquals(-1, util.WriteHandle(0, new byte[10], 0, 10));
        assertEquals(-1, util.WriteHandle(12345, null, -1, 7));
    }
}
