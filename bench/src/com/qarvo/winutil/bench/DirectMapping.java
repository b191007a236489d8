package com.qarvo.winutil.bench;

import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.WString;
import com.sun.jna.ptr.IntByReference;
import com.sun.jna.ptr.PointerByReference;

/** System functions mapped straight onto static methods by java-native-access; handles are plain numbers. */
final class DirectMapping {
    static final long INVALID_HANDLE_VALUE = -1;

    static {
        Native.register(DirectMapping.class, "kernel32");
    }

    private DirectMapping() {
    }

    static native long FindFirstFileW(WString pattern, Pointer data);

    static native boolean FindNextFileW(long search, Pointer data);

    static native boolean FindClose(long search);

    static native int GetFileAttributesW(WString path);

    static native boolean GetFileAttributesExW(WString path, int level, Pointer data);

    static native long CreateFileW(WString path, int access, int share, Pointer security, int disposition, int flags,
            Pointer template);

    static native boolean ReadFile(long file, Pointer buffer, int length, IntByReference count, Pointer overlapped);

    static native boolean ReadFile(long file, byte[] buffer, int length, IntByReference count, Pointer overlapped);

    static native boolean WriteFile(long file, Pointer buffer, int length, IntByReference count, Pointer overlapped);

    static native boolean WriteFile(long file, byte[] buffer, int length, IntByReference count, Pointer overlapped);

    static native boolean CloseHandle(long handle);

    static native Pointer LocalFree(Pointer memory);

    /** The functions about security descriptors, which live in another DLL. */
    static final class Security {
        static {
            Native.register(Security.class, "advapi32");
        }

        private Security() {
        }

        static native boolean GetFileSecurityW(WString path, int information, Pointer descriptor, int size,
                IntByReference needed);

        static native boolean ConvertSecurityDescriptorToStringSecurityDescriptorW(Pointer descriptor, int revision,
                int information, PointerByReference text, IntByReference length);
    }
}
