package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.io.StringWriter;

/** The example client on the system itself, run as from the command line but for the end of the JVM. */
public final class Client {
    private Client() {
    }

    /** What a command left: exit code, standard output and standard error, lines ended by line feeds. */
    public record Result(int code, String out, String err) {
    }

    public static Result run(Object... arguments) {
        StringWriter out = new StringWriter();
        StringWriter err = new StringWriter();
        String[] words = new String[arguments.length];
        for (int i = 0; i < words.length; i++) {
            words[i] = arguments[i].toString();
        }
        int code = Main.run(Main.ofSystem(), Passwords.ofSystem(), new StopSignal(), new PrintWriter(out, true),
                new PrintWriter(err, true), words);
        return new Result(code, out.toString().replace("\r\n", "\n"), err.toString().replace("\r\n", "\n"));
    }
}
