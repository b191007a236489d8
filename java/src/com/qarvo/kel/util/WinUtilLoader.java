package com.qarvo.kel.util;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.net.URI;
import java.net.URISyntaxException;
import java.net.URL;
import java.nio.file.FileSystemNotFoundException;
import java.nio.file.Paths;
import java.security.CodeSource;
import java.util.Locale;

/**
 * Finds WinUtil64.dll and loads it. What goes wrong is kept and told again at every further attempt: an error thrown
 * out of a static initialiser would reach the first caller only, and all later ones would get a NoClassDefFoundError
 * that says nothing.
 *
 * <p>A service should not search: whoever can write to a folder that is searched can have code of their own run under
 * its account. It names the DLL by its full path, in a folder that only administrators can write to.
 */
final class WinUtilLoader {
    static final String DLL_NAME = "WinUtil64.dll";
    static final String PROPERTY = "winutil.library";

    private static final int DOS_HEADER_SIZE = 0x40;
    private static final int OFFSET_OF_PE_OFFSET = 0x3C;
    private static final int DOS_MAGIC = 0x5A4D; // "MZ"
    private static final int PE_MAGIC = 0x00004550; // "PE", 0, 0
    private static final int MACHINE_X86 = 0x014C;
    private static final int MACHINE_X64 = 0x8664;
    private static final int MACHINE_ARM64 = 0xAA64;
    private static final int OFFSET_OF_MACHINE = 4;
    private static final int OFFSET_OF_CHARACTERISTICS = 22;
    private static final int IMAGE_FILE_DLL = 0x2000;

    /** What went wrong, null when the DLL is loaded. Set once, under the lock of class initialisation. */
    private static final String PROBLEM = tryLoad();

    private WinUtilLoader() {
    }

    /** Returns when the DLL is loaded; throws the same clear error each time when it cannot be. */
    static void load() {
        if (PROBLEM != null) {
            throw new UnsatisfiedLinkError(PROBLEM);
        }
    }

    private static String tryLoad() {
        try {
            String problem = platformProblem(System.getProperty("os.name", ""), System.getProperty("os.arch", ""));
            if (problem != null) {
                return problem;
            }
            Location location = find(System.getProperty(PROPERTY), folderOfJar(),
                    System.getProperty("java.library.path", ""));
            return location.problem != null ? location.problem : loadFile(location.file);
        } catch (SecurityException e) {
            return DLL_NAME + " cannot be loaded because the security manager forbids it: " + e.getMessage();
        }
    }

    /** Says what is wrong with the system or the JVM, null when the DLL can run there. */
    static String platformProblem(String osName, String osArch) {
        if (!osName.startsWith("Windows")) {
            return DLL_NAME + " can only be loaded on Windows, and this system is " + osName + ".";
        }
        String arch = osArch.toLowerCase(Locale.ROOT);
        if (!arch.equals("amd64") && !arch.equals("x86_64")) {
            return DLL_NAME + " needs a 64-bit Java virtual machine for x64, and this one is for " + osArch + ".";
        }
        return null;
    }

    /** A file to load, or what keeps one from being found. */
    static final class Location {
        final File file;
        final String problem;

        private Location(File file, String problem) {
            this.file = file;
            this.problem = problem;
        }
    }

    /**
     * Looks for the DLL: the file that the property names with its full path and no other, when it is set; else beside
     * the jar; else in each folder of the library path.
     */
    static Location find(String property, File folderOfJar, String libraryPath) {
        if (property != null && !property.isEmpty()) {
            File named = new File(property);
            String problem = nameProblem(named);
            return problem == null ? new Location(named, null) : new Location(null,
                    DLL_NAME + " cannot be loaded because -D" + PROPERTY + " names " + property + ", which is "
                            + problem + ".");
        }
        StringBuilder lookedIn = new StringBuilder();
        if (folderOfJar != null) {
            File beside = new File(folderOfJar, DLL_NAME).getAbsoluteFile();
            if (beside.isFile()) {
                return new Location(beside, null);
            }
            lookedIn.append(folderOfJar.getAbsolutePath()).append(" (beside the jar) and not in ");
        }
        for (String folder : libraryPath.split(File.pathSeparator)) {
            File inPath = new File(folder.isEmpty() ? "." : folder, DLL_NAME).getAbsoluteFile();
            if (inPath.isFile()) {
                return new Location(inPath, null);
            }
        }
        lookedIn.append("the folders of java.library.path (").append(libraryPath).append(')');
        return new Location(null, DLL_NAME + " is missing: it is not in " + lookedIn + ", and -D" + PROPERTY
                + "=FILE does not say where it is.");
    }

