package com.qarvo.winutil.backup;

import java.io.OutputStream;
import java.io.OutputStreamWriter;
import java.io.PrintWriter;
import java.nio.charset.Charset;
import java.nio.charset.IllegalCharsetNameException;
import java.nio.charset.StandardCharsets;
import java.nio.charset.UnsupportedCharsetException;

/** Where output goes, and in which characters. */
final class Console {
    private Console() {
    }

    /**
     * Makes a writer: in the charset that the named property says, else in that of the terminal, else in UTF-8, as
     * the JVM's own choice for files and pipes cannot hold all names.
     */
    static PrintWriter writer(OutputStream out, String property) {
        return new PrintWriter(new OutputStreamWriter(out, charset(System.getProperty(property))), true);
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
