package com.qarvo.winutil.bench;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.ptr.IntByReference;
import java.io.DataInputStream;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.Arrays;
import java.util.List;

/**
 * Reading and overwriting a large file in blocks. All contenders use the same direct buffer, which begins at a page,
 * or the same array: where memory lies matters as much as what is done with it.
 */
final class TransferJobs {
    private static final int MEBIBYTE = 1 << 20;
    private static final int PAGE = 4096;
    private static final int SECTOR = 512;
    private static final int SHARE_ALL = WinNT.FILE_SHARE_READ | WinNT.FILE_SHARE_WRITE;

    private final WindowsUtil util = new WindowsUtil();
    private final Path path;
    private final String name;
    private final WString wideName;
    private final long size;
    private final int block;
    private final ByteBuffer buffer;
    private final Pointer pointer;
    private final byte[] array;
    private final IntByReference count = new IntByReference();

    private TransferJobs(Path path, long size, int block) {
        this.path = path;
        this.name = path.toString();
        this.wideName = new WString(name);
        this.size = size;
        this.block = block;
        this.buffer = ByteBuffer.allocateDirect(block + PAGE).alignedSlice(PAGE).limit(block).slice();
        this.pointer = Native.getDirectBufferPointer(buffer);
        this.array = new byte[block];
    }

    /** The four jobs with one size of block. */
    static List<Job> all(Path file, long size, int block) {
        TransferJobs jobs = new TransferJobs(file, size, block);
        String suffix = block < MEBIBYTE ? block / 1024 + " KiB" : block / MEBIBYTE + " MiB";
        return List.of(jobs.job(Aims.READ_DIRECT + suffix, jobs.directReaders()),
                jobs.job(Aims.READ_ARRAY + suffix, jobs.arrayReaders()),
                jobs.job(Aims.WRITE_DIRECT + suffix, jobs.directWriters()),
                jobs.job(Aims.WRITE_ARRAY + suffix, jobs.arrayWriters()));
    }

    private Job job(String jobName, List<Contender> contenders) {
        return new Job(jobName, "MiB", size / MEBIBYTE, contenders);
    }

    private List<Contender> directReaders() {
        return List.of(reader(Contender.LIBRARY, this::readLibrary), reader(Contender.BARE, this::readBare),
                reader(Contender.LEAN, this::readLean), reader(Contender.FILE_CHANNEL, this::readChannel),
                reader(Contender.JNA_DIRECT, this::readJna));
    }

    private List<Contender> arrayReaders() {
        return List.of(arrayReader(Contender.LIBRARY, this::readArrayLibrary), reader(Contender.BARE, this::readBare),
                arrayReader(Contender.LEAN, this::readArrayLean),
                arrayReader(Contender.FILE_INPUT_STREAM, this::readArrayStream),
                arrayReader(Contender.JNA_PLATFORM, this::readArrayJnaPlatform),
                arrayReader(Contender.JNA_DIRECT, this::readArrayJna));
    }

    private List<Contender> directWriters() {
        return List.of(writer(Contender.LIBRARY, this::writeLibrary), writer(Contender.BARE, this::writeBare),
                writer(Contender.LEAN, this::writeLean), writer(Contender.FILE_CHANNEL, this::writeChannel),
                writer(Contender.JNA_DIRECT, this::writeJna));
    }

    private List<Contender> arrayWriters() {
        return List.of(writer(Contender.LIBRARY, this::writeArrayLibrary), writer(Contender.BARE, this::writeBare),
                writer(Contender.LEAN, this::writeArrayLean),
                writer(Contender.FILE_OUTPUT_STREAM, this::writeArrayStream),
                writer(Contender.JNA_PLATFORM, this::writeArrayJnaPlatform),
                writer(Contender.JNA_DIRECT, this::writeArrayJna));
    }

    /** A reader is right when it read all and left the last block, and nothing else, in the buffer. */
    private Contender reader(String contender, Contender.Pass pass) {
        return new Contender(contender, pass, () -> checkRead(pass, buffer));
    }

