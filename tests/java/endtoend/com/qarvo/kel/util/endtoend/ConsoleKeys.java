package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/** Reads keys from the console that this process has, and leaves their numbers in a file. */
final class ConsoleKeys {
    private ConsoleKeys() {
    }

    public static void main(String[] arguments) throws IOException {
        WindowsUtil util = new WindowsUtil();
        StringBuilder keys = new StringBuilder();
        for (int count = Integer.parseInt(arguments[1]); count > 0; count--) {
            keys.append(util.getConsoleChar()).append(' ');
        }
        Files.writeString(Path.of(arguments[0]), keys.toString().strip());
    }
}
