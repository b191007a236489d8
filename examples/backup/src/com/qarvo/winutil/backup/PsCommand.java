package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinProcessInfo;
import java.io.IOException;
import java.io.PrintWriter;
import java.util.Comparator;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** Lists running processes. */
@CommandLine.Command(name = "ps", description = {
    "Lists running processes with their sessions and accounts.",
    "Those that the system does not let this account look into are not shown,",
    "nor those whose account has no name."})
final class PsCommand implements Callable<Integer> {
    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Parameters(arity = "0..1", paramLabel = "FILTER", defaultValue = "",
            description = "File name of a program, such as java.exe, in any case; all processes without it.")
    private String filter;

    @Override
    public Integer call() {
        PrintWriter out = spec.commandLine().getOut();
        List<WinProcessInfo> processes = find();
        if (processes.isEmpty()) {
            out.println("No such process.");
            return Main.EXIT_ALL;
        }
        Table table = new Table().right("Process").right("Session").left("Account").left("Program");
        processes.stream().sorted(Comparator.comparingLong(WinProcessInfo::getProcessId)).forEach(process ->
                table.row(Long.toString(process.getProcessId()), Long.toString(process.getSessionId()),
                        Names.join(process.getDomainName(), process.getAccountName()), process.getExecutableName()));
        table.print(out);
        return Main.EXIT_ALL;
    }

    private List<WinProcessInfo> find() {
        try {
            return main.processes().list(filter);
        } catch (IOException e) {
            throw new ClientException("The processes cannot be listed: " + Reasons.of(e), e);
        }
    }
}
