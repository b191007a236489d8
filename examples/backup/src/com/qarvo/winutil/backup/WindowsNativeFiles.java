package com.qarvo.winutil.backup;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.DosFileAttributeView;
import java.util.function.BiConsumer;
import java.util.function.Consumer;

import com.qarvo.kel.util.FileErrorListener;
import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.kel.util.WindowsUtil;

/**
 * The system as the native methods of {@link WindowsUtil} give it.
 *
 * <p>Most paths are passed on in extended form. It has no limit of 260 characters, and the system takes it as it is:
 * in "C:\a\b." it would otherwise drop the last dot and open another file.
 */
final class WindowsNativeFiles implements NativeFiles {
    private static final String EXTENDED = "\\\\?\\";
    private static final String EXTENDED_UNC = "\\\\?\\UNC\\";
    private static final int CLASSIC_LIMIT = 248;

    private final WindowsUtil util = new WindowsUtil();
    private boolean setsAttributes = true;
    private boolean makesLinks = true;

    @Override
    public String absolutePath(String path) {
        try {
            String plain = withoutExtended(path);
            if (plain.isEmpty()) {
                throw new InvalidPathException(path, "it is empty");
            }
            return Path.of(plain).toAbsolutePath().normalize().toString();
        } catch (InvalidPathException e) {
            throw new ClientException("\"" + Escapes.printable(path) + "\" is not a path: " + e.getReason() + ".", e);
        }
    }

    @Override
    public String realPath(String path) {
        Path existing = Path.of(path);
        String rest = "";
        while (existing != null) {
            try {
                return Names.join(existing.toRealPath().toString(), rest);
            } catch (IOException e) {
                Path name = existing.getFileName();
                rest = name == null ? rest : Names.join(name.toString(), rest);
                existing = existing.getParent();
            }
        }
        return path;
    }

    @Override
    public void list(String directory, boolean withSecurity, Consumer<WinFile> entries,
            BiConsumer<String, String> errors) throws IOException {
        WinFileList found = new WinFileList();
        FileErrorListener listener = (path, reason) -> {
            if (!needsExtended(path)) {
                errors.accept(path, reason);
            }
        };
        try {
            util.listWinFiles(found, directory, withSecurity, true, listener, true);
        } finally {
            for (WinFile entry : found.files()) {
                entries.accept(withSecurity && needsExtended(entry.getPath()) ? secured(entry, errors) : entry);
            }
        }
    }

    @Override
    public WinFile entry(String path, boolean withSecurity) throws IOException {
        return util.WinFile(extended(path), withSecurity, true);
    }

    @Override
    public boolean exists(String path) {
        return util.exists(extended(path));
    }

    @Override
    public long lastModified(String path) {
        return util.lastModified(extended(path));
    }

    @Override
    public int sectorSize(String path) {
        return util.getSectorSize(path);
    }

    @Override
    public long address(ByteBuffer directBuffer) {
        return util.GetDirectBufferAddress(directBuffer);
    }

    @Override
    public long open(String path, boolean unbuffered) throws IOException {
        int flags = Win32.FILE_FLAG_BACKUP_SEMANTICS
                | (unbuffered ? Win32.FILE_FLAG_NO_BUFFERING : Win32.FILE_FLAG_SEQUENTIAL_SCAN);
        return util.createFileNC(extended(path), Win32.GENERIC_READ, Win32.OPEN_EXISTING, flags);
    }

    @Override
    public long create(String path, long size) throws IOException {
        int flags = Win32.FILE_ATTRIBUTE_NORMAL | Win32.FILE_FLAG_SEQUENTIAL_SCAN;
        return util.createFileNC(extended(path), Win32.GENERIC_WRITE, Win32.CREATE_NEW, flags, size);
    }

    @Override
    public long size(long file) throws IOException {
        return util.getFileSize(file);
    }

    @Override
    public long position(long file) throws IOException {
        return util.getFilePosition(file);
    }

