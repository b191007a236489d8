package com.qarvo.winutil.backup;

import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** Sends one message to the message pipe. */
@CommandLine.Command(name = "send", description = {
    "Sends a message to the message pipe and waits for the answer. While the pipe is busy it waits up to 20"
        + " seconds for it, again and again for as long as other clients are faster.",
    "%nWhat comes of it is known in one case only: an answer that sorts before \"OK\", such as \"NO REPLY\", is"
        + " reported as a refusal, with exit code 1. In all other cases nothing can be said, and the exit code is 0:"
        + " \"OK\" and every answer that sorts behind it look the same as a pipe that nobody serves or that stays busy,"
        + " a message that could not be written, and an answer that never came."})
final class SendCommand implements Callable<Integer> {
    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Parameters(paramLabel = "MESSAGE", description = "The text to send; may be empty.")
    private String message;

    @Override
    public Integer call() {
        NativeMessages messages = main.messages();
        // Nothing to clean up, and the call that waits for the pipe cannot be interrupted.
        main.stop().finished();
        if (messages.isRefused(message)) {
            spec.commandLine().getErr().println("The server refused the message: its answer sorts before \"OK\".");
            return Main.EXIT_INCOMPLETE;
        }
        spec.commandLine().getOut().println("No refusal came back. Whether the message was delivered cannot be told.");
        return Main.EXIT_ALL;
    }
}
