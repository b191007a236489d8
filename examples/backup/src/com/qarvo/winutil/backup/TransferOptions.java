package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.Locale;
import picocli.CommandLine.ITypeConverter;
import picocli.CommandLine.Option;
import picocli.CommandLine.TypeConversionException;

/** The options of the commands that move the content of files. */
final class TransferOptions {
    @Option(names = "--block-size", paramLabel = "SIZE", defaultValue = "256K", converter = BlockSize.class,
            description = "Bytes read at a time, as a number with or without K or M, from 512 to 64M;"
                    + " default: ${DEFAULT-VALUE}.")
    private int blockSize;

    @Option(names = "--unbuffered",
            description = "Read past the system's cache; the block size must be a multiple of the sector size.")
    private boolean unbuffered;

    @Option(names = "--progress", negatable = true,
            description = "Show what is going on, with the errors, or do not; by default it is shown on a terminal.")
    private Boolean progress;

    Transfer.Options transfer() {
        return new Transfer.Options(blockSize, unbuffered);
    }

    /**
     * Gives where progress is shown, null for nowhere. Nothing tells whether the errors go to a terminal or a file, so
     * that it is only shown with them when someone asks for it.
     *
     * @param terminal whether standard output is a terminal
     */
    PrintWriter progressLine(boolean terminal, PrintWriter out, PrintWriter err) {
        if (progress == null) {
            return terminal ? out : null;
        }
        return progress ? err : null;
    }

    /** Reads sizes such as 4096, 64K and 1M. */
    static final class BlockSize implements ITypeConverter<Integer> {
        private static final int SMALLEST = 512;
        private static final int LARGEST = 64 << 20;
        private static final int KILO_SHIFT = 10;
        private static final int MEGA_SHIFT = 20;

        @Override
        public Integer convert(String text) {
            String upper = text.toUpperCase(Locale.ROOT);
            int shift = upper.endsWith("M") ? MEGA_SHIFT : upper.endsWith("K") ? KILO_SHIFT : 0;
            String digits = shift == 0 ? upper : upper.substring(0, upper.length() - 1);
            long size = digits.matches("[0-9]{1,8}") ? Long.parseLong(digits) << shift : 0;
            if (size < SMALLEST || size > LARGEST) {
                throw new TypeConversionException("'" + text + "' is not a size from 512 to 64M");
            }
            return (int) size;
        }
    }
}
