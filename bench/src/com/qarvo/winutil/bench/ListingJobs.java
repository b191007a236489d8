package com.qarvo.winutil.bench;

import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.Memory;
import com.sun.jna.Pointer;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinNT;
import java.io.File;
import java.io.IOException;
import java.nio.file.DirectoryStream;
import java.nio.file.FileVisitResult;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.SimpleFileVisitor;
import java.nio.file.attribute.BasicFileAttributes;
import java.nio.file.attribute.DosFileAttributes;
import java.util.ArrayList;
import java.util.EnumSet;
import java.util.List;
import java.util.function.Function;
import java.util.stream.Collectors;

/** The listing of a directory with the attributes of its entries. */
final class ListingJobs {
    static final int BASIC_FIELDS = Digest.DIRECTORY | Digest.SIZE | Digest.TIME;
    static final int ALL_FIELDS = BASIC_FIELDS | Digest.ATTRIBUTES;

    private static final int FIND_DATA_SIZE = new WinBase.WIN32_FIND_DATA().size();
    private static final int FIND_DATA_TIME = 20;
    private static final int FIND_DATA_SIZE_HIGH = 28;
    private static final int FIND_DATA_SIZE_LOW = 32;
    private static final int FIND_DATA_NAME = 44;
    private static final long UNITS_PER_MILLISECOND = 10_000;
    private static final long MILLISECONDS_BETWEEN_EPOCHS = 11_644_473_600_000L;

    private final WindowsUtil util = new WindowsUtil();
    private final Path path;
    private final String directory;

    private ListingJobs(Path path) {
        this.path = path;
        this.directory = path.toString();
    }

    static Job listing(Path directory, int entries) throws IOException {
        ListingJobs jobs = new ListingJobs(directory);
        List<Entry> expected = view(jobs.library(), ListingJobs::toEntry);
        List<Contender> contenders = List.of(
                contender(Contender.LIBRARY, jobs::library, ListingJobs::toEntry, ALL_FIELDS, expected),
                new Contender(Contender.BARE, () -> Bare.list(jobs.directory, false),
                        () -> Contender.expect("the digest", Digest.of(expected, ALL_FIELDS),
                                Bare.digest(jobs.directory, false, ALL_FIELDS))),
                contender(Contender.LEAN, jobs::lean, ListingJobs::toEntry, ALL_FIELDS, expected),
                contender(Contender.NIO_STREAM, jobs::nioStream, NioEntry::toEntry, BASIC_FIELDS | Digest.DOS_FLAGS,
                        expected),
                contender(Contender.NIO_WALK, jobs::nioWalk, BasicEntry::toEntry, BASIC_FIELDS, expected),
                contender(Contender.IO_FILE, jobs::ioFile, Function.identity(), BASIC_FIELDS, expected),
                contender(Contender.JNA_PLATFORM, jobs::jnaPlatform, Function.identity(), ALL_FIELDS, expected),
                contender(Contender.JNA_DIRECT, jobs::jnaDirect, Function.identity(), ALL_FIELDS, expected));
        return new Job(Aims.LISTING, "entry", entries, contenders);
    }

    /** Something that gives the entries in a form of its own. */
    interface Lister<T> {
        List<T> list() throws IOException;
    }

    /** A contender whose entries are compared, as far as it knows their fields, with the expected ones. */
    static <T> Contender contender(String name, Lister<T> lister, Function<T, Entry> toEntry, int fields,
            List<Entry> expected) {
        return new Contender(name, () -> lister.list().size(), () -> Contender.expect("the digest",
                Digest.of(expected, fields), Digest.of(view(lister.list(), toEntry), fields)));
    }

    static <T> List<Entry> view(List<T> entries, Function<T, Entry> toEntry) {
        return entries.stream().map(toEntry).collect(Collectors.toList());
    }

    static Entry toEntry(WinFileList.WinFile file) {
        return new Entry(file.getPath(), file.isDirectory(), file.getSize(), file.getLastModified(),
                file.getAttributes(), file.getSecurityDescriptor());
    }

    private List<WinFileList.WinFile> library() throws IOException {
        WinFileList collector = new WinFileList();
        util.listWinFiles(collector, directory, false, true, null, false);
        return collector.files();
    }

    private List<WinFileList.WinFile> lean() {
        WinFileList collector = new WinFileList();
        Lean.list(collector, directory, false);
        return collector.files();
    }

