package com.qarvo.winutil.backup;

import java.io.OutputStream;
import java.io.OutputStreamWriter;
import java.io.PrintWriter;
import java.lang.management.ManagementFactory;
import java.nio.charset.Charset;
import java.nio.charset.IllegalCharsetNameException;
import java.nio.charset.StandardCharsets;
import java.nio.charset.UnsupportedCharsetException;

/** Where output goes, and in which characters. */
final class Console {
    private Console() {
    }

    /**
     * Makes a writer: in the charset that the command line says with the named property, else in that of the terminal,
     * else in UTF-8, as the JVM's own choice for files and pipes cannot hold all names.
     */
    static PrintWriter writer(OutputStream out, String property) {
        return new PrintWriter(new OutputStreamWriter(out, charset(given(property))), true);
    }

    /** What the command line says. The property alone does not tell: newer JVMs set it to their own choice. */
    private static String given(String property) {
        if (System.getProperty(property) == null) {
            return null;
        }
        String argument = "-D" + property + "=";
        return ManagementFactory.getRuntimeMXBean().getInputArguments().stream()
                .filter(given -> given.startsWith(argument)).map(given -> given.substring(argument.length()))
                .reduce((first, last) -> last).orElse(null);
    }

    /** Tells whether there is a terminal. Without a console the output goes elsewhere, or the JVM runs in Wine. */
    static boolean isTerminal() {
        java.io.Console console = System.console();
        if (console == null) {
            return false;
        }
        try {
            // Newer JVMs give a console in every case, and this method to ask it.
            return (Boolean) java.io.Console.class.getMethod("isTerminal").invoke(console);
        } catch (ReflectiveOperationException e) {
            return true;
        }
    }

    private static Charset charset(String named) {
        if (named != null) {
            try {
                return Charset.forName(named);
            } catch (IllegalCharsetNameException | UnsupportedCharsetException e) {
                return StandardCharsets.UTF_8;
            }
        }
        return isTerminal() ? System.console().charset() : StandardCharsets.UTF_8;
    }
}
