package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** Serves the message pipe. */
@CommandLine.Command(name = "serve", description = {
    "Waits for clients of the message pipe, answers each of their messages with \"OK\", and shows the last message of"
        + " each client.",
    "%nWhat is shown is not the whole message. Its bytes are taken up to the first zero, as UTF-8; what send sends is"
        + " UTF-16, and of an English text its first character is left. A message that is shorter than the one before"
        + " it keeps that one's end behind it.",
    "%nWhere nothing is shown, one of these has happened, and they cannot be told apart: a client sent an empty"
        + " message, or none; it came before the pipe was ready; or the pipe could not be made. A message of more than"
        + " 8192 bytes, 4095 characters of send, is shown and gets no answer.",
    "%nBetween two clients there is no pipe for a moment, and a send is lost then without a word."})
final class ServeCommand implements Callable<Integer> {
    private static final String NOTHING = "Nothing arrived: the message was empty or missing, the client came too"
            + " early, or the pipe could not be made.";

    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Option(names = "--clients", paramLabel = "COUNT", defaultValue = "1",
            description = "End after so many clients (default: ${DEFAULT-VALUE}).")
    private int clients;

    @Override
    public Integer call() {
        if (clients < 1) {
            throw new ParameterException(spec.commandLine(), "Invalid value for option '--clients': '" + clients
                    + "' is not a number from 1 on");
        }
        NativeMessages messages = main.messages();
        PrintWriter out = spec.commandLine().getOut();
        // Nothing to clean up, and the call that waits for a client cannot be interrupted.
        main.stop().finished();
        out.println("Serving " + messages.pipe() + ".");
        int code = Main.EXIT_ALL;
        for (int client = 0; client < clients; client++) {
            String message = messages.serve();
            if (message.isEmpty()) {
                spec.commandLine().getErr().println(NOTHING);
                code = Main.EXIT_INCOMPLETE;
            } else {
                out.println("Received: " + Escapes.printable(message));
            }
        }
        return code;
    }
}
