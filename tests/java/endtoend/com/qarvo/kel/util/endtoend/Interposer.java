package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.sun.jna.Library;
import com.sun.jna.Native;
import com.sun.jna.WString;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.function.ThrowingSupplier;

/** Lets happen what neither this JVM nor this system does by itself, by replacing functions that a DLL imports. */
final class Interposer {
    private interface Helper extends Library {
        boolean refuseMemory(long size);

        int allowMemory();

        boolean standIn(WString library);

        void standAside();

        boolean denyAttributesOf(WString library, WString part);

        void allowAttributes();

        int countLogons();

        long countImportedBytes();

        int lastImportCode();
    }

    // Never unloaded: a thread may be on its way through.
    private static final Helper HELPER = Native.load(EndToEnd.fixture("interposer"), Helper.class);

    private Interposer() {
    }

    /** Makes a call for which the JVM gets no block of this size, and sees to it that it asks for just one. */
    static <T> T withoutBlock(long bytes, ThrowingSupplier<T> call) throws Throwable {
        assertTrue(HELPER.refuseMemory(bytes));
        try {
            return call.get();
        } finally {
            assertEquals(1, HELPER.allowMemory(), "blocks refused");
        }
    }

    static void withoutBlock(long bytes, Executable call) throws Throwable {
        withoutBlock(bytes, () -> {
            call.execute();
            return null;
        });
    }

    /** From here on everybody can log on, and what is imported raw goes to an encrypted file that keeps nothing. */
    static void standIn() {
        assertTrue(HELPER.standIn(new WString(System.getProperty("winutil.library"))));
    }

    static void standAside() {
        HELPER.standAside();
    }

    /** Makes a call while the attributes of what has a text in its path cannot be read by themselves. */
    static <T> T withoutAttributesOf(String part, ThrowingSupplier<T> call) throws Throwable {
        assertTrue(HELPER.denyAttributesOf(new WString(System.getProperty("winutil.library")), new WString(part)));
        try {
            return call.get();
        } finally {
            HELPER.allowAttributes();
        }
    }

    static int logons() {
        return HELPER.countLogons();
    }

    static long importedBytes() {
        return HELPER.countImportedBytes();
    }

    /** The code with which the last raw import was given up; 0 when it was told that the file is complete. */
    static int importCode() {
        return HELPER.lastImportCode();
    }
}