    @Override
    public int read(long file, ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException {
        return util.read(file, buffer, offset, length, sectorSize);
    }

    @Override
    public void write(long file, ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException {
        util.write(file, buffer, offset, length, sectorSize);
    }

    @Override
    public void close(long file) {
        util.closeFile(file);
    }

    @Override
    public void flushToDisk(String path) throws IOException {
        try (FileChannel channel = FileChannel.open(Path.of(path), StandardOpenOption.WRITE)) {
            channel.force(true);
        }
    }

    @Override
    public boolean delete(String path) {
        return util.delete(extended(path));
    }

    @Override
    public boolean rename(String from, String to) {
        return util.renameTo(extended(from), extended(to));
    }

    @Override
    public boolean makeDirectory(String path) throws IOException {
        return util.mkdir(extended(path));
    }

    @Override
    public boolean setLastModified(String path, long milliseconds) {
        return util.setLastModified(extended(path), milliseconds);
    }

    @Override
    public void setAttributes(String path, int attributes) throws IOException {
        if (setsAttributes) {
            try {
                setNatively(path, attributes);
                return;
            } catch (UnsatisfiedLinkError e) {
                setsAttributes = false;
            }
        }
        setThroughJava(path, attributes);
    }

    @Override
    public void makeLink(byte kind, String path, String target) throws IOException {
        if (makesLinks) {
            try {
                makeNatively(kind, path, target);
                return;
            } catch (UnsatisfiedLinkError e) {
                makesLinks = false;
            }
        }
        throw new MissingNativeException("this version of the library cannot make links, and it is one");
    }

    private void setNatively(String path, int attributes) throws IOException {
        util.setFileAttr(extended(path), attributes == 0 ? Win32.FILE_ATTRIBUTE_NORMAL : attributes);
        // A failure is not reported, so that the only way to know is to look.
        if ((util.getFileAttr(extended(path)) & attributes) != attributes) {
            throw new IOException("the system did not take them");
        }
    }

    private static void setThroughJava(String path, int attributes) throws IOException {
        if (hasTrailingDotOrSpace(path)) {
            throw new IOException("Java cannot reach names that end in a dot or a space");
        }
        DosFileAttributeView view = Files.getFileAttributeView(Path.of(path), DosFileAttributeView.class);
        view.setArchive((attributes & Win32.FILE_ATTRIBUTE_ARCHIVE) != 0);
        view.setSystem((attributes & Win32.FILE_ATTRIBUTE_SYSTEM) != 0);
        view.setHidden((attributes & Win32.FILE_ATTRIBUTE_HIDDEN) != 0);
        view.setReadOnly((attributes & Win32.FILE_ATTRIBUTE_READONLY) != 0);
    }

    private void makeNatively(byte kind, String path, String target) throws IOException {
        switch (kind) {
            case WinFile.JUNCTION -> util.createJunctionPoint(extended(path), target);
            case WinFile.FILE_SYMBOLIC_LINK -> util.createFileSymbolicLink(extended(path), target);
            case WinFile.DIRECTORY_SYMBOLIC_LINK -> util.createDirectorySymbolicLink(extended(path), target);
            default -> throw new IllegalArgumentException("no kind of link: " + kind);
        }
    }

    /** A listing reads descriptors by the classic form of a path, which does not reach every file. */
    private WinFile secured(WinFile entry, BiConsumer<String, String> errors) {
        String security = "";
        try {
            security = util.WinFile(extended(entry.getPath()), true, true).getSecurityDescriptor();
        } catch (IOException e) {
            // Reported below, as an empty descriptor is.
        }
        if (security.isEmpty()) {
            errors.accept(entry.getPath(), "the system gives none");
        }
        return new WinFile(entry.getPath(), entry.isDirectory(), entry.getSize(), entry.getLastModified(),
                entry.getAttributes(), security, entry.isReparsePoint());
    }

    private static boolean needsExtended(String path) {
        return path.length() >= CLASSIC_LIMIT || hasTrailingDotOrSpace(path);
    }

    /** Tells whether any component ends as the classic form does not allow. */
    private static boolean hasTrailingDotOrSpace(String path) {
        return path.endsWith(".") || path.endsWith(" ") || path.contains(".\\") || path.contains(" \\");
    }

    private static String extended(String path) {
        if (path.startsWith(EXTENDED)) {
            return path;
        }
        return path.startsWith("\\\\") ? EXTENDED_UNC + path.substring(2) : EXTENDED + path;
    }

    /** Listing needs the classic form, and brings it to the extended one itself. */
    private static String withoutExtended(String path) {
        if (path.startsWith(EXTENDED_UNC)) {
            return "\\\\" + path.substring(EXTENDED_UNC.length());
        }
        return path.startsWith(EXTENDED) ? path.substring(EXTENDED.length()) : path;
    }
}