    private Contender arrayReader(String contender, Contender.Pass pass) {
        return new Contender(contender, pass, () -> checkRead(pass, ByteBuffer.wrap(array)));
    }

    private void checkRead(Contender.Pass pass, ByteBuffer into) throws Exception {
        // A writer's check may have left something else in the file.
        writePattern(path, 0);
        for (int i = 0; i < block; i++) {
            into.put(i, (byte) 0xAA);
        }
        Contender.expect("the number of bytes read", size, pass.run());
        ByteBuffer expected = ByteBuffer.allocate(block);
        Tree.fill(expected, size - block);
        Contender.expect("the first byte that differs in the last block", -1,
                expected.mismatch(into.duplicate().clear()));
    }

    private void writePattern(Path file, long start) throws IOException {
        ByteBuffer content = ByteBuffer.allocate(block);
        try (FileChannel channel = FileChannel.open(file, StandardOpenOption.WRITE)) {
            for (long position = 0; position < size; position += block) {
                Tree.fill(content, start + position);
                channel.write(content.clear(), position);
            }
        }
    }

    /** A writer is right when the whole file holds what was in the buffer, block after block, and is no longer. */
    private Contender writer(String contender, Contender.Pass pass) {
        return new Contender(contender, pass, () -> {
            int seed = contender.hashCode();
            for (int i = 0; i < block; i++) {
                array[i] = (byte) (seed + i * 31);
            }
            buffer.put(0, array);
            Contender.expect("the number of bytes written", size, pass.run());
            checkContent();
        });
    }

    private void checkContent() throws Exception {
        Contender.expect("the size of the file", size, Files.size(path));
        byte[] read = new byte[block];
        try (DataInputStream in = new DataInputStream(new FileInputStream(name))) {
            for (long position = 0; position < size; position += block) {
                in.readFully(read);
                Contender.expect("the first byte that differs behind " + position, -1, Arrays.mismatch(array, read));
            }
        }
    }

    private long readLibrary() throws IOException {
        long record = util.openFile(name);
        long total = 0;
        for (int read; (read = util.read(record, buffer, 0, block, SECTOR)) > 0;) {
            total += read;
        }
        util.closeFile(record);
        return total;
    }

    private long readBare() {
        return Bare.read(name, buffer, block);
    }

    private long readLean() {
        long file = Lean.open(name, WinNT.GENERIC_READ);
        long total = 0;
        for (int read; (read = Lean.read(file, buffer, block)) > 0;) {
            total += read;
        }
        Lean.close(file);
        return total;
    }

    private long readChannel() throws IOException {
        long total = 0;
        try (FileChannel channel = FileChannel.open(path, StandardOpenOption.READ)) {
            for (int read; (read = channel.read(buffer.clear())) > 0;) {
                total += read;
            }
        }
        return total;
    }

    private long readJna() {
        long file = openJna(WinNT.GENERIC_READ);
        long total = 0;
        while (DirectMapping.ReadFile(file, pointer, block, count, null) && count.getValue() > 0) {
            total += count.getValue();
        }
        DirectMapping.CloseHandle(file);
        return total;
    }

    private long openJna(int access) {
        return DirectMapping.CreateFileW(wideName, access, SHARE_ALL, null, WinNT.OPEN_EXISTING,
                WinNT.FILE_ATTRIBUTE_NORMAL, null);
    }

    private long readArrayLibrary() throws IOException {
        long record = util.openFile(name);
        long total = 0;
        for (int read; (read = util.read(record, array, 0, block)) > 0;) {
            total += read;
        }
        util.closeFile(record);
        return total;
    }

    private long readArrayLean() {
        long file = Lean.open(name, WinNT.GENERIC_READ);
        long total = 0;
        for (int read; (read = Lean.read(file, array, block)) > 0;) {
            total += read;
        }
        Lean.close(file);
        return total;
    }

    private long readArrayStream() throws IOException {
        long total = 0;
        try (FileInputStream in = new FileInputStream(name)) {
            for (int read; (read = in.read(array)) > 0;) {
                total += read;
            }
        }
        return total;
    }

