package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.Locale;
import java.util.function.LongSupplier;

/** Counts what was moved, and shows it on one line of a terminal that is overwritten a few times a second. */
final class Progress {
    private static final long NANOS_BETWEEN_LINES = 200_000_000L;
    private static final double NANOS_PER_SECOND = 1e9;
    private static final double BYTES_PER_MEGABYTE = 1e6;
    private static final int WIDTH = 79;

    private final PrintWriter terminal;
    private final LongSupplier nanoTime;
    private final long start;
    private long nextLine;
    private boolean shown;
    private String path = "";
    private long files;
    private long directories;
    private long links;
    private long bytes;
    private long bytesBefore;

    /**
     * Starts counting.
     *
     * @param terminal where the line is shown, null for nowhere
     * @param nanoTime the clock
     */
    Progress(PrintWriter terminal, LongSupplier nanoTime) {
        this.terminal = terminal;
        this.nanoTime = nanoTime;
        this.start = nanoTime.getAsLong();
        this.nextLine = start;
    }

    /** Notes that a file is begun. */
    void at(String currentPath) {
        path = currentPath;
        bytesBefore = bytes;
        show();
    }

    void countBytes(long count) {
        bytes += count;
        show();
    }

    /** Forgets the bytes of the file that was begun last: it is not going to be counted. */
    void takeBack() {
        bytes = bytesBefore;
    }

    void countFile() {
        files++;
    }

    void countDirectory() {
        directories++;
    }

    void countLink() {
        links++;
    }

    /** Wipes the line away, so that something else can be printed. */
    void clear() {
        if (shown) {
            terminal.print("\r" + " ".repeat(WIDTH) + "\r");
            terminal.flush();
            shown = false;
        }
    }

    /** Gives the counts, the time and the rate. */
    String summary() {
        double seconds = seconds();
        return String.format(Locale.ROOT, "%d files, %d folders, %d links, %d bytes in %.2f s (%.1f MB/s)", files,
                directories, links, bytes, seconds, rate(seconds));
    }

    private void show() {
        if (terminal == null) {
            return;
        }
        long now = nanoTime.getAsLong();
        if (now - nextLine < 0) {
            return;
        }
        nextLine = now + NANOS_BETWEEN_LINES;
        String counts = String.format(Locale.ROOT, "%d files  %.1f MB  %.1f MB/s  ", files,
                bytes / BYTES_PER_MEGABYTE, rate(seconds()));
        String line = counts + tail(Escapes.printable(path), WIDTH - counts.length());
        terminal.print("\r" + line + " ".repeat(Math.max(0, WIDTH - line.length())));
        terminal.flush();
        shown = true;
    }

    private double seconds() {
        return (nanoTime.getAsLong() - start) / NANOS_PER_SECOND;
    }

    private double rate(double seconds) {
        return seconds > 0 ? bytes / BYTES_PER_MEGABYTE / seconds : 0;
    }

    private static String tail(String text, int length) {
        return text.length() <= length ? text : "..." + text.substring(text.length() - Math.max(0, length - 3));
    }
}
