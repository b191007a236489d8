package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.concurrent.Callable;
import java.util.function.Consumer;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** What the commands that move the content of files have in common. */
abstract class Command implements Callable<Integer> {
    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Mixin
    private TransferOptions options;

    NativeFiles files() {
        return main.files();
    }

    Passwords passwords() {
        return main.passwords();
    }

    /**
     * Runs a job and prints its summary.
     *
     * @param source the folder whose files the job reads
     * @param verb the first word of the summary
     * @param count words for what was reported
     * @param body the job
     * @return the exit code
     */
    int run(String source, String verb, String count, Consumer<Job> body) {
        PrintWriter out = spec.commandLine().getOut();
        PrintWriter err = spec.commandLine().getErr();
        Progress progress = new Progress(options.progressLine(Console.isTerminal(), out, err), System::nanoTime);
        Report report = new Report(err, progress);
        Transfer transfer = new Transfer(files(), progress, main.stop(), options.transfer(), source);
        try {
            body.accept(new Job(files(), transfer, progress, report, main.stop()));
        } finally {
            progress.clear();
        }
        String problems = report.count() == 0 ? "nothing " + count : report.count() + " " + count;
        out.println(verb + " " + progress.summary() + "; " + problems + ".");
        return report.count() == 0 ? Main.EXIT_ALL : Main.EXIT_INCOMPLETE;
    }
}
