package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.function.Supplier;
import picocli.CommandLine;
import picocli.CommandLine.Help.Ansi;

/**
 * A small backup client that shows how the library is used: lists, backs up, restores and verifies folder trees,
 * shows what the computer is made of and what runs on it, starts programs, and exchanges short messages between
 * processes.
 *
 * <p>Exit codes: 0 when everything was done, 1 when something was left out or differs, 2 when the command could not
 * be carried out.
 */
@CommandLine.Command(name = "backup-client", mixinStandardHelpOptions = false,
        description = "Backs up and restores folder trees through WinUtil64.dll.",
        subcommands = {ListCommand.class, BackupCommand.class, RestoreCommand.class, VerifyCommand.class,
            InventoryCommand.class, RunCommand.class, PsCommand.class, ServeCommand.class, SendCommand.class},
        exitCodeListHeading = "%nExit codes:%n",
        exitCodeList = {
            "0:Everything was done.",
            "1:Something was left out, or differs; each case is reported with its path and reason.",
            "2:The command could not be carried out; one sentence says why."})
public final class Main implements Runnable {
    static final int EXIT_ALL = 0;
    static final int EXIT_INCOMPLETE = 1;
    static final int EXIT_FAILED = 2;

    private final Natives natives;
    private final Passwords passwords;
    private final StopSignal stop;
    private NativeFiles files;

    @CommandLine.Spec
    private CommandLine.Model.CommandSpec spec;

    @CommandLine.Option(names = {"-h", "--help"}, usageHelp = true, scope = CommandLine.ScopeType.INHERIT,
            description = "Show this help.")
    private boolean help;

    private Main(Natives natives, Passwords passwords, StopSignal stop) {
        this.natives = natives;
        this.passwords = passwords;
        this.stop = stop;
    }

    /**
     * Runs the client and ends the JVM with its exit code.
     *
     * @param arguments the command line
     */
    public static void main(String[] arguments) {
        StopSignal stop = new StopSignal();
        stop.listen();
        PrintWriter out = Console.writer(System.out, "stdout.encoding");
        PrintWriter err = Console.writer(System.err, "stderr.encoding");
        int code = EXIT_FAILED;
        try {
            code = run(ofSystem(), Passwords.ofSystem(), stop, out, err, arguments);
        } finally {
            stop.finished();
        }
        System.exit(code);
    }

    /** Gives the native side of the system that this runs on. */
    static Natives ofSystem() {
        return new Natives(WindowsNativeFiles::new, WindowsNativeInventory::new, WindowsNativeMessages::new,
                WindowsNativeProcesses::new);
    }

    /** Runs one command; the system is only asked for when a command needs it. */
    static int run(Natives natives, Passwords passwords, StopSignal stop, PrintWriter out, PrintWriter err,
            String... arguments) {
        CommandLine line = new CommandLine(new Main(natives, passwords, stop));
        // Left to itself, the parser takes some environments without a terminal for one with colours.
        line.setColorScheme(CommandLine.Help.defaultColorScheme(Console.isTerminal() ? Ansi.AUTO : Ansi.OFF));
        line.setOut(out);
        line.setErr(err);
        line.setParameterExceptionHandler((e, unused) -> {
            err.println(withoutValues(e));
            err.println("Try " + e.getCommandLine().getCommandSpec().qualifiedName() + " --help.");
            return EXIT_FAILED;
        });
        line.setExecutionExceptionHandler((e, unused, result) -> {
            err.println(sentence(e));
            return EXIT_FAILED;
        });
        try {
            return line.execute(arguments);
        } catch (OutOfMemoryError | LinkageError e) {
            err.println("The Java virtual machine cannot go on: " + e);
            return EXIT_FAILED;
        }
    }

    @Override
    public void run() {
        throw new CommandLine.ParameterException(spec.commandLine(), "A command is missing.");
    }

    NativeFiles files() {
        if (files == null) {
            files = load(natives.files());
        }
        return files;
    }

    NativeInventory inventory() {
        return load(natives.inventory());
    }

    NativeProcesses processes() {
        return load(natives.processes());
    }

    NativeMessages messages() {
        return load(natives.messages());
    }

    Passwords passwords() {
        return passwords;
    }

    StopSignal stop() {
        return stop;
    }

    private static <T> T load(Supplier<T> natives) {
        try {
            return natives.get();
        } catch (UnsatisfiedLinkError e) {
            throw new ClientException(e.getMessage(), e);
        }
    }

    /** Gives a message that does not repeat the value of a misspelled option, which may be a password. */
    private static String withoutValues(CommandLine.ParameterException e) {
        if (e instanceof CommandLine.UnmatchedArgumentException unmatched) {
            for (String argument : unmatched.getUnmatched()) {
                if (argument.startsWith("-")) {
                    return "Unknown option: '" + optionName(argument) + "'";
                }
            }
        }
        return e.getMessage();
    }

    private static String optionName(String argument) {
        int end = argument.startsWith("--") ? argument.indexOf('=') : Math.min(2, argument.length());
        return end < 0 ? argument : argument.substring(0, end);
    }

    private static String sentence(Exception e) {
        return e instanceof ClientException ? e.getMessage() : "Something unforeseen went wrong: " + e;
    }
}
