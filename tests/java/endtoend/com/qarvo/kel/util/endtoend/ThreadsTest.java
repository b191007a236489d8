package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class ThreadsTest extends EndToEnd {
    private static final int THREADS = 16;
    private static final int ROUNDS = 20;

    @TempDir
    Path folder;

    @Test
    void sixteenThreadsDoNotDisturbOneAnother() throws Exception {
        ExecutorService pool = Executors.newFixedThreadPool(THREADS);
        List<Future<?>> work = new ArrayList<>();
        for (int i = 0; i < THREADS; i++) {
            Path own = Files.createDirectory(folder.resolve("thread " + i));
            byte[] content = ("content of thread " + i).getBytes();
            work.add(pool.submit(() -> {
                for (int round = 0; round < ROUNDS; round++) {
                    writeListAndRead(own, content);
                }
                return null;
            }));
        }
        for (Future<?> thread : work) {
            thread.get();
        }
        pool.shutdown();
    }

    private static void writeListAndRead(Path folder, byte[] content) throws IOException {
        String path = folder.resolve("file").toString();
        try (NativeFile file = preallocate(path, 10_000)) {
            util.write(file.record, content, 0, content.length);
        }
        assertEquals(List.of(path), list(folder).stream().map(file -> file.getPath()).toList());
        assertEquals(content.length, util.WinFile(path, true, true).getSize());
        byte[] back = new byte[content.length];
        try (NativeFile file = open(path)) {
            assertEquals(content.length, util.read(file.record, back, 0, back.length));
        }
        assertArrayEquals(content, back);
        assertEquals(true, util.delete(path));
        assertFails(FileNotFoundException.class, Witness.message("openFile", FILE_NOT_FOUND),
                () -> util.openFile(path));
    }
}