    /** Says what keeps a name from being that of the DLL, null when nothing does. */
    private static String nameProblem(File named) {
        // It would depend on the current folder or drive, which whoever starts the program chooses.
        if (!named.isAbsolute()) {
            return "not a full path";
        }
        if (named.isFile()) {
            return null;
        }
        return named.exists() ? "not a file" : "missing";
    }

    /** The folder that holds the jar (or the folder of classes) that this class came from, null when unknown. */
    private static File folderOfJar() {
        CodeSource source = WinUtilLoader.class.getProtectionDomain().getCodeSource();
        return source == null ? null : folderOf(source.getLocation());
    }

    static File folderOf(URL codeSource) {
        if (codeSource == null) {
            return null;
        }
        try {
            // Not new File(URI): it refuses a jar on a network share.
            return Paths.get(new URI(codeSource.toString())).toFile().getAbsoluteFile().getParentFile();
        } catch (URISyntaxException | IllegalArgumentException | FileSystemNotFoundException
                | UnsupportedOperationException e) {
            return null;
        }
    }

    private static String loadFile(File file) {
        try {
            System.load(file.getPath());
            return null;
        } catch (UnsatisfiedLinkError e) {
            String problem = fileProblem(file);
            return problem != null ? problem : DLL_NAME + " cannot be loaded: " + e.getMessage();
        }
    }

    /** Says why a file is no DLL for 64-bit Windows, null when it looks like one. */
    static String fileProblem(File file) {
        try (RandomAccessFile in = new RandomAccessFile(file, "r")) {
            String reason = imageProblem(in);
            return reason == null ? null : file + " is not a DLL for 64-bit Windows (x64): " + reason + ".";
        } catch (IOException e) {
            return file + " cannot be read: " + e.getMessage();
        }
    }

    private static String imageProblem(RandomAccessFile in) throws IOException {
        if (in.length() < DOS_HEADER_SIZE || littleEndian(in, 0, 2) != DOS_MAGIC) {
            return "it is no Windows program file at all";
        }
        long header = littleEndian(in, OFFSET_OF_PE_OFFSET, 4);
        if (header + OFFSET_OF_CHARACTERISTICS + 2 > in.length() || littleEndian(in, header, 4) != PE_MAGIC) {
            return "its header is damaged or cut off";
        }
        int machine = (int) littleEndian(in, header + OFFSET_OF_MACHINE, 2);
        if (machine != MACHINE_X64) {
            return "it is for " + machineName(machine);
        }
        boolean dll = (littleEndian(in, header + OFFSET_OF_CHARACTERISTICS, 2) & IMAGE_FILE_DLL) != 0;
        return dll ? null : "it is a program, not a library";
    }

    private static String machineName(int machine) {
        switch (machine) {
            case MACHINE_X86:
                return "32-bit Windows (x86)";
            case MACHINE_ARM64:
                return "Windows on ARM64";
            default:
                return String.format("another processor (machine type 0x%04X)", machine);
        }
    }

    private static long littleEndian(RandomAccessFile in, long offset, int size) throws IOException {
        byte[] bytes = new byte[size];
        in.seek(offset);
        in.readFully(bytes);
        long value = 0;
        for (int i = size - 1; i >= 0; i--) {
            value = value << 8 | bytes[i] & 0xFF;
        }
        return value;
    }
}
