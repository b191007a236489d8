package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.qarvo.kel.util.RegistryCollector;
import com.sun.jna.NativeLibrary;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinReg;
import com.sun.jna.platform.win32.WinReg.HKEYByReference;
import com.sun.jna.ptr.IntByReference;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;

/** A registry key for each test, gone at its end, and java-native-access as the witness of what is in it. */
abstract class OwnRegistryKey extends EndToEnd {
    static final String ROOT = "HKEY_CURRENT_USER";
    private static final String PARENT = "Software\\WinUtilEndToEnd";

    /** The path of the key below the root. */
    final String key = PARENT + ProcessHandle.current().pid();

    @BeforeEach
    void makeKey() {
        Advapi32Util.registryCreateKey(WinReg.HKEY_CURRENT_USER, key);
    }

    @AfterEach
    void removeKey() {
        remove(key);
    }

    /** Removes a key of the current user's with all that is below it. */
    static void remove(String path) {
        for (String below : Advapi32Util.registryGetKeys(WinReg.HKEY_CURRENT_USER, path)) {
            remove(path + "\\" + below);
        }
        Advapi32Util.registryDeleteKey(WinReg.HKEY_CURRENT_USER, path);
    }

    /** The full path of a value in the key. */
    String path(String valueName) {
        return ROOT + "\\" + key + "\\" + valueName;
    }

    /** Stores bytes as a value of any type. */
    void put(String name, int type, byte... data) {
        HKEYByReference opened = open(key, WinNT.KEY_WRITE);
        try {
            assertEquals(0, Advapi32.INSTANCE.RegSetValueEx(opened.getValue(), name, 0, type, data, data.length));
        } finally {
            Advapi32.INSTANCE.RegCloseKey(opened.getValue());
        }
    }

    Object stored(String name) {
        return Advapi32Util.registryGetValue(WinReg.HKEY_CURRENT_USER, key, name);
    }

    /** The class that a key was made with. */
    String classOf(String subkey) {
        HKEYByReference opened = open(key + "\\" + subkey, WinNT.KEY_READ);
        try {
            char[] text = new char[64];
            IntByReference length = new IntByReference(text.length);
            assertEquals(0, Advapi32.INSTANCE.RegQueryInfoKey(opened.getValue(), text, length, null, null, null, null,
                    null, null, null, null, null));
            return new String(text, 0, length.getValue());
        } finally {
            Advapi32.INSTANCE.RegCloseKey(opened.getValue());
        }
    }

    static HKEYByReference open(String path, int access) {
        HKEYByReference opened = new HKEYByReference();
        assertEquals(0, Advapi32.INSTANCE.RegOpenKeyEx(WinReg.HKEY_CURRENT_USER, path, 0, access, opened));
        return opened;
    }

    /** Stores a key of the current user's as a hive; the privilege to back up must be on. */
    static void save(String path, String file) {
        HKEYByReference opened = open(path, WinNT.KEY_READ);
        try {
            assertEquals(0, NativeLibrary.getInstance("advapi32").getFunction("RegSaveKeyW")
                    .invokeInt(new Object[] {opened.getValue(), new WString(file), null}));
        } finally {
            Advapi32.INSTANCE.RegCloseKey(opened.getValue());
        }
    }

    /** Collects a listing as texts: the method, the item's name, and its value. */
    public static class Collector implements RegistryCollector {
        final List<String> items = new ArrayList<>();

        @Override
        public void addNode(String root, String path, String name) {
            items.add("key " + name);
        }

        @Override
        public void addStringNode(String root, String path, String name, String value) {
            items.add("text " + name + "=" + value);
        }

        @Override
        public void addDwordNode(String root, String path, String name, long value) {
            items.add("number " + name + "=" + value);
        }

        @Override
        public void addByteNode(String root, String path, String name, byte[] value) {
            items.add("bytes " + name + "=" + java.util.HexFormat.of().formatHex(value));
        }

        @Override
        public void addMultiStringNode(String root, String path, String name, String[] value) {
            items.add("list " + name + "=" + List.of(value));
        }
    }
}
