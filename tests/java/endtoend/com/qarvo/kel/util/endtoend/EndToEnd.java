package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;

import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.jupiter.api.function.Executable;

/** What the tests of the natives share: the library, loaded, and the Win32 words that its methods take. */
@ExtendWith({TimeLimit.class, OpenHandles.class})
abstract class EndToEnd {
    static final int GENERIC_READ = 0x80000000;
    static final int GENERIC_WRITE = 0x40000000;
    static final int READ_WRITE = GENERIC_READ | GENERIC_WRITE;
    static final int CREATE_NEW = 1;
    static final int CREATE_ALWAYS = 2;
    static final int OPEN_EXISTING = 3;
    static final int NO_BUFFERING = 0x20000000;
    static final int BACKUP_SEMANTICS = 0x02000000;

    static final int READONLY = 0x1;
    static final int HIDDEN = 0x2;
    static final int DIRECTORY = 0x10;
    static final int ARCHIVE = 0x20;
    static final int NORMAL = 0x80;
    static final int REPARSE_POINT = 0x400;
    static final int UNREADABLE = -1;

    static final int INVALID_FUNCTION = 1;
    static final int FILE_NOT_FOUND = 2;
    static final int PATH_NOT_FOUND = 3;
    static final int ACCESS_DENIED = 5;
    static final int INVALID_HANDLE = 6;
    static final int SHARING_VIOLATION = 32;
    static final int FILE_EXISTS = 80;
    static final int DISK_FULL = 112;
    static final int INVALID_NAME = 123;
    static final int NEGATIVE_SEEK = 131;

    /** 1970-01-01 in units of 100 ns since 1601. */
    static final long EPOCH = 116444736000000000L;

    static final WindowsUtil util = new WindowsUtil();

    /** An open file that closes itself at the end of a block. */
    static final class NativeFile implements AutoCloseable {
        final long record;

        private NativeFile(long record) {
            this.record = record;
        }

        @Override
        public void close() {
            util.closeFile(record);
        }
    }

    static NativeFile adopt(long record) {
        return new NativeFile(record);
    }

    static NativeFile open(Object path) throws IOException {
        return adopt(util.openFile(path.toString()));
    }

    static NativeFile create(Object path, int flags) throws IOException {
        return adopt(util.createFileNC(path.toString(), READ_WRITE, CREATE_ALWAYS, flags));
    }

    static NativeFile preallocate(Object path, long size) throws IOException {
        return adopt(util.createFileNC(path.toString(), READ_WRITE, CREATE_ALWAYS, 0, size));
    }

    /** The entries of a directory, with attributes and without descriptors. */
    static List<WinFileList.WinFile> list(Object directory) throws IOException {
        WinFileList entries = new WinFileList();
        util.listWinFiles(entries, directory.toString(), false, true, null, false);
        return entries.files();
    }

    static void assertFails(Class<? extends Throwable> type, String message, Executable call) {
        assertEquals(message, assertThrowsExactly(type, call).getMessage());
    }

    /** A folder or file that the script around the run has made. */
    static String fixture(String property) {
        String value = System.getProperty("winutil.test." + property);
        assertNotNull(value, "winutil.test." + property + " is not set: run_endtoend.py sets it");
        return value;
    }

    static Path work() {
        return Path.of(fixture("work"));
    }
}
