package com.qarvo.winutil.bench;

import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/**
 * What a long listing holds while it runs and leaves behind. Both the library and the bare loop are sampled at every
 * thousandth entry; what the system itself keeps of a directory that is being listed is in both.
 */
final class MemoryJob {
    private static final int SAMPLE_INTERVAL = 1000;
    private static final double MEBIBYTE = 1 << 20;

    private final WindowsUtil util = new WindowsUtil();
    private final String directory;
    private final int entries;

    MemoryJob(Path directory, int entries) {
        this.directory = directory.toString();
        this.entries = entries;
    }

    /** Drops every entry, so that what stays is the listing's own. */
    public static final class Sink {
        private long count;
        private long peak;

        public void addFile(String path, boolean directory, long size, long lastModified, int attributes,
                String securityDescriptor, boolean reparsePoint) {
            if (++count % SAMPLE_INTERVAL == 0) {
                peak = Math.max(peak, Counters.privateBytes());
            }
        }
    }

    List<Figure> run(int rounds) throws Exception {
        double[] heap = new double[rounds];
        double[] peak = new double[rounds];
        double[] handles = new double[rounds];
        listLibrary();
        listBare();
        for (int i = 0; i < rounds; i++) {
            boolean bareFirst = i % 2 == 0;
            long bare = bareFirst ? listBare() : 0;
            long heapBefore = liveHeap();
            long handlesBefore = openHandles();
            long library = listLibrary();
            handles[i] = openHandles() - handlesBefore;
            heap[i] = (liveHeap() - heapBefore) / MEBIBYTE;
            bare = bareFirst ? bare : listBare();
            peak[i] = (library - bare) / MEBIBYTE;
        }
        List<Figure> figures = new ArrayList<>();
        figures.add(new Figure(Aims.MEMORY, "live Java heap, more", "MiB", Quartiles.of(heap), 0.2, rounds));
        figures.add(new Figure(Aims.MEMORY, "native peak above bare", "MiB", Quartiles.of(peak), 0.5, rounds));
        figures.add(new Figure(Aims.MEMORY, "handles left", "", Quartiles.of(handles), 0, rounds));
        return figures;
    }

    private static long openHandles() throws Contender.WrongResult {
        long count = Counters.openHandles();
        if (count <= 0) {
            throw new Contender.WrongResult("the number of open handles is " + count);
        }
        return count;
    }

    private static long liveHeap() {
        Runtime runtime = Runtime.getRuntime();
        System.gc();
        return runtime.totalMemory() - runtime.freeMemory();
    }

    /** Returns how far the listing raised the memory of the process, in bytes. */
    private long listLibrary() throws IOException, Contender.WrongResult {
        Sink sink = new Sink();
        long before = Counters.privateBytes();
        util.listWinFiles(sink, directory, false, true, null, false);
        Contender.expect("the number of entries", entries, sink.count);
        return sink.peak - before;
    }

    private long listBare() {
        long before = Counters.privateBytes();
        return Bare.peakOfList(directory) - before;
    }
}
