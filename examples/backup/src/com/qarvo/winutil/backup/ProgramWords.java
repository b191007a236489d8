package com.qarvo.winutil.backup;

import java.util.List;

/** The words of a command, as one Windows command line. */
final class ProgramWords {
    private ProgramWords() {
    }

    /** Quotes each word that needs it, by the rules with which most programs take their command line apart again. */
    static String join(List<String> words) {
        StringBuilder line = new StringBuilder();
        for (String word : words) {
            if (!line.isEmpty()) {
                line.append(' ');
            }
            append(line, word);
        }
        return line.toString();
    }

    private static void append(StringBuilder line, String word) {
        if (!word.isEmpty() && word.chars().noneMatch(c -> c == ' ' || c == '\t' || c == '"')) {
            line.append(word);
            return;
        }
        line.append('"');
        int backslashes = 0;
        for (int i = 0; i < word.length(); i++) {
            char c = word.charAt(i);
            if (c == '"') {
                // Backslashes are doubled in front of a quote, and nowhere else.
                line.append("\\".repeat(backslashes + 1));
            }
            backslashes = c == '\\' ? backslashes + 1 : 0;
            line.append(c);
        }
        line.append("\\".repeat(backslashes)).append('"');
    }
}
