package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.PipedInputStream;
import java.io.PipedOutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Raw streams of encrypted files, as far as this system has them: it refuses every call with the same code. */
class EncryptedFilesTest extends EndToEnd {
    private static final int NOT_IMPLEMENTED = 120;
    private static final long EXPORT = 0;
    private static final long IMPORT = 1;

    @TempDir
    Path folder;

    private Path file;

    @BeforeEach
    void makeFile() throws IOException {
        file = Files.writeString(folder.resolve("file"), "content");
    }

    @Test
    void openingNamesTheCallAndItsCode() throws IOException {
        String message = Witness.message("OpenEncryptedFileRawW", NOT_IMPLEMENTED);

        assertFails(IOException.class, message, () -> util.openEncryptFile(file.toString(), EXPORT));
        assertFails(IOException.class, message, () -> util.openEncryptFile(file.toString(), IMPORT));

        assertEquals("content", Files.readString(file));
    }

    @Test
    void anExportThatFailsWritesNothing() throws IOException {
        try (PipedOutputStream out = new PipedOutputStream(); PipedInputStream in = new PipedInputStream(out)) {
            assertFails(IOException.class, Witness.message("ReadEncryptedFileRaw", NOT_IMPLEMENTED),
                    () -> util.readEncryptFile(0, out));

            assertEquals(0, in.available());
        }
    }

    @Test
    void anExportNeedsAStream() {
        assertFails(RuntimeException.class, "[WindowsUtil.readEncryptFile] jPipeOutputStream cannot be null",
                () -> util.readEncryptFile(0, null));
    }

    @Test
    void anImportThatFailsReadsNothing() throws IOException {
        InputStream in = new ByteArrayInputStream(new byte[] {1, 2, 3});

        assertFails(IOException.class, Witness.message("WriteEncryptedFileRaw", NOT_IMPLEMENTED),
                () -> util.writeEncryptFile(0, in));

        assertArrayEquals(new byte[] {1, 2, 3}, in.readAllBytes());
    }

    @Test
    void anImportNeedsAStream() {
        assertFails(IOException.class, "[Ljava/io/InputStream;] Cannot get read() methodID",
                () -> util.writeEncryptFile(0, null));
    }

    @Test
    void interruptingAndClosingAreSilent() {
        assertDoesNotThrow(util::interruptEncryptFile);
        assertDoesNotThrow(() -> util.closeEncryptFile(0));
    }
}
