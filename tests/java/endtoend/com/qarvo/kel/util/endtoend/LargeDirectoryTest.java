package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import org.junit.jupiter.api.Test;

/** A directory of 50,000 entries. That no local reference is kept is what checked mode watches over as well. */
class LargeDirectoryTest extends EndToEnd {
    private static final int ENTRIES = 50_000;
    private static final int EARLY = 1_000;

    // The strings of the entries between the two measurements would take ten times as much.
    private static final long ROOM = 1 << 20;

    /** Keeps a sum of what it was given, and nothing of it. */
    public static class Counter {
        int count;
        int namesAsExpected;
        long heapEarly;
        long heapLate;

        public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint) {
            count++;
            if (path.endsWith(".txt") && !directory && size == 0 && attributes == ARCHIVE) {
                namesAsExpected++;
            }
            if (count == EARLY) {
                heapEarly = usedHeap();
            } else if (count == ENTRIES) {
                heapLate = usedHeap();
            }
        }

        private static long usedHeap() {
            System.gc();
            return Runtime.getRuntime().totalMemory() - Runtime.getRuntime().freeMemory();
        }
    }

    @Test
    void aListingKeepsNothingOfTheEntriesItHasDelivered() throws IOException {
        Counter counter = new Counter();
        util.listWinFiles(counter, fixture("many"), false, true, null, false);

        assertEquals(ENTRIES, counter.count);
        assertEquals(ENTRIES, counter.namesAsExpected);
        assertTrue(counter.heapLate - counter.heapEarly < ROOM,
                "the heap grew by " + (counter.heapLate - counter.heapEarly) + " bytes");
    }

    @Test
    void everyNameIsDeliveredOnce() throws IOException {
        assertEquals(ENTRIES, list(fixture("many")).stream().map(file -> file.getName()).distinct().count());
    }
}
