package com.qarvo.winutil.bench;

import static com.qarvo.winutil.bench.Contender.BARE;
import static com.qarvo.winutil.bench.Contender.EMPTY_DLL;
import static com.qarvo.winutil.bench.Contender.FILE_CHANNEL;
import static com.qarvo.winutil.bench.Contender.FILE_INPUT_STREAM;
import static com.qarvo.winutil.bench.Contender.FILE_OUTPUT_STREAM;
import static com.qarvo.winutil.bench.Contender.IO_FILE;
import static com.qarvo.winutil.bench.Contender.JNA_DIRECT;
import static com.qarvo.winutil.bench.Contender.JNA_PLATFORM;
import static com.qarvo.winutil.bench.Contender.NIO_ACL;
import static com.qarvo.winutil.bench.Contender.NIO_STREAM;
import static com.qarvo.winutil.bench.Contender.NIO_WALK;

import java.util.ArrayList;
import java.util.List;
import java.util.Map;

/** What is to be reached: the most that the library's time may be, as a part of another contender's. */
final class Aims {
    static final String LISTING = "listing, attributes";
    static final String SECURITY = "listing, SDDL";
    static final String READ_DIRECT = "read, direct buffer, ";
    static final String WRITE_DIRECT = "overwrite, direct buffer, ";
    static final String READ_ARRAY = "read, byte[], ";
    static final String WRITE_ARRAY = "overwrite, byte[], ";
    static final String SMALL_FILES = "open, read, close";
    static final String EXISTS = "exists";
    static final String ATTRIBUTES = "attribute word";
    static final String LAST_MODIFIED = "last-modified";
    static final String MEMORY = "memory of a long listing";
    static final String LOAD = "load in a fresh JVM";

    private static final String SMALL = "64 KiB";
    private static final String LARGE = "1 MiB";

    private static final Map<String, Map<String, Double>> AIMS = Map.ofEntries(
            Map.entry(LISTING, Map.of(BARE, 1.12, NIO_STREAM, 0.42, NIO_WALK, 1.06, JNA_PLATFORM, 0.80,
                    JNA_DIRECT, 0.80)),
            Map.entry(SECURITY, Map.of(BARE, 1.04, NIO_ACL, 0.30, JNA_PLATFORM, 0.65, JNA_DIRECT, 0.65)),
            Map.entry(READ_DIRECT + SMALL, Map.of(BARE, 1.02, FILE_CHANNEL, 1.00)),
            Map.entry(READ_DIRECT + LARGE, Map.of(BARE, 1.02, FILE_CHANNEL, 1.00)),
            Map.entry(WRITE_DIRECT + SMALL, Map.of(BARE, 1.02, FILE_CHANNEL, 1.00)),
            Map.entry(WRITE_DIRECT + LARGE, Map.of(BARE, 1.02, FILE_CHANNEL, 1.00)),
            Map.entry(READ_ARRAY + SMALL, Map.of(FILE_INPUT_STREAM, 1.14)),
            Map.entry(READ_ARRAY + LARGE, Map.of(FILE_INPUT_STREAM, 0.70)),
            Map.entry(WRITE_ARRAY + SMALL, Map.of(FILE_OUTPUT_STREAM, 1.00)),
            Map.entry(WRITE_ARRAY + LARGE, Map.of(FILE_OUTPUT_STREAM, 1.00)),
            Map.entry(SMALL_FILES, Map.of(BARE, 1.03, FILE_CHANNEL, 1.00)),
            Map.entry(EXISTS, Map.of(BARE, 1.06, IO_FILE, 0.96, JNA_PLATFORM, 0.88, JNA_DIRECT, 0.88)),
            Map.entry(ATTRIBUTES, Map.of(BARE, 1.06, JNA_PLATFORM, 0.88, JNA_DIRECT, 0.88)),
            Map.entry(LAST_MODIFIED, Map.of(BARE, 1.06, IO_FILE, 0.96, JNA_DIRECT, 0.88)),
            Map.entry(LOAD, Map.of(EMPTY_DLL, 1.5)));

    private Aims() {
    }

    /** The ratios of a job with their aims. */
    static List<Figure> figures(JobResult result) {
        Job job = result.job();
        Map<String, Double> aims = AIMS.getOrDefault(job.name(), Map.of());
        List<Figure> figures = new ArrayList<>();
        for (int i = 1; i < job.contenders().size(); i++) {
            String other = job.contenders().get(i).name();
            double aim = aims.getOrDefault(other, Double.NaN);
            figures.add(new Figure(job.name(), other, "x", result.ratio(i), aim, result.rounds().size()));
        }
        return figures;
    }
}
