package com.qarvo.winutil.backup;

import com.qarvo.winutil.backup.NativeProcesses.Child;
import java.io.IOException;
import java.io.InputStream;
import java.io.InputStreamReader;
import java.io.PrintWriter;
import java.nio.charset.Charset;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** Runs a program as the user of a session and passes on what it writes. */
@CommandLine.Command(name = "run", description = {
    "Runs a program as the user who is logged on in a session, and shows what it writes while it runs.",
    "Where the user is an administrator the program runs elevated, while its environment is the user's own: what it"
        + " finds by PATH, or by another variable that the user may set, then runs elevated too. Name it by its full"
        + " path.",
    "The program has no input. Only the local system account may start programs in sessions. An exit code other than 0"
        + " is reported, and makes that of this command 1; an interrupt ends the program."})
final class RunCommand implements Callable<Integer> {
    private static final int MILLISECONDS_BETWEEN_LOOKS = 100;

    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Option(names = "--as-session", required = true, paramLabel = "ID",
            description = "Session whose user the program runs as; \"ps\" shows those in use.")
    private int session;

    @Option(names = "--encoding", paramLabel = "NAME", description = {
        "Character set that the program writes in; by default that of the system."})
    private Charset encoding = Charset.forName(System.getProperty("native.encoding", "UTF-8"));

    @Parameters(arity = "1..*", paramLabel = "COMMAND",
            description = "Program and its arguments, after \"--\"; words with blanks are quoted for it.")
    private List<String> command;

    /** Waits for the end of the program, and keeps how it went. */
    private static final class Ending extends Thread {
        private final Child child;
        private volatile int code;
        private volatile IOException failure;

        Ending(Child child) {
            super("ending");
            this.child = child;
            setDaemon(true);
        }

        @Override
        public void run() {
            try {
                code = child.waitFor();
            } catch (IOException e) {
                failure = e;
            }
        }
    }

    /** A stream of the program that does not end before the program does: an empty write looks like an end. */
    private static final class WholeStream extends InputStream {
        private final InputStream from;
        private final Ending ending;

        WholeStream(InputStream from, Ending ending) {
            this.from = from;
            this.ending = ending;
        }

        @Override
        public int read() throws IOException {
            byte[] one = new byte[1];
            return read(one, 0, 1) < 0 ? -1 : one[0] & 0xFF;
        }

        @Override
        public int read(byte[] buffer, int offset, int length) throws IOException {
            int count = from.read(buffer, offset, length);
            while (count < 0 && ending.isAlive()) {
                await();
                count = from.read(buffer, offset, length);
            }
            // What was written behind the last empty write is still there after the end.
            return count < 0 ? from.read(buffer, offset, length) : count;
        }

        private void await() throws IOException {
            try {
                ending.join(MILLISECONDS_BETWEEN_LOOKS);
            } catch (InterruptedException e) {
                throw new IOException(e);
            }
        }
    }

    /** Shows one stream of the program until it ends. */
    private static final class Relay extends Thread {
        private static final int BLOCK = 4096;

        private final InputStreamReader from;
        private final PrintWriter to;
        private volatile IOException failure;

        Relay(String name, InputStream from, Charset encoding, PrintWriter to) {
            super(name);
            this.from = new InputStreamReader(from, encoding);
            this.to = to;
            // A program that has been left to itself may hold its streams open for ever.
            setDaemon(true);
        }

        @Override
        public void run() {
            char[] block = new char[BLOCK];
            try {
                for (int count = from.read(block); count >= 0; count = from.read(block)) {
                    to.write(block, 0, count);
                    to.flush();
                }
            } catch (IOException e) {
                failure = e;
            }
        }
    }

    @Override
    public Integer call() {
        PrintWriter out = spec.commandLine().getOut();
        PrintWriter err = spec.commandLine().getErr();
        try (Child child = start()) {
            Ending ending = new Ending(child);
            List<Relay> relays = List.of(
                    new Relay("output", new WholeStream(child.output(), ending), encoding, out),
                    new Relay("error", new WholeStream(child.error(), ending), encoding, err));
            ending.start();
            relays.forEach(Thread::start);
            waitFor(relays, ending, child);
            return outcome(relays, ending, err);
        }
    }

    private Child start() {
        try {
            return main.processes().start(ProgramWords.join(command), session);
        } catch (IOException e) {
            throw new ClientException("The program could not be started: " + Reasons.of(e), e);
        }
    }

    private void waitFor(List<Relay> relays, Ending ending, Child child) {
        List<Thread> threads = new ArrayList<>(relays);
        threads.add(ending);
        try {
            for (Thread thread : threads) {
                while (thread.isAlive()) {
                    thread.join(MILLISECONDS_BETWEEN_LOOKS);
                    main.stop().check();
                }
            }
        } catch (ClientException e) {
            end(child, e);
            throw e;
        } catch (InterruptedException e) {
            ClientException stopped = new ClientException("Stopped before the end.", e);
            end(child, stopped);
            throw stopped;
        }
    }

    private static void end(Child child, ClientException reason) {
        try {
            child.end();
        } catch (IOException e) {
            reason.addSuppressed(e);
        }
    }

    private static int outcome(List<Relay> relays, Ending ending, PrintWriter err) {
        int problems = 0;
        for (Relay relay : relays) {
            if (relay.failure != null) {
                err.println("The program's " + relay.getName() + " was lost: " + Reasons.of(relay.failure));
                problems++;
            }
        }
        if (ending.failure != null) {
            throw new ClientException("The program's exit code cannot be had: " + Reasons.of(ending.failure),
                    ending.failure);
        }
        if (ending.code != 0) {
            err.println("The program ended with exit code " + ending.code + ".");
            problems++;
        }
        return problems == 0 ? Main.EXIT_ALL : Main.EXIT_INCOMPLETE;
    }
}