    private long readArrayJnaPlatform() {
        WinNT.HANDLE file = openJnaPlatform(WinNT.GENERIC_READ);
        long total = 0;
        while (Kernel32.INSTANCE.ReadFile(file, array, block, count, null) && count.getValue() > 0) {
            total += count.getValue();
        }
        Kernel32.INSTANCE.CloseHandle(file);
        return total;
    }

    private WinNT.HANDLE openJnaPlatform(int access) {
        return Kernel32.INSTANCE.CreateFile(name, access, SHARE_ALL, null, WinNT.OPEN_EXISTING,
                WinNT.FILE_ATTRIBUTE_NORMAL, null);
    }

    private long readArrayJna() {
        long file = openJna(WinNT.GENERIC_READ);
        long total = 0;
        while (DirectMapping.ReadFile(file, array, block, count, null) && count.getValue() > 0) {
            total += count.getValue();
        }
        DirectMapping.CloseHandle(file);
        return total;
    }

    private long writeLibrary() throws IOException {
        long record = util.createFileNC(name, Win32.GENERIC_WRITE, Win32.OPEN_EXISTING, Win32.FILE_ATTRIBUTE_NORMAL);
        long total = 0;
        for (; total < size; total += block) {
            util.write(record, buffer, 0, block, SECTOR);
        }
        util.closeFile(record);
        return total;
    }

    private long writeBare() {
        return Bare.overwrite(name, buffer, block, size);
    }

    private long writeLean() {
        long file = Lean.open(name, WinNT.GENERIC_WRITE);
        long total = 0;
        while (total < size) {
            total += Lean.write(file, buffer, block);
        }
        Lean.close(file);
        return total;
    }

    private long writeChannel() throws IOException {
        long total = 0;
        try (FileChannel channel = FileChannel.open(path, StandardOpenOption.WRITE)) {
            while (total < size) {
                total += channel.write(buffer.clear());
            }
        }
        return total;
    }

    private long writeJna() {
        long file = openJna(WinNT.GENERIC_WRITE);
        long total = 0;
        while (total < size && DirectMapping.WriteFile(file, pointer, block, count, null)) {
            total += count.getValue();
        }
        DirectMapping.CloseHandle(file);
        return total;
    }

    private long writeArrayLibrary() throws IOException {
        long record = util.createFileNC(name, Win32.GENERIC_WRITE, Win32.OPEN_EXISTING, Win32.FILE_ATTRIBUTE_NORMAL);
        long total = 0;
        for (; total < size; total += block) {
            util.write(record, array, 0, block);
        }
        util.closeFile(record);
        return total;
    }

    private long writeArrayLean() {
        long file = Lean.open(name, WinNT.GENERIC_WRITE);
        long total = 0;
        while (total < size) {
            total += Lean.write(file, array, block);
        }
        Lean.close(file);
        return total;
    }

    /** A FileOutputStream of its own would cut the file first; over an open file it writes into what is there. */
    private long writeArrayStream() throws IOException {
        long total = 0;
        try (RandomAccessFile file = new RandomAccessFile(name, "rw");
                FileOutputStream out = new FileOutputStream(file.getFD())) {
            for (; total < size; total += block) {
                out.write(array);
            }
        }
        return total;
    }

    private long writeArrayJnaPlatform() {
        WinNT.HANDLE file = openJnaPlatform(WinNT.GENERIC_WRITE);
        long total = 0;
        while (total < size && Kernel32.INSTANCE.WriteFile(file, array, block, count, null)) {
            total += count.getValue();
        }
        Kernel32.INSTANCE.CloseHandle(file);
        return total;
    }

    private long writeArrayJna() {
        long file = openJna(WinNT.GENERIC_WRITE);
        long total = 0;
        while (total < size && DirectMapping.WriteFile(file, array, block, count, null)) {
            total += count.getValue();
        }
        DirectMapping.CloseHandle(file);
        return total;
    }
}
