package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.FileErrorListener;
import com.qarvo.kel.util.WinFileList;
import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** What a listing calls on the Java side, and what it makes of a Java side that misbehaves. */
class CollectorTest extends EndToEnd {
    /** What the conversion of no descriptor at all reports. */
    private static final int INVALID_PARAMETER = 87;

    @TempDir
    Path folder;

    @BeforeEach
    void makeFiveFiles() throws IOException {
        for (int i = 0; i < 5; i++) {
            Files.createFile(folder.resolve("file" + i));
        }
    }

    /** Removes all other files at the first entry, so that their descriptors cannot be read any more. */
    private final class Remover extends WinFileList {
        @Override
        public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint) {
            if (files().isEmpty()) {
                for (File file : folder.toFile().listFiles(file -> !file.toString().equals(path))) {
                    assertTrue(file.delete());
                }
            }
            super.addFile(path, directory, size, lastModified, attributes, securityDescriptor, reparsePoint);
        }

        List<String> withoutDescriptor() {
            return files().stream().filter(file -> file.getSecurityDescriptor().isEmpty()).map(WinFile::getPath)
                    .toList();
        }
    }

    /** Has everything but the method. */
    public static class Deaf {
        public void addFile(String path) {
            throw new AssertionError("another method of the same name");
        }

        public void fireFileErrorEvent(Object path) {
            throw new AssertionError("another method of the same name");
        }
    }

    @Test
    void whatACollectorThrowsEndsTheListingAndReachesTheCaller() {
        RuntimeException thrown = new RuntimeException("enough");
        List<String> seen = new ArrayList<>();
        WinFileList collector = new WinFileList() {
            @Override
            public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                    String securityDescriptor, boolean reparsePoint) {
                seen.add(path);
                if (seen.size() == 2) {
                    throw thrown;
                }
            }
        };
        assertSame(thrown, assertThrowsExactly(RuntimeException.class,
                () -> util.listWinFiles(collector, folder.toString(), true, true, null, true)));
        assertEquals(2, seen.size());
    }

    @Test
    void aCheckedExceptionAndAnErrorPassThroughToo() {
        class Thrower {
            Throwable thrown;

            @SuppressWarnings("unused") // called by the library, by name
            void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                    String securityDescriptor, boolean reparsePoint) throws Throwable {
                throw thrown;
            }
        }
        Thrower collector = new Thrower();
        for (Throwable thrown : List.of(new InterruptedException(), new StackOverflowError())) {
            collector.thrown = thrown;
            assertSame(thrown, assertThrowsExactly(thrown.getClass(),
                    () -> util.listWinFiles(collector, folder.toString(), false, false, null, false)));
        }
    }

    @Test
    void aCollectorWithoutTheMethodIsPassedOver() throws IOException {
        List<String> events = new ArrayList<>();
        FileErrorListener listener = (path, message) -> events.add(path);

        util.listWinFiles(new Deaf(), folder.toString(), true, true, listener, true);
        util.listWinFiles("no collector at all", folder.toString(), true, true, listener, true);
        assertEquals(List.of(), events);
    }

    @Test
    void aListenerHearsOfEachEntryWhoseDescriptorCannotBeRead() throws IOException {
        Remover collector = new Remover();
        List<String> events = new ArrayList<>();
        FileErrorListener listener = (path, message) -> {
            events.add(path);
            assertEquals(Witness.systemText(INVALID_PARAMETER), message);
        };
        util.listWinFiles(collector, folder.toString(), true, true, listener, true);

        assertEquals(5, collector.files().size());
        assertEquals(4, events.size());
        assertEquals(collector.withoutDescriptor(), events);
    }

    @Test
    void withoutAListenerTheEntriesAreDeliveredAllTheSame() throws IOException {
        Remover collector = new Remover();
        util.listWinFiles(collector, folder.toString(), true, true, null, true);

        assertEquals(5, collector.files().size());
        assertEquals(4, collector.withoutDescriptor().size());
    }

    @Test
    void aListenerWithoutTheMethodIsReportedAfterTheLastEntry() {
        Remover collector = new Remover();
        Throwable error = assertThrowsExactly(NoSuchMethodError.class,
                () -> util.listWinFiles(collector, folder.toString(), true, true, new Deaf(), true));

        assertTrue(error.getMessage().contains("fireFileErrorEvent"), error.getMessage());
        assertEquals(5, collector.files().size());
    }

    @Test
    void aListenerWithoutTheMethodDoesNoHarmWhereNothingIsReported() throws IOException {
        WinFileList collector = new WinFileList();
        util.listWinFiles(collector, folder.toString(), true, true, new Deaf(), true);

        assertEquals(5, collector.files().size());
    }

    @Test
    void whatAListenerThrowsEndsTheListing() {
        Remover collector = new Remover();
        IllegalStateException thrown = new IllegalStateException("enough");
        FileErrorListener listener = (path, message) -> {
            throw thrown;
        };
        assertSame(thrown, assertThrowsExactly(IllegalStateException.class,
                () -> util.listWinFiles(collector, folder.toString(), true, true, listener, true)));
        assertEquals(1, collector.files().size());
    }

    @Test
    void aCollectorMayListTheDirectoryItIsBeingGiven() throws IOException {
        List<Integer> counts = new ArrayList<>();
        WinFileList outer = new WinFileList() {
            @Override
            public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                    String securityDescriptor, boolean reparsePoint) {
                try {
                    counts.add(list(folder).size());
                } catch (IOException e) {
                    throw new AssertionError(e);
                }
            }
        };
        util.listWinFiles(outer, folder.toString(), false, false, null, false);

        assertEquals(List.of(5, 5, 5, 5, 5), counts);
    }
}
