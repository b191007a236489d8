package com.qarvo.winutil.bench;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.LocalDate;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.stream.Collectors;

/** Collects what was measured and writes it: a table on the terminal, CSV, Markdown. */
final class Report {
    private final List<JobResult> results = new ArrayList<>();
    private final List<Figure> figures = new ArrayList<>();

    void add(JobResult result) {
        results.add(result);
        Job job = result.job();
        System.out.println(text("%s (%d rounds)", job.name(), result.rounds().size()));
        print("", job.contenders().get(0).name(), time(result, 0), "");
        figures.addAll(times(result));
        List<Figure> ratios = Aims.figures(result);
        for (int i = 1; i < job.contenders().size(); i++) {
            Figure ratio = ratios.get(i - 1);
            print(value(ratio), ratio.what(), time(result, i), verdict(ratio));
        }
        figures.addAll(ratios);
    }

    void add(List<Figure> more) {
        System.out.println(more.get(0).job());
        for (Figure figure : more) {
            print(value(figure), figure.what(), "", verdict(figure));
        }
        figures.addAll(more);
    }

    private static void print(String value, String what, String time, String verdict) {
        System.out.println(text("  %-24s %-24s %-24s %s", what, value, time, verdict).stripTrailing());
    }

    private static String time(JobResult result, int contender) {
        return text("%.2f us per %s", result.timePerUnit(contender).median(), result.job().unit());
    }

    private static List<Figure> times(JobResult result) {
        Job job = result.job();
        List<Figure> times = new ArrayList<>();
        for (int i = 0; i < job.contenders().size(); i++) {
            times.add(new Figure(job.name(), job.contenders().get(i).name(), "us per " + job.unit(),
                    result.timePerUnit(i), Double.NaN, result.rounds().size()));
        }
        return times;
    }

    List<Figure> missed() {
        return figures.stream().filter(figure -> figure.hasAim() && !figure.met()).toList();
    }

    long withAim() {
        return figures.stream().filter(Figure::hasAim).count();
    }

    private static String text(String format, Object... arguments) {
        return String.format(Locale.ROOT, format, arguments);
    }

    private static String value(Figure figure) {
        Quartiles value = figure.value();
        String unit = figure.unit().isEmpty() || figure.unit().equals("x") ? "" : " " + figure.unit();
        return text("%.2f (%.2f-%.2f)%s", value.median(), value.lower(), value.upper(), unit);
    }

    private static String verdict(Figure figure) {
        if (!figure.hasAim()) {
            return "";
        }
        return text("aim %.2f: %s", figure.aim(), figure.met() ? "met" : "MISSED");
    }

    static String versions() {
        String wine = Counters.wineVersion();
        return System.getProperty("java.vm.name") + " " + System.getProperty("java.vm.version") + ", "
                + (wine == null ? System.getProperty("os.name") : "Wine " + wine) + ", " + LocalDate.now();
    }

    /** One line per figure, and one line per round and contender. */
    void writeCsv(Path folder) throws IOException {
        Files.createDirectories(folder);
        try (PrintWriter out = new PrintWriter(Files.newBufferedWriter(folder.resolve("results.csv")))) {
            out.print("job,what,unit,median,lower quartile,upper quartile,aim,met,rounds\n");
            for (Figure figure : figures) {
                Quartiles value = figure.value();
                out.print(text("\"%s\",\"%s\",%s,%.6f,%.6f,%.6f,%s,%s,%d\n", figure.job(), figure.what(), figure.unit(),
                        value.median(), value.lower(), value.upper(),
                        figure.hasAim() ? text("%.2f", figure.aim()) : "",
                        figure.hasAim() ? (figure.met() ? "yes" : "no") : "", figure.rounds()));
            }
        }
        try (PrintWriter out = new PrintWriter(Files.newBufferedWriter(folder.resolve("rounds.csv")))) {
            out.print("job,contender,round,nanoseconds\n");
            for (JobResult result : results) {
                writeRounds(out, result);
            }
        }
    }

    private static void writeRounds(PrintWriter out, JobResult result) {
        for (int round = 0; round < result.rounds().size(); round++) {
            for (int i = 0; i < result.job().contenders().size(); i++) {
                out.print(text("\"%s\",\"%s\",%d,%d\n", result.job().name(), result.job().contenders().get(i).name(),
                        round + 1, result.rounds().get(round)[i]));
            }
        }
    }

    /** The table of the figures that have an aim, then the times of all contenders. */
    void writeMarkdown(Path file) throws IOException {
        try (PrintWriter out = new PrintWriter(Files.newBufferedWriter(file))) {
            out.print("# Benchmark\n\n");
            out.print("Time of the library over time of the other, taken inside each round: median (quartiles).\n");
            out.print("Measured with " + versions() + ", JVM and wineserver on one CPU.\n\n");
            out.print("| job | against | measured | aim | |\n|---|---|---|---|---|\n");
            for (Figure figure : figures) {
                if (figure.hasAim()) {
                    out.print(text("| %s | %s | %s | %.2f | %s |\n", figure.job(), figure.what(), value(figure),
                            figure.aim(), figure.met() ? "met" : "**missed**"));
                }
            }
            out.print("\nTime per unit in microseconds, median:\n\n");
            out.print("| job | unit | contenders |\n|---|---|---|\n");
            for (JobResult result : results) {
                out.print(text("| %s | %s | %s |\n", result.job().name(), result.job().unit(), timesText(result)));
            }
        }
    }

    private static String timesText(JobResult result) {
        return times(result).stream().map(time -> text("%s %.2f", time.what(), time.value().median()))
                .collect(Collectors.joining(", "));
    }
}
