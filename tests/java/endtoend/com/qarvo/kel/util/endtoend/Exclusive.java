package com.qarvo.kel.util.endtoend;

import com.sun.nio.file.ExtendedOpenOption;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.channels.FileChannel;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/** Holds files open and shares them with nobody; as a program of its own, until its input ends. */
final class Exclusive implements AutoCloseable {
    static final String READY = "holding";

    private final FileChannel channel;

    private Exclusive(FileChannel channel) {
        this.channel = channel;
    }

    static Exclusive hold(Path path) throws IOException {
        return new Exclusive(FileChannel.open(path, StandardOpenOption.READ, StandardOpenOption.WRITE,
                ExtendedOpenOption.NOSHARE_READ, ExtendedOpenOption.NOSHARE_WRITE, ExtendedOpenOption.NOSHARE_DELETE));
    }

    void releaseAfterHalfASecond() {
        try {
            Thread.sleep(500);
            close();
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        } catch (InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }

    @Override
    public void close() throws IOException {
        channel.close();
    }

    public static void main(String[] arguments) throws IOException {
        try (Exclusive held = hold(Path.of(arguments[0]))) {
            System.out.println(READY);
            while (System.in.read() >= 0) {
                // Until the other end closes.
            }
        }
    }
}
