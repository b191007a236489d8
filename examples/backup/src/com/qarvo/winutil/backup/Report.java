package com.qarvo.winutil.backup;

import java.io.PrintWriter;

/** Tells the user at once what was left out, differs or is unknown, and counts it for summary and exit code. */
final class Report {
    private final PrintWriter err;
    private final Progress progress;
    private long count;

    Report(PrintWriter err, Progress progress) {
        this.err = err;
        this.progress = progress;
    }

    void leftOut(String path, String reason) {
        print("left out", path, reason);
    }

    void differs(String path, String reason) {
        print("differs", path, reason);
    }

    void unknown(String path, String reason) {
        print("unknown", path, reason);
    }

    /** Tells how a job that ended early has left things; the sentence that says why comes after it. */
    void endedEarly(String state) {
        print(state);
    }

    long count() {
        return count;
    }

    private void print(String what, String path, String reason) {
        count++;
        print(what + ": " + Escapes.printable(path) + ": " + reason);
    }

    private void print(String line) {
        progress.clear();
        err.println(line);
        err.flush();
    }
}
