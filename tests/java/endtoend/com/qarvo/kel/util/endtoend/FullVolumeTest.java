package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.qarvo.dov.io.DiskFullException;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/** On a drive of its own that has room for very little. */
class FullVolumeTest extends EndToEnd {
    private static final int BLOCK = 4096;

    private String root;

    @BeforeEach
    void needTheVolume() {
        root = System.getProperty("winutil.test.volume");
        assumeTrue(root != null, "no small volume: mounting is not allowed here");
    }

    @AfterEach
    void emptyTheVolume() throws IOException {
        if (root != null) {
            try (DirectoryStream<Path> entries = Files.newDirectoryStream(Path.of(root))) {
                for (Path entry : entries) {
                    Files.delete(entry);
                }
            }
        }
    }

    /** Writes until not a block is left; the last write is the one that fails. */
    private void fill() throws IOException {
        try (NativeFile file = create(root + "filler", 0)) {
            byte[] block = new byte[BLOCK];
            assertFails(DiskFullException.class, Witness.message("WriteFile", DISK_FULL), () -> {
                while (true) {
                    util.write(file.record, block, 0, BLOCK);
                }
            });
        }
        assertTrue(Files.size(Path.of(root, "filler")) > 100 * BLOCK, "the volume was full from the start");
        assertEquals(0, Files.getFileStore(Path.of(root)).getUsableSpace());
    }

    /** Makes entries until there may be no more. */
    private String useUpTheNames() {
        String[] last = new String[1];
        assertThrowsExactly(DiskFullException.class, () -> {
            for (int i = 0;; i++) {
                last[0] = root + i;
                util.closeFile(util.createFileN(last[0], READ_WRITE, 0));
            }
        });
        return last[0];
    }

    @Test
    void writingToAFullVolumeIsDiskFull() throws IOException {
        fill();
        String message = Witness.message("WriteFile", DISK_FULL);
        try (NativeFile file = create(root + "a", 0)) {
            assertFails(DiskFullException.class, message, () -> util.write(file.record, new byte[1], 0, 1));
            assertFails(DiskFullException.class, message,
                    () -> util.write(file.record, ByteBuffer.allocateDirect(BLOCK), 0, BLOCK, 512));
            assertEquals(0, util.getFileSize(file.record));
        }
    }

    @Test
    void preallocatingOnAFullVolumeIsDiskFullOnOpen() throws IOException {
        fill();

        assertFails(DiskFullException.class, Witness.message("createFileN", DISK_FULL),
                () -> preallocate(root + "a", 10 * BLOCK));
        assertEquals(false, Witness.isPrivilegeOn("SeManageVolumePrivilege"));
    }

    @Test
    void creatingAFileForWhichThereIsNoRoomIsDiskFullOnOpen() {
        String missing = useUpTheNames();

        assertFails(DiskFullException.class, Witness.message("CreateFileW", DISK_FULL),
                () -> util.createFileNC(missing, READ_WRITE, CREATE_NEW, 0));
        assertEquals(false, util.exists(missing));
    }

    @Test
    void makingADirectoryForWhichThereIsNoRoomIsDiskFull() {
        String missing = useUpTheNames();

        assertFails(DiskFullException.class, Witness.message("createDir", DISK_FULL) + ", '" + missing + "'",
                () -> util.mkdir(missing));
    }

    @Test
    void withoutItsExceptionClassTheJvmsOwnErrorIsSeen() throws Exception {
        String missing = useUpTheNames();
        try (Isolated library = Isolated.without("com.qarvo.dov.io.DiskFullException")) {
            Throwable error = assertThrowsExactly(NoClassDefFoundError.class, () -> library.call("mkdir", missing));

            assertEquals("com/qarvo/dov/io/DiskFullException", error.getMessage());
        }
    }
}
