package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinReg;
import com.sun.jna.platform.win32.WinReg.HKEY;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class RegistryValuesTest extends OwnRegistryKey {
    private static final HKEY USER = WinReg.HKEY_CURRENT_USER;

    @Test
    void whatIsWrittenTheWitnessReads() {
        assertTrue(util.setRegistryDWORD(path("narrow number"), 0xFFFFFFFFL));
        assertTrue(util.setRegistryDWORDW(path("number \u4e2d"), 0x1_0000_0007L));
        assertTrue(util.setRegistryString(path("narrow text"), "some text"));
        assertTrue(util.setRegistryStringW(path("text"), "\u20ac \u4e2d \ud83d\ude00"));
        assertTrue(util.setRegistryMultiString(path("list"), "one"));
        assertTrue(util.setRegistryBinary(path("bytes"), new byte[] {1, 2, 3, 4}, 1, 2));

        assertEquals(-1, stored("narrow number"));
        assertEquals(7, stored("number \u4e2d"));
        assertEquals("some text", stored("narrow text"));
        assertEquals("\u20ac \u4e2d \ud83d\ude00", stored("text"));
        assertArrayEquals(new String[] {"one"}, Advapi32Util.registryGetStringArray(USER, key, "list"));
        assertArrayEquals(new byte[] {2, 3}, (byte[]) stored("bytes"));
    }

    @Test
    void whatTheWitnessWritesIsRead() {
        Advapi32Util.registrySetIntValue(USER, key, "number", -1);
        Advapi32Util.registrySetStringValue(USER, key, "text", "\u20ac \u4e2d");
        Advapi32Util.registrySetExpandableStringValue(USER, key, "expand", "%windir%");
        Advapi32Util.registrySetBinaryValue(USER, key, "bytes", new byte[] {0, -1});

        assertEquals(4294967295L, util.getRegistryDWORD(path("number")));
        assertEquals("\u20ac \u4e2d", util.getRegistryString(path("text")));
        assertEquals("%windir%", util.getRegistryString(path("expand")));
        assertEquals("%windir%", util.getRegistryValueString(ROOT + "\\" + key, "expand"));
        assertArrayEquals(new byte[] {0, -1}, util.getRegistryBinary(path("bytes")));
        assertEquals("%windir%", util.getRegistryValue(path("expand"), 0, WinNT.REG_SZ));
    }

    @Test
    void aValueOfAnotherTypeIsNone() {
        Advapi32Util.registrySetIntValue(USER, key, "number", 1);
        Advapi32Util.registrySetStringValue(USER, key, "text", "1");

        assertEquals(-1, util.getRegistryDWORD(path("text")));
        assertEquals("", util.getRegistryString(path("number")));
        assertEquals("", util.getRegistryValueString(ROOT + "\\" + key, "number"));
        assertEquals("", util.getRegistryValue(path("number"), 0, WinNT.REG_SZ));
        assertEquals("", util.getRegistryValue(path("text"), 0, WinNT.REG_EXPAND_SZ));
    }

    @Test
    void onlyTheMethodWhoseBlockGrowsReadsMoreThan1024Bytes() {
        String text = "t".repeat(50_000);
        Advapi32Util.registrySetStringValue(USER, key, "text", text);
        Advapi32Util.registrySetBinaryValue(USER, key, "bytes", new byte[1025]);

        assertEquals(text, util.getRegistryValue(path("text"), 0, WinNT.REG_SZ));
        assertEquals("", util.getRegistryString(path("text")));
        assertEquals(0, util.getRegistryBinary(path("bytes")).length);
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "HKEY_CURRENT_USER", "HKCU\\value", "HKEY_CURRENT_USER/Software/value"})
    void whatIsNoPathFails(String path) {
        assertFalse(util.setRegistryDWORD(path, 1));
        assertFalse(util.setRegistryDWORDW(path, 1));
        assertFalse(util.setRegistryString(path, "x"));
        assertFalse(util.setRegistryStringW(path, "x"));
        assertFalse(util.setRegistryMultiString(path, "x"));
        assertFalse(util.setRegistryBinary(path, new byte[1], 0, 1));
        assertEquals(-1, util.getRegistryDWORD(path));
        assertEquals("", util.getRegistryString(path));
        assertEquals(0, util.getRegistryBinary(path).length);
        assertEquals("", util.getRegistryValueString(path, "x"));
        assertEquals("", util.getRegistryValue(path, 0, WinNT.REG_SZ));
    }

    @Test
    void onlyTheWideMethodsTakeTheRootInSmallLetters() {
        String path = path("value").replace(ROOT, ROOT.toLowerCase());

        assertFalse(util.setRegistryDWORD(path, 1));
        assertTrue(util.setRegistryDWORDW(path, 1));
        assertEquals(-1, util.getRegistryDWORD(path));
        assertTrue(util.setRegistryStringW(path, "text"));
        assertEquals("", util.getRegistryString(path));
        assertEquals("text", util.getRegistryValue(path, 0, WinNT.REG_SZ));
        assertTrue(util.makeNewRegistryKey("hkey_current_user", key + "\\made"));
        assertFalse(util.makeNewRegistryKey("HKCU", key + "\\not made"));
    }

    @Test
    void anUnknownRootIsTheLocalMachineForOneMethod() {
        String value = "\\Software\\Microsoft\\Windows NT\\CurrentVersion\\SystemRoot";
        String expected = Advapi32Util.registryGetStringValue(WinReg.HKEY_LOCAL_MACHINE,
                "Software\\Microsoft\\Windows NT\\CurrentVersion", "SystemRoot");

        assertEquals(expected, util.getRegistryValue("no root" + value, 0, WinNT.REG_SZ));
        assertEquals("", util.getRegistryString("no root" + value));
    }

    @Test
    void keysThatAreMadeHaveTheClassLocalSystem() {
        assertTrue(util.makeNewRegistryKey(ROOT, key + "\\a\\b"));
        assertTrue(util.setRegistryDWORD(path("c\\value"), 1));
        assertTrue(util.setRegistryStringW(path("d\\value"), "x"));

        assertEquals("LocalSystem", classOf("a\\b"));
        assertEquals("LocalSystem", classOf("c"));
        assertEquals("LocalSystem", classOf("d"));
    }

    @Test
    void theViewOfTheRegistryMayBeNamed() {
        // The user's own keys are the same in both.
        Advapi32Util.registrySetStringValue(USER, key, "text", "text");
        assertEquals("text", util.getRegistryValue(path("text"), WinNT.KEY_WOW64_64KEY, WinNT.REG_SZ));
        assertEquals("text", util.getRegistryValue(path("text"), WinNT.KEY_WOW64_32KEY, WinNT.REG_SZ));
    }
}
