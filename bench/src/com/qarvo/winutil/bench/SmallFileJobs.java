package com.qarvo.winutil.bench;

import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.ptr.IntByReference;
import java.io.File;
import java.io.FileInputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.DosFileAttributes;
import java.util.Arrays;
import java.util.List;

/** Many small files: opened, read and closed, or only asked for. Everyone gets the paths in a form to his taste. */
final class SmallFileJobs implements AutoCloseable {
    private static final int BUFFER_SIZE = 64 * 1024;
    private static final int SECTOR = 512;
    private static final int SHARE_ALL = WinNT.FILE_SHARE_READ | WinNT.FILE_SHARE_WRITE;
    private static final int GET_FILE_EX_INFO_STANDARD = 0;
    private static final int ATTRIBUTE_DATA_SIZE = 36;
    private static final int ATTRIBUTE_DATA_TIME = 20;

    private final WindowsUtil util = new WindowsUtil();
    private final String[] paths;
    private final Path[] nioPaths;
    private final File[] files;
    private final WString[] widePaths;
    private final long barePaths;
    private final ByteBuffer buffer = ByteBuffer.allocateDirect(BUFFER_SIZE);
    private final Pointer pointer = Native.getDirectBufferPointer(buffer);
    private final byte[] array = new byte[BUFFER_SIZE];
    private final IntByReference count = new IntByReference();
    private final Memory attributeData = new Memory(ATTRIBUTE_DATA_SIZE);

    SmallFileJobs(String[] paths) {
        this.paths = paths;
        this.nioPaths = Arrays.stream(paths).map(Path::of).toArray(Path[]::new);
        this.files = Arrays.stream(paths).map(File::new).toArray(File[]::new);
        this.widePaths = Arrays.stream(paths).map(WString::new).toArray(WString[]::new);
        this.barePaths = Bare.preparePaths(paths);
    }

    @Override
    public void close() {
        Bare.freePaths(barePaths);
        attributeData.close();
    }

    List<Job> all() throws IOException {
        return List.of(readJob(), existsJob(), attributesJob(), lastModifiedJob());
    }

    private static Contender contender(String name, Contender.Pass pass, long expected) {
        return new Contender(name, pass, () -> Contender.expect("the sum", expected, pass.run()));
    }

    private Job readJob() throws IOException {
        long bytes = 0;
        for (Path path : nioPaths) {
            bytes += Files.size(path);
        }
        return new Job(Aims.SMALL_FILES, "file", paths.length,
                List.of(contender(Contender.LIBRARY, this::readLibrary, bytes),
                        contender(Contender.BARE, () -> Bare.readFiles(barePaths, buffer), bytes),
                        contender(Contender.LEAN, this::readLean, bytes),
                        contender(Contender.FILE_CHANNEL, this::readChannel, bytes),
                        contender(Contender.FILE_INPUT_STREAM, this::readStream, bytes),
                        contender(Contender.JNA_PLATFORM, this::readJnaPlatform, bytes),
                        contender(Contender.JNA_DIRECT, this::readJnaDirect, bytes)));
    }

    private Job existsJob() {
        int all = paths.length;
        return new Job(Aims.EXISTS, "call", all, List.of(
                contender(Contender.LIBRARY, () -> count(paths, util::exists), all),
                contender(Contender.BARE, () -> Bare.countExisting(barePaths), all),
                contender(Contender.LEAN, () -> count(paths, Lean::exists), all),
                contender(Contender.IO_FILE, () -> count(files, File::exists), all),
                contender(Contender.NIO_FILES, () -> count(nioPaths, Files::exists), all),
                contender(Contender.JNA_PLATFORM,
                        () -> count(paths, p -> Kernel32.INSTANCE.GetFileAttributes(p) != -1), all),
                contender(Contender.JNA_DIRECT,
                        () -> count(widePaths, p -> DirectMapping.GetFileAttributesW(p) != -1), all)));
    }