    /** What java.nio gives of an entry. */
    record NioEntry(Path path, DosFileAttributes attributes) {
        Entry toEntry() {
            return new Entry(path.toString(), attributes.isDirectory(), attributes.size(),
                    attributes.lastModifiedTime().toMillis(), dosFlags(attributes), "");
        }
    }

    static int dosFlags(DosFileAttributes attributes) {
        return (attributes.isReadOnly() ? 0x1 : 0) | (attributes.isHidden() ? 0x2 : 0)
                | (attributes.isSystem() ? 0x4 : 0) | (attributes.isArchive() ? 0x20 : 0);
    }

    private List<NioEntry> nioStream() throws IOException {
        List<NioEntry> entries = new ArrayList<>();
        try (DirectoryStream<Path> stream = Files.newDirectoryStream(path)) {
            for (Path entry : stream) {
                entries.add(new NioEntry(entry, Files.readAttributes(entry, DosFileAttributes.class)));
            }
        }
        return entries;
    }

    /** What a walk of java.nio gives of an entry: no attribute word. */
    private record BasicEntry(Path path, BasicFileAttributes attributes) {
        Entry toEntry() {
            return new Entry(path.toString(), attributes.isDirectory(), attributes.size(),
                    attributes.lastModifiedTime().toMillis(), 0, "");
        }
    }

    private List<BasicEntry> nioWalk() throws IOException {
        List<BasicEntry> entries = new ArrayList<>();
        Files.walkFileTree(path, EnumSet.noneOf(java.nio.file.FileVisitOption.class), 1, new SimpleFileVisitor<>() {
            @Override
            public FileVisitResult visitFile(Path file, BasicFileAttributes attributes) {
                entries.add(new BasicEntry(file, attributes));
                return FileVisitResult.CONTINUE;
            }
        });
        return entries;
    }

    private List<Entry> ioFile() {
        List<Entry> entries = new ArrayList<>();
        for (File file : new File(directory).listFiles()) {
            boolean isDirectory = file.isDirectory();
            entries.add(new Entry(file.getPath(), isDirectory, isDirectory ? 0 : file.length(), file.lastModified(), 0,
                    ""));
        }
        return entries;
    }

    private List<Entry> jnaPlatform() {
        List<Entry> entries = new ArrayList<>();
        try (Memory memory = new Memory(FIND_DATA_SIZE)) {
            WinNT.HANDLE search = Kernel32.INSTANCE.FindFirstFile(directory + "\\*", memory);
            WinBase.WIN32_FIND_DATA found = new WinBase.WIN32_FIND_DATA(memory);
            do {
                found.read();
                String name = found.getFileName();
                if (!isDotName(name)) {
                    long size = (long) found.nFileSizeHigh << 32 | found.nFileSizeLow & 0xFFFFFFFFL;
                    entries.add(entry(name, found.dwFileAttributes, size, found.ftLastWriteTime.toTime(), ""));
                }
            } while (Kernel32.INSTANCE.FindNextFile(search, memory));
            Kernel32.INSTANCE.FindClose(search);
        }
        return entries;
    }

    private List<Entry> jnaDirect() {
        List<Entry> entries = new ArrayList<>();
        try (Memory found = new Memory(FIND_DATA_SIZE)) {
            long search = DirectMapping.FindFirstFileW(new WString(directory + "\\*"), found);
            do {
                String name = nameOf(found);
                if (!isDotName(name)) {
                    entries.add(entry(name, found.getInt(0), sizeOf(found), timeOf(found), ""));
                }
            } while (DirectMapping.FindNextFileW(search, found));
            DirectMapping.FindClose(search);
        }
        return entries;
    }

    private Entry entry(String name, int attributes, long size, long time, String security) {
        return new Entry(directory + '\\' + name, (attributes & WinNT.FILE_ATTRIBUTE_DIRECTORY) != 0, size, time,
                attributes, security);
    }

    static int findDataSize() {
        return FIND_DATA_SIZE;
    }

    static String nameOf(Pointer found) {
        return found.getWideString(FIND_DATA_NAME);
    }

    static long sizeOf(Pointer found) {
        return (long) found.getInt(FIND_DATA_SIZE_HIGH) << 32 | found.getInt(FIND_DATA_SIZE_LOW) & 0xFFFFFFFFL;
    }

    static long timeOf(Pointer found) {
        return toJavaTime(found.getLong(FIND_DATA_TIME));
    }

    static long toJavaTime(long fileTime) {
        return fileTime / UNITS_PER_MILLISECOND - MILLISECONDS_BETWEEN_EPOCHS;
    }

    static boolean isDotName(String name) {
        return name.equals(".") || name.equals("..");
    }
}
