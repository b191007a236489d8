package com.qarvo.winutil.bench;

import java.io.IOException;
import java.io.OutputStream;
import java.io.UncheckedIOException;
import java.nio.ByteBuffer;
import java.nio.file.FileVisitResult;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.SimpleFileVisitor;
import java.nio.file.attribute.BasicFileAttributes;
import java.nio.file.attribute.FileTime;

/** The files that the jobs work on. */
final class Tree {
    /** Of the listed entries every twentieth is a directory. */
    private static final int DIRECTORY_INTERVAL = 20;
    /** Every eleventh entry that is a file has content and a time of its own, every other of them is hidden. */
    private static final int SPECIAL_INTERVAL = 11;
    private static final int SMALL_FILE_SIZE = 4096;
    private static final int BLOCK = 1 << 20;
    private static final long TIME_STEP = 61_007;
    private static final long FIRST_TIME = 1_600_000_000_123L;

    private Tree() {
    }

    /** Makes a directory of small files, most of them empty, and some directories. */
    static Path mixed(Path parent, String name, int entries) throws IOException {
        Path directory = Files.createDirectory(parent.resolve(name));
        // The directories first, while there is little for each new name to be compared with.
        for (int i = 0; i < entries; i += DIRECTORY_INTERVAL) {
            Files.createDirectory(entry(directory, i));
        }
        for (int i = 0; i < entries; i++) {
            Path entry = entry(directory, i);
            if (i % DIRECTORY_INTERVAL != 0) {
                Files.createFile(entry);
            }
            if (i % SPECIAL_INTERVAL == 7 && i % DIRECTORY_INTERVAL != 0) {
                Files.write(entry, new byte[i % 100 + 1]);
                Files.setAttribute(entry, "dos:hidden", i % 2 == 0);
                Files.setLastModifiedTime(entry, FileTime.fromMillis(FIRST_TIME + i * TIME_STEP));
            }
        }
        return directory;
    }

    private static Path entry(Path directory, int number) {
        return directory.resolve(String.format("entry with a common name %06d.data", number));
    }

    /** Makes a directory of empty files. */
    static Path plain(Path parent, String name, int entries) throws IOException {
        Path directory = Files.createDirectory(parent.resolve(name));
        for (int i = 0; i < entries; i++) {
            Files.createFile(directory.resolve(String.format("entry %07d", i)));
        }
        return directory;
    }

    /** Makes files of 4 KiB; returns their paths. */
    static String[] smallFiles(Path parent, String name, int count) throws IOException {
        Path directory = Files.createDirectory(parent.resolve(name));
        String[] paths = new String[count];
        for (int i = 0; i < count; i++) {
            byte[] content = new byte[SMALL_FILE_SIZE];
            content[0] = (byte) i;
            paths[i] = Files.write(directory.resolve(String.format("small file %05d.data", i)), content).toString();
        }
        return paths;
    }

    /** Makes a file in which each 8 bytes say where they are. */
    static Path large(Path parent, String name, long size) throws IOException {
        Path file = parent.resolve(name);
        ByteBuffer block = ByteBuffer.allocate(BLOCK);
        try (OutputStream out = Files.newOutputStream(file)) {
            for (long position = 0; position < size; position += BLOCK) {
                fill(block, position);
                out.write(block.array());
            }
        }
        return file;
    }

    /** Fills a buffer with what a large file holds from a position on. */
    static void fill(ByteBuffer block, long position) {
        for (int i = 0; i < block.capacity(); i += Long.BYTES) {
            block.putLong(i, position + i);
        }
    }

    static void delete(Path tree) throws IOException {
        Files.walkFileTree(tree, new SimpleFileVisitor<>() {
            @Override
            public FileVisitResult visitFile(Path file, BasicFileAttributes attributes) throws IOException {
                Files.delete(file);
                return FileVisitResult.CONTINUE;
            }

            @Override
            public FileVisitResult postVisitDirectory(Path directory, IOException error) throws IOException {
                if (error != null) {
                    throw new UncheckedIOException(error);
                }
                Files.delete(directory);
                return FileVisitResult.CONTINUE;
            }
        });
    }
}
