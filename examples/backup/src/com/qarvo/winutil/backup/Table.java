package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.ArrayList;
import java.util.List;

/** Rows of text in columns as wide as what they hold. Text of the system is made fit for a terminal. */
final class Table {
    private static final String INDENT = "  ";

    private record Column(boolean right) {
    }

    private final List<Column> columns = new ArrayList<>();
    private final List<List<String>> rows = new ArrayList<>(List.of(new ArrayList<>()));

    Table left(String title) {
        return column(new Column(false), title);
    }

    Table right(String title) {
        return column(new Column(true), title);
    }

    /** Adds a row; an empty cell shows as a dash. */
    void row(String... cells) {
        List<String> row = new ArrayList<>();
        for (String cell : cells) {
            row.add(cell.isEmpty() ? "-" : Escapes.printable(cell));
        }
        rows.add(row);
    }

    void print(PrintWriter out) {
        for (List<String> row : rows) {
            StringBuilder line = new StringBuilder();
            for (int i = 0; i < columns.size(); i++) {
                String padding = " ".repeat(width(i) - length(row.get(i)));
                boolean right = columns.get(i).right();
                line.append(INDENT).append(right ? padding : "").append(row.get(i)).append(right ? "" : padding);
            }
            out.println(line.toString().stripTrailing());
        }
    }

    private Table column(Column column, String title) {
        columns.add(column);
        rows.get(0).add(title);
        return this;
    }

    private int width(int column) {
        return rows.stream().mapToInt(row -> length(row.get(column))).max().orElse(0);
    }

    private static int length(String text) {
        return text.codePointCount(0, text.length());
    }
}
