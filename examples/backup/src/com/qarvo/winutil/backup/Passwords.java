package com.qarvo.winutil.backup;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.function.Function;
import java.util.function.UnaryOperator;

/**
 * Where passwords come from: a variable of the environment, a file, or someone at the console. A command line has none,
 * as everyone can read it. No message repeats the name of a variable or a file: it might be the password itself, given
 * in the wrong place.
 *
 * @param environment gives a variable, null when it is not set
 * @param console asks a question and gives what was typed unseen; null when there is nobody to ask
 */
record Passwords(UnaryOperator<String> environment, Function<String, char[]> console) {
    private static final int LONGEST_FILE = 4096;

    static Passwords ofSystem() {
        java.io.Console console = Console.isTerminal() ? System.console() : null;
        return new Passwords(System::getenv, console == null ? null : question -> console.readPassword("%s", question));
    }

    String fromEnvironment(String name) {
        String password = environment.apply(name);
        if (password == null) {
            throw new ClientException("The variable that --password-env names is not set.");
        }
        return checked(password);
    }

    /** Reads the one line of a file. */
    String fromFile(String path) {
        byte[] bytes;
        try (InputStream in = Files.newInputStream(Path.of(path))) {
            bytes = in.readNBytes(LONGEST_FILE + 1);
        } catch (IOException | InvalidPathException | SecurityException e) {
            throw new ClientException("The file that --password-file names cannot be read.");
        }
        if (bytes.length > LONGEST_FILE) {
            throw new ClientException("The file that --password-file names is too long for a password.");
        }
        String text = new String(bytes, StandardCharsets.ISO_8859_1);
        Arrays.fill(bytes, (byte) 0);
        return checked(text.replaceFirst("\r?\n\\z", ""));
    }

    String fromConsole(Account account) {
        if (console == null) {
            throw new ClientException("There is no console to ask for the password; use --password-env or"
                    + " --password-file.");
        }
        char[] typed = console.apply("Password of " + account + ": ");
        if (typed == null) {
            throw new ClientException("No password was given.");
        }
        String password = new String(typed);
        Arrays.fill(typed, ' ');
        return checked(password);
    }

    private static String checked(String password) {
        if (password.isEmpty()) {
            throw new ClientException("The password is empty.");
        }
        if (!isPlainAscii(password)) {
            throw new ClientException("The password has a line break or a character that is not ASCII; the library"
                    + " cannot log on with it.");
        }
        return password;
    }

    /** Tells whether the library takes a text as part of an account. */
    static boolean isPlainAscii(String text) {
        return text.chars().allMatch(c -> c >= ' ' && c <= '~');
    }
}
