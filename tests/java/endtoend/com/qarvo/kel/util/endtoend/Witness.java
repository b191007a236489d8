package com.qarvo.kel.util.endtoend;

import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.NativeLibrary;
import com.sun.jna.Pointer;
import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import com.sun.jna.platform.win32.WinNT.HANDLEByReference;
import com.sun.jna.ptr.IntByReference;
import com.sun.jna.ptr.PointerByReference;
import com.sun.jna.win32.StdCallLibrary;
import com.sun.jna.win32.W32APIOptions;

/** What the system itself says, asked for on a road that does not pass through the library. */
final class Witness {
    private static final int OPEN_EXISTING = 3;
    private static final int SHARE_READ_WRITE = 3;
    private static final int OWNER_GROUP_DACL = 7;

    /** Calls that java-native-access' own Kernel32 lacks or types too narrowly. */
    private interface System32 extends StdCallLibrary {
        int FormatMessageW(int flags, Pointer source, int code, int language, PointerByReference text, int size,
                Pointer arguments);

        int FormatMessageW(int flags, Pointer source, int code, int language, char[] text, int size,
                Pointer arguments);

        boolean GetDiskFreeSpaceW(com.sun.jna.WString root, IntByReference sectorsPerCluster,
                IntByReference bytesPerSector, IntByReference freeClusters, IntByReference totalClusters);

        Pointer FindFirstFileW(com.sun.jna.WString pattern, Pointer data);
    }

    private interface Security extends StdCallLibrary {
        boolean ConvertSecurityDescriptorToStringSecurityDescriptorW(Pointer descriptor, int revision,
                int information, PointerByReference text, IntByReference length);
    }

    private static final System32 SYSTEM = Native.load("kernel32", System32.class);
    private static final Security SECURITY = Native.load("advapi32", Security.class, W32APIOptions.UNICODE_OPTIONS);
    private static final long INVALID_HANDLE = -1;

    private Witness() {
    }

    /** The system's text for an error, line break included. */
    static String systemText(int code) {
        PointerByReference text = new PointerByReference();
        if (SYSTEM.FormatMessageW(0x1300, null, code, 0x400, text, 0, null) == 0) {
            throw new IllegalArgumentException("The system has no text for " + code);
        }
        try {
            return text.getValue().getWideString(0);
        } finally {
            Kernel32.INSTANCE.LocalFree(text.getValue());
        }
    }

    /** The message of a failed call, in the form that all of the library's have. */
    static String message(String tag, int code) {
        return "[" + tag + "] (" + code + ") " + systemText(code);
    }

    /** The text for the status of a native call; empty when the system has none. */
    static String statusText(int status) {
        char[] text = new char[4096];
        Pointer ntdll = Kernel32.INSTANCE.GetModuleHandle("ntdll").getPointer();
        int length = SYSTEM.FormatMessageW(0x1800, ntdll, status, 0x400, text, text.length, null);
        return new String(text, 0, length);
    }

    /** The error with which the system refuses to open a path, as given and then with the long prefix. */
    static int openError(String path, int access, int disposition, int flags) {
        int error = 0;
        for (String form : new String[] {path, longForm(path)}) {
            HANDLE file = Kernel32.INSTANCE.CreateFile(form, access, SHARE_READ_WRITE, null, disposition, flags, null);
            error = Kernel32.INSTANCE.GetLastError();
            if (!WinBase.INVALID_HANDLE_VALUE.equals(file)) {
                Kernel32.INSTANCE.CloseHandle(file);
                throw new IllegalArgumentException("The system opens " + form);
            }
        }
        return error;
    }

    /** A path with the prefix that takes it beyond the classic limit. */
    static String longForm(String path) {
        if (path.startsWith("\\\\?\\") || path.startsWith("\\\\.\\")) {
            return path;
        }
        String plain = path.startsWith("\\\\") ? "UNC\\" + path.substring(2) : path;
        return "\\\\?\\" + plain.replace('/', '\\');
    }

    /** The error with which the system refuses to search for a pattern. */
    static int searchError(String pattern) {
        Pointer search = SYSTEM.FindFirstFileW(new com.sun.jna.WString(pattern), new Memory(1024));
        int error = Native.getLastError();
        if (Pointer.nativeValue(search) != INVALID_HANDLE) {
            throw new IllegalArgumentException("The system finds " + pattern);
        }
        return error;
    }

    /** The errors with which the system refuses to write from, and to read into, no memory at all. */
    static int[] nullBufferErrors(String path) {
        HANDLE file = Kernel32.INSTANCE.CreateFile(path, WinNT.GENERIC_READ | WinNT.GENERIC_WRITE, SHARE_READ_WRITE,
                null, OPEN_EXISTING, 0, null);
        try {
            IntByReference count = new IntByReference();
            int[] errors = new int[2];
            if (!Kernel32.INSTANCE.WriteFile(file, null, 16, count, null)) {
                errors[0] = Kernel32.INSTANCE.GetLastError();
            }
            if (!Kernel32.INSTANCE.ReadFile(file, null, 16, count, null)) {
                errors[1] = Kernel32.INSTANCE.GetLastError();
            }
            return errors;
        } finally {
            Kernel32.INSTANCE.CloseHandle(file);
        }
    }

