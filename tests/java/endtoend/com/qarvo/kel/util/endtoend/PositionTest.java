package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class PositionTest extends EndToEnd {
    private static final long FOUR_GIB = 1L << 32;

    @TempDir
    Path folder;

    @Test
    void positionsAreSetMovedAndAskedFor() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "0123456789");
        byte[] one = new byte[1];
        try (NativeFile file = open(path)) {
            assertEquals(0, util.getFilePosition(file.record));
            assertEquals(4, util.seek(file.record, 4));
            assertEquals(4, util.getFilePosition(file.record));
            assertEquals(7, util.skip(file.record, 3));
            assertEquals(5, util.skip(file.record, -2));
            assertEquals(5, util.skip(file.record, 0));
            util.read(file.record, one, 0, 1);
            assertEquals('5', one[0]);
            assertEquals(6, util.getFilePosition(file.record));
            assertEquals(100, util.seek(file.record, 100));
            assertEquals(-1, util.read(file.record, one, 0, 1));
            assertEquals(10, util.getFileSize(file.record));
        }
    }

    @Test
    void aPositionBeforeTheStartIsRefusedAndChangesNothing() throws IOException {
        Path path = Files.writeString(folder.resolve("a.txt"), "0123456789");
        try (NativeFile file = open(path)) {
            util.seek(file.record, 3);

            assertFails(IOException.class, Witness.message("SetFilePointerEx", NEGATIVE_SEEK),
                    () -> util.seek(file.record, -1));
            assertFails(IOException.class, Witness.message("SetFilePointer", NEGATIVE_SEEK),
                    () -> util.skip(file.record, -4));
            assertEquals(3, util.getFilePosition(file.record));
        }
    }

    @Test
    void aSparseFileIsReadAndWrittenBeyondFourGibibytes() throws IOException {
        Path path = folder.resolve("sparse.bin");
        byte[] mark = {1, 2, 3, 4, 5, 6, 7, 8};
        try (NativeFile file = create(path, 0)) {
            assertTrue(util.setFileEndOfFileInfo(file.record, FOUR_GIB + (1 << 20)));
            assertEquals(FOUR_GIB + 123, util.seek(file.record, FOUR_GIB + 123));
            util.write(file.record, mark, 0, 8);
            assertEquals(FOUR_GIB + 131, util.getFilePosition(file.record));
            assertEquals(FOUR_GIB + (1 << 20), util.getFileSize(file.record));
        }
        try (FileChannel channel = FileChannel.open(path)) {
            ByteBuffer there = ByteBuffer.allocate(8);
            channel.read(there, FOUR_GIB + 123);
            assertArrayEquals(mark, there.array());
        }
        byte[] back = new byte[8];
        try (NativeFile file = open(path)) {
            assertEquals(123, util.seek(file.record, 123));
            assertEquals(FOUR_GIB + 123, util.skip(file.record, FOUR_GIB));
            assertEquals(8, util.read(file.record, back, 0, 8));
            assertEquals(131, util.skip(file.record, -FOUR_GIB));
        }
        assertArrayEquals(mark, back);
        assertEquals(FOUR_GIB + (1 << 20), list(folder).get(0).getSize());
        assertEquals(FOUR_GIB + (1 << 20), util.WinFile(path.toString(), false, false).getSize());
    }

    @Test
    void aPositionWhoseLowHalfIsAllOnesIsNoFailure() throws IOException {
        Path path = Files.createFile(folder.resolve("a.txt"));
        try (NativeFile file = open(path)) {
            assertEquals(0xFFFFFFFFL, util.skip(file.record, 0xFFFFFFFFL));
            assertEquals(0x1FFFFFFFFL, util.skip(file.record, FOUR_GIB));
        }
    }

    @ParameterizedTest
    @ValueSource(longs = {0, -1, Long.MIN_VALUE})
    void withoutARecordEveryMethodReportsAnInvalidHandleAndCloseDoesNothing(long record) {
        byte[] bytes = new byte[8];
        ByteBuffer buffer = ByteBuffer.allocateDirect(8);
        util.closeFile(record);

        assertInvalidHandle(() -> util.read(record, bytes, 0, 8));
        assertInvalidHandle(() -> util.read(record, buffer, 0, 8, 512));
        assertInvalidHandle(() -> util.write(record, bytes, 0, 8));
        assertInvalidHandle(() -> util.write(record, buffer, 0, 8, 512));
        assertInvalidHandle(() -> util.seek(record, 0));
        assertInvalidHandle(() -> util.skip(record, 0));
        assertInvalidHandle(() -> util.getFilePosition(record));
        assertInvalidHandle(() -> util.getFileSize(record));
        assertInvalidHandle(() -> util.setFileEndOfFileInfo(record, 0));
    }

    private static void assertInvalidHandle(Executable call) {
        String message = assertThrowsExactly(IOException.class, call).getMessage();
        String tag = message.substring(1, message.indexOf(']'));
        assertEquals(Witness.message(tag, INVALID_HANDLE), message);
    }
}
