package com.qarvo.kel.util.endtoend;

import com.sun.jna.Function;
import com.sun.jna.Memory;
import com.sun.jna.NativeLibrary;
import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import com.sun.jna.platform.win32.WinNT.HANDLEByReference;
import com.sun.jna.ptr.IntByReference;
import java.util.Set;
import java.util.TreeSet;
import org.junit.jupiter.api.extension.AfterEachCallback;
import org.junit.jupiter.api.extension.BeforeEachCallback;
import org.junit.jupiter.api.extension.ExtensionContext;

/**
 * Fails a test that leaves files, searches or tokens open. Only these kinds are looked at: the JVM takes events,
 * threads and sections when it likes, but files and tokens only when somebody asks for them.
 */
final class OpenHandles implements BeforeEachCallback, AfterEachCallback {
    private static final ExtensionContext.Namespace SPACE = ExtensionContext.Namespace.create(OpenHandles.class);
    private static final Function QUERY = NativeLibrary.getInstance("ntdll").getFunction("NtQuerySystemInformation");
    private static final int SYSTEM_HANDLE_INFORMATION = 16;
    private static final int ENTRY_SIZE = 24;
    private static final int GIVE_UP_AFTER = 20;

    private static final int OWN_PID = (int) ProcessHandle.current().pid();
    private static final int FILE_TYPE = fileType();
    private static final int TOKEN_TYPE = tokenType();

    @Override
    public void beforeEach(ExtensionContext context) {
        context.getStore(SPACE).put("before", ofFilesAndTokens());
    }

    @Override
    public void afterEach(ExtensionContext context) throws InterruptedException {
        Set<?> before = context.getStore(SPACE).get("before", Set.class);
        Set<Integer> more = ofFilesAndTokens();
        // What only waits for the collector, or for a thread on its way out, is no leak.
        for (int i = 0; i < GIVE_UP_AFTER && more.size() > before.size(); i++) {
            System.gc();
            Thread.sleep(100);
            more = ofFilesAndTokens();
        }
        if (more.size() > before.size()) {
            more.removeAll(before);
            throw new AssertionError("Handles left open: " + more);
        }
    }

    /** The handles of this process that stand for files, searches and tokens. */
    static Set<Integer> ofFilesAndTokens() {
        return handles(FILE_TYPE, TOKEN_TYPE);
    }

    /** The number of all handles of this process. */
    static int ofAllKinds() {
        Memory table = table();
        int count = 0;
        for (int i = 0; i < table.getInt(0); i++) {
            if (table.getInt(8 + (long) ENTRY_SIZE * i) == OWN_PID) {
                count++;
            }
        }
        return count;
    }

    private static Set<Integer> handles(int... types) {
        Memory table = table();
        Set<Integer> found = new TreeSet<>();
        for (int i = 0; i < table.getInt(0); i++) {
            // Process id (4 bytes), kind (1), flags (1), handle (2), object (8), access (4), padding.
            long entry = 8 + (long) ENTRY_SIZE * i;
            int type = table.getByte(entry + 4) & 0xFF;
            for (int wanted : types) {
                if (table.getInt(entry) == OWN_PID && type == wanted) {
                    found.add(table.getShort(entry + 6) & 0xFFFF);
                }
            }
        }
        return found;
    }

    private static Memory table() {
        for (long size = 1 << 18;; size *= 2) {
            Memory table = new Memory(size);
            Object[] arguments = {SYSTEM_HANDLE_INFORMATION, table, (int) size, new IntByReference()};
            if (QUERY.invokeInt(arguments) == 0) {
                return table;
            }
        }
    }

    private static int fileType() {
        HANDLE file = Kernel32.INSTANCE.CreateFile("C:\\", WinNT.GENERIC_READ, 3, null, 3,
                WinNT.FILE_FLAG_BACKUP_SEMANTICS, null);
        return typeOf(file);
    }

    private static int tokenType() {
        HANDLEByReference token = new HANDLEByReference();
        Advapi32.INSTANCE.OpenProcessToken(Kernel32.INSTANCE.GetCurrentProcess(), WinNT.TOKEN_QUERY, token);
        return typeOf(token.getValue());
    }

    private static int typeOf(HANDLE handle) {
        int value = (int) com.sun.jna.Pointer.nativeValue(handle.getPointer());
        try {
            for (int type = 0; type < 256; type++) {
                if (handles(type).contains(value)) {
                    return type;
                }
            }
            throw new IllegalStateException("The system does not list the handle " + value);
        } finally {
            Kernel32.INSTANCE.CloseHandle(handle);
        }
    }
}