    private Job attributesJob() throws IOException {
        long expected = Bare.sumAttributes(barePaths);
        long dosFlags = sum(paths, path -> util.getFileAttr(path) & Digest.DOS_MASK);
        return new Job(Aims.ATTRIBUTES, "call", paths.length, List.of(
                contender(Contender.LIBRARY, () -> sum(paths, util::getFileAttr), expected),
                contender(Contender.BARE, () -> Bare.sumAttributes(barePaths), expected),
                contender(Contender.LEAN, () -> sum(paths, Lean::attributes), expected),
                contender(Contender.NIO_FILES, () -> sum(nioPaths, SmallFileJobs::dosFlags), dosFlags),
                contender(Contender.JNA_PLATFORM, () -> sum(paths, Kernel32.INSTANCE::GetFileAttributes), expected),
                contender(Contender.JNA_DIRECT, () -> sum(widePaths, DirectMapping::GetFileAttributesW), expected)));
    }

    private Job lastModifiedJob() throws IOException {
        long expected = sum(nioPaths, path -> Files.getLastModifiedTime(path).toMillis());
        return new Job(Aims.LAST_MODIFIED, "call", paths.length, List.of(
                contender(Contender.LIBRARY, () -> sum(paths, util::lastModified), expected),
                contender(Contender.BARE, () -> Bare.sumLastModified(barePaths), expected),
                contender(Contender.LEAN, () -> sum(paths, Lean::lastModified), expected),
                contender(Contender.IO_FILE, () -> sum(files, File::lastModified), expected),
                contender(Contender.NIO_FILES,
                        () -> sum(nioPaths, path -> Files.getLastModifiedTime(path).toMillis()), expected),
                contender(Contender.JNA_DIRECT, () -> sum(widePaths, this::lastModifiedJna), expected)));
    }

    private interface Test<T> {
        boolean test(T path);
    }

    private interface Query<T> {
        long ask(T path) throws IOException;
    }

    private static <T> long count(T[] paths, Test<T> test) {
        long sum = 0;
        for (T path : paths) {
            sum += test.test(path) ? 1 : 0;
        }
        return sum;
    }

    private static <T> long sum(T[] paths, Query<T> query) throws IOException {
        long sum = 0;
        for (T path : paths) {
            sum += query.ask(path);
        }
        return sum;
    }

    private static long dosFlags(Path path) throws IOException {
        return ListingJobs.dosFlags(Files.readAttributes(path, DosFileAttributes.class));
    }

    private long lastModifiedJna(WString path) {
        DirectMapping.GetFileAttributesExW(path, GET_FILE_EX_INFO_STANDARD, attributeData);
        return ListingJobs.toJavaTime(attributeData.getLong(ATTRIBUTE_DATA_TIME));
    }

    private long readLibrary() throws IOException {
        long total = 0;
        for (String path : paths) {
            long record = util.openFile(path);
            total += util.read(record, buffer, 0, BUFFER_SIZE, SECTOR);
            util.closeFile(record);
        }
        return total;
    }

    private long readLean() {
        long total = 0;
        for (String path : paths) {
            long file = Lean.open(path, WinNT.GENERIC_READ);
            total += Lean.read(file, buffer, BUFFER_SIZE);
            Lean.close(file);
        }
        return total;
    }

    private long readChannel() throws IOException {
        long total = 0;
        for (Path path : nioPaths) {
            try (FileChannel channel = FileChannel.open(path, StandardOpenOption.READ)) {
                total += channel.read(buffer.clear());
            }
        }
        return total;
    }

    private long readStream() throws IOException {
        long total = 0;
        for (File file : files) {
            try (FileInputStream in = new FileInputStream(file)) {
                total += in.read(array);
            }
        }
        return total;
    }

    private long readJnaPlatform() {
        long total = 0;
        for (String path : paths) {
            WinNT.HANDLE file = Kernel32.INSTANCE.CreateFile(path, WinNT.GENERIC_READ, SHARE_ALL, null,
                    WinNT.OPEN_EXISTING, WinNT.FILE_ATTRIBUTE_NORMAL, null);
            Kernel32.INSTANCE.ReadFile(file, array, BUFFER_SIZE, count, null);
            total += count.getValue();
            Kernel32.INSTANCE.CloseHandle(file);
        }
        return total;
    }

    private long readJnaDirect() {
        long total = 0;
        for (WString path : widePaths) {
            long file = DirectMapping.CreateFileW(path, WinNT.GENERIC_READ, SHARE_ALL, null, WinNT.OPEN_EXISTING,
                    WinNT.FILE_ATTRIBUTE_NORMAL, null);
            DirectMapping.ReadFile(file, pointer, BUFFER_SIZE, count, null);
            total += count.getValue();
            DirectMapping.CloseHandle(file);
        }
        return total;
    }
}
