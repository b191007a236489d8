package com.qarvo.winutil.bench;

/**
 * One way to do a job.
 *
 * @param name what the tables call it
 * @param pass does the job once and says how much it did; the same amount each time
 * @param check does the job once, off the clock, and fails when its result is wrong
 */
record Contender(String name, Pass pass, Check check) {
    /** The contender that all others are compared with. */
    static final String LIBRARY = "WinUtil64";
    static final String BARE = "bare";
    static final String LEAN = "lean";
    static final String NIO_STREAM = "java.nio stream";
    static final String NIO_WALK = "java.nio walk";
    static final String NIO_ACL = "java.nio ACL view";
    static final String NIO_FILES = "java.nio Files";
    static final String FILE_CHANNEL = "FileChannel";
    static final String FILE_INPUT_STREAM = "FileInputStream";
    static final String FILE_OUTPUT_STREAM = "FileOutputStream";
    static final String IO_FILE = "java.io File";
    static final String JNA_PLATFORM = "JNA platform";
    static final String JNA_DIRECT = "JNA direct";
    static final String EMPTY_DLL = "empty DLL";

    /** Does the job once. */
    interface Pass {
        long run() throws Exception;
    }

    /** Does the job once and compares what came out. */
    interface Check {
        void run() throws Exception;
    }

    /** The work of a pass gave something else than it should have. */
    static final class WrongResult extends Exception {
        private static final long serialVersionUID = 1;

        WrongResult(String message) {
            super(message);
        }
    }

    /** Fails unless two numbers are the same. */
    static void expect(String what, long expected, long actual) throws WrongResult {
        if (expected != actual) {
            throw new WrongResult(what + " is " + actual + ", expected " + expected);
        }
    }
}