    static int attributes(String path) {
        return Kernel32.INSTANCE.GetFileAttributes(path);
    }

    static void setAttributes(String path, int attributes) {
        if (!Kernel32.INSTANCE.SetFileAttributes(path, new com.sun.jna.platform.win32.WinDef.DWORD(attributes))) {
            throw new IllegalArgumentException("Attributes of " + path);
        }
    }

    /** The time of the last write in units of 100 ns since 1601. */
    static long lastWrite(String path) {
        HANDLE file = openForTimes(path);
        try {
            WinBase.FILETIME time = new WinBase.FILETIME();
            Kernel32.INSTANCE.GetFileTime(file, null, null, time);
            return (long) time.dwHighDateTime << 32 | time.dwLowDateTime & 0xFFFFFFFFL;
        } finally {
            Kernel32.INSTANCE.CloseHandle(file);
        }
    }

    static void setLastWrite(String path, long units) {
        HANDLE file = openForTimes(path);
        try {
            WinBase.FILETIME time = new WinBase.FILETIME();
            time.dwHighDateTime = (int) (units >> 32);
            time.dwLowDateTime = (int) units;
            if (Kernel32.INSTANCE.SetFileTime(file, null, null, time) == 0) {
                throw new IllegalArgumentException("Time of " + path);
            }
        } finally {
            Kernel32.INSTANCE.CloseHandle(file);
        }
    }

    private static HANDLE openForTimes(String path) {
        int access = WinNT.FILE_READ_ATTRIBUTES | WinNT.FILE_WRITE_ATTRIBUTES;
        HANDLE file = Kernel32.INSTANCE.CreateFile(path, access, SHARE_READ_WRITE, null, OPEN_EXISTING,
                WinNT.FILE_FLAG_BACKUP_SEMANTICS, null);
        if (WinBase.INVALID_HANDLE_VALUE.equals(file)) {
            throw new IllegalArgumentException("Cannot open " + path);
        }
        return file;
    }

    /** Owner, group and DACL of a file as SDDL text. */
    static String securityDescriptor(String path) {
        Memory descriptor = new Memory(16384);
        IntByReference needed = new IntByReference();
        if (!Advapi32.INSTANCE.GetFileSecurity(path, OWNER_GROUP_DACL, descriptor, (int) descriptor.size(), needed)) {
            throw new IllegalArgumentException("Descriptor of " + path);
        }
        PointerByReference text = new PointerByReference();
        SECURITY.ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, 1, OWNER_GROUP_DACL, text,
                new IntByReference());
        try {
            return text.getValue().getWideString(0);
        } finally {
            Kernel32.INSTANCE.LocalFree(text.getValue());
        }
    }

    /** The bytes per sector of the volume with this root, 0 when there is none. */
    static int sectorSize(String root) {
        IntByReference bytesPerSector = new IntByReference();
        SYSTEM.GetDiskFreeSpaceW(new com.sun.jna.WString(root), new IntByReference(), bytesPerSector,
                new IntByReference(), new IntByReference());
        return bytesPerSector.getValue();
    }

    static String shortPath(String path) {
        char[] text = new char[1024];
        return new String(text, 0, Kernel32.INSTANCE.GetShortPathName(path, text, text.length));
    }

    /** Whether a privilege of this process is switched on. */
    static boolean isPrivilegeOn(String name) {
        WinNT.LUID luid = new WinNT.LUID();
        Advapi32.INSTANCE.LookupPrivilegeValue(null, name, luid);
        HANDLEByReference token = new HANDLEByReference();
        Advapi32.INSTANCE.OpenProcessToken(Kernel32.INSTANCE.GetCurrentProcess(), WinNT.TOKEN_QUERY, token);
        try {
            // A count, then entries of a LUID (8 bytes) and its attributes (4).
            Memory privileges = new Memory(4096);
            NativeLibrary.getInstance("advapi32").getFunction("GetTokenInformation").invokeInt(new Object[] {
                token.getValue(), 3, privileges, (int) privileges.size(), new IntByReference()});
            for (int i = 0; i < privileges.getInt(0); i++) {
                if (privileges.getInt(4 + 12L * i) == luid.LowPart) {
                    return (privileges.getInt(4 + 12L * i + 8) & WinNT.SE_PRIVILEGE_ENABLED) != 0;
                }
            }
            return false;
        } finally {
            Kernel32.INSTANCE.CloseHandle(token.getValue());
        }
    }
}
