package com.qarvo.winutil.bench;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.regex.Pattern;
import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.Option;

/** Compares the library with what people would use instead. */
@Command(name = "benchmark", mixinStandardHelpOptions = true, sortOptions = false, description = {
    "Compares WinUtil64.dll with java.nio, java.io and java-native-access, and with two floors: bare, the system"
            + " calls in a C++ loop without Java, and lean, the leanest native methods that make them.",
    "Needs -Dwinutil.library, -Dwinutil.bench.library and -Dwinutil.bench.empty with the three DLLs."})
public final class Benchmark implements Callable<Integer> {
    private static final int SMALL_BLOCK = 64 << 10;
    private static final int LARGE_BLOCK = 1 << 20;
    private static final int MEMORY_ROUNDS = 7;

    @Option(names = "--quick", description = "Tiny sizes, one round: checks the contenders, measures nothing.")
    private boolean quick;

    @Option(names = "--only", paramLabel = "REGEX", description = "Run the jobs whose name matches.")
    private Pattern only = Pattern.compile("");

    @Option(names = "--seconds", paramLabel = "N", description = "Time for each job (default: ${DEFAULT-VALUE}).")
    private int seconds = 30;

    @Option(names = "--data", paramLabel = "DIR", description = "Where the test files go (default: a new folder in the"
            + " temporary folder).")
    private Path data;

    @Option(names = "--many", paramLabel = "DIR", description = "A directory of 200000 files that is there already."
            + " Making one takes hours where each new name is compared with all the others, as Wine does.")
    private Path many;

    @Option(names = "--keep", description = "Leave the test files: the caller deletes the folder faster.")
    private boolean keep;

    @Option(names = "--csv", paramLabel = "DIR", description = "Write results.csv and rounds.csv.")
    private Path csv;

    @Option(names = "--markdown", paramLabel = "FILE", description = "Write the table.")
    private Path markdown;

    @Option(names = "--seed", paramLabel = "N", description = "Seed of the order of contenders.")
    private long seed = System.nanoTime();

    private final Report report = new Report();

    private Benchmark() {
    }

    /**
     * Runs the benchmark; exit code 1 when contenders disagree.
     *
     * @param arguments see --help
     */
    public static void main(String[] arguments) {
        System.exit(new CommandLine(new Benchmark()).execute(arguments));
    }

    @Override
    public Integer call() throws Exception {
        System.out.println(Report.versions());
        Path folder = data == null ? Files.createTempDirectory("winutil-bench") : Files.createDirectories(data);
        try {
            runAll(folder, quick ? Scale.QUICK : Scale.FULL);
        } catch (Contender.WrongResult e) {
            System.err.println("benchmark: contenders disagree: " + e.getMessage());
            return 1;
        } finally {
            if (!keep) {
                Tree.delete(folder);
            }
        }
        writeReports();
        return 0;
    }

    private void runAll(Path folder, Scale scale) throws Exception {
        Runner runner = new Runner(quick ? new Runner.Length(0, 1, 1, 0) : new Runner.Length(5, 11, 51, seconds), seed);
        if (wanted(Aims.LISTING)) {
            run(runner, List.of(ListingJobs.listing(Tree.mixed(folder, "listed", scale.listed()), scale.listed())));
        }
        if (wanted(Aims.SECURITY)) {
            run(runner, List.of(SecurityJob.listing(Tree.mixed(folder, "secured", scale.withSecurity()),
                    scale.withSecurity())));
        }
        runTransfers(runner, Tree.large(folder, "large.data", scale.transferred()), scale);
        try (SmallFileJobs jobs = new SmallFileJobs(Tree.smallFiles(folder, "small", scale.smallFiles()))) {
            run(runner, jobs.all());
        }
        if (wanted(Aims.MEMORY)) {
            Path listed = many != null ? many : Tree.plain(folder, "many", scale.manyEntries());
            add(new MemoryJob(listed, scale.manyEntries()).run(quick ? 1 : MEMORY_ROUNDS));
        }
        runLoad(scale);
    }

    private void runTransfers(Runner runner, Path large, Scale scale) throws Exception {
        run(runner, TransferJobs.all(large, scale.transferred(), SMALL_BLOCK));
        run(runner, TransferJobs.all(large, scale.transferred(), LARGE_BLOCK));
        Files.delete(large);
    }

    private void runLoad(Scale scale) throws Exception {
        String library = System.getProperty("winutil.library");
        Runner.Length length = new Runner.Length(0, Math.min(5, scale.loads()), scale.loads(), seconds);
        run(new Runner(length, seed), List.of(LoadJob.job(library, System.getProperty("winutil.bench.empty"))));
        if (wanted(Aims.LOAD)) {
            double kilobytes = Files.size(Path.of(library)) / 1000.0;
            add(List.of(new Figure("size of the DLL", "file", "KB",
                    new Quartiles(kilobytes, kilobytes, kilobytes), 400, 1)));
        }
    }

    private boolean wanted(String job) {
        return only.matcher(job).find();
    }

    private void run(Runner runner, List<Job> jobs) throws Exception {
        for (Job job : jobs) {
            if (wanted(job.name())) {
                JobResult result = runner.run(job);
                if (quick) {
                    System.out.println(job.name() + ": " + job.contenders().size() + " contenders agree");
                } else {
                    report.add(result);
                }
            }
        }
    }

    /** Figures of a quick run are not worth showing. */
    private void add(List<Figure> figures) {
        if (!quick) {
            report.add(figures);
        }
    }

    private void writeReports() throws IOException {
        if (quick) {
            return;
        }
        if (csv != null) {
            report.writeCsv(csv);
        }
        if (markdown != null) {
            report.writeMarkdown(markdown);
        }
        System.out.printf("%d of %d figures meet their aim.%n", report.withAim() - report.missed().size(),
                report.withAim());
    }
}
