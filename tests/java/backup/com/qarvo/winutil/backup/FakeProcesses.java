package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinProcessInfo;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.CountDownLatch;

/** Processes that a test puts together, and one program that can be started. */
final class FakeProcesses implements NativeProcesses {
    final List<WinProcessInfo> running = new ArrayList<>();
    /** What the program writes; reading may fail or block. */
    InputStream output = InputStream.nullInputStream();
    InputStream error = InputStream.nullInputStream();
    int exitCode;
    /** When the program ends. */
    CountDownLatch untilEnd = new CountDownLatch(0);
    /** The messages of what fails; null where it does not. */
    String startFailure;
    String waitFailure;
    String endFailure;
    String listFailure;

    /** What was asked for. */
    String commandLine;
    int session;
    String filter;
    volatile boolean ended;
    boolean closed;

    private final class FakeChild implements Child {
        @Override
        public InputStream output() {
            return output;
        }

        @Override
        public InputStream error() {
            return error;
        }

        @Override
        public int waitFor() throws IOException {
            fail(waitFailure);
            try {
                untilEnd.await();
            } catch (InterruptedException e) {
                throw new IOException(e);
            }
            return exitCode;
        }

        @Override
        public void end() throws IOException {
            ended = true;
            fail(endFailure);
        }

        @Override
        public void close() {
            closed = true;
        }
    }

    static InputStream bytes(int... values) {
        byte[] bytes = new byte[values.length];
        for (int i = 0; i < values.length; i++) {
            bytes[i] = (byte) values[i];
        }
        return new ByteArrayInputStream(bytes);
    }

    @Override
    public Child start(String line, int id) throws IOException {
        fail(startFailure);
        commandLine = line;
        session = id;
        return new FakeChild();
    }

    @Override
    public List<WinProcessInfo> list(String program) throws IOException {
        fail(listFailure);
        filter = program;
        return running;
    }

    private static void fail(String message) throws IOException {
        if (message != null) {
            throw new IOException(message);
        }
    }
}
