package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.RegistryCollector;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinReg;
import com.sun.jna.platform.win32.WinReg.HKEY;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.Map;
import java.util.TreeSet;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class RegistryListingTest extends OwnRegistryKey {
    private static final HKEY USER = WinReg.HKEY_CURRENT_USER;

    private static List<String> list(String root, String path) {
        Collector collector = new Collector();
        util.listRegistry(collector, root, path);
        return collector.items;
    }

    @Test
    void eachTypeArrivesAtTheMethodMadeForIt() {
        Advapi32Util.registryCreateKey(USER, key, "subkey");
        Advapi32Util.registrySetStringValue(USER, key, "a", "text \u00e9");
        Advapi32Util.registrySetExpandableStringValue(USER, key, "b", "%windir%");
        Advapi32Util.registrySetIntValue(USER, key, "c", -1);
        Advapi32Util.registrySetBinaryValue(USER, key, "d", new byte[] {0, -1});
        Advapi32Util.registrySetStringArray(USER, key, "e", new String[] {"one", "two"});
        Advapi32Util.registrySetLongValue(USER, key, "f", 1);
        put("g", WinNT.REG_NONE, (byte) 1);
        put("h", WinNT.REG_FULL_RESOURCE_DESCRIPTOR, (byte) 2);

        assertEquals(List.of("key subkey", "text a=text \u00e9", "text b=%windir%", "number c=4294967295",
                "bytes d=00ff", "list e=[one, two]", "bytes h=02"), list(ROOT, key));
    }

    @Test
    void valuesThatEndTooEarlyDoNoHarm() {
        put("a", WinNT.REG_DWORD, (byte) 7);
        put("b", WinNT.REG_SZ, (byte) 'x', (byte) 0, (byte) 'y');
        put("c", WinNT.REG_MULTI_SZ, (byte) 'x', (byte) 0);
        put("d", WinNT.REG_MULTI_SZ);
        put("e", WinNT.REG_BINARY);

        List<String> items = list(ROOT, key);
        assertEquals("number a=7", items.get(0));
        assertTrue(items.get(1).startsWith("text b=x"), items.get(1));
        assertEquals(List.of("list c=[x]", "list d=[]", "bytes e="), items.subList(2, items.size()));
    }

    @Test
    void theSubkeysOfARootAreThoseThatTheWitnessSees() {
        for (Map.Entry<String, HKEY> root : Map.of("HKEY_LOCAL_MACHINE", WinReg.HKEY_LOCAL_MACHINE, "HKEY_USERS",
                WinReg.HKEY_USERS, "HKEY_CURRENT_USER", USER, "HKEY_CURRENT_CONFIG",
                WinReg.HKEY_CURRENT_CONFIG).entrySet()) {
            TreeSet<String> expected = new TreeSet<>();
            for (String name : Advapi32Util.registryGetKeys(root.getValue())) {
                expected.add("key " + name);
            }
            TreeSet<String> items = new TreeSet<>(list(root.getKey(), ""));
            items.removeIf(item -> !item.startsWith("key "));
            assertEquals(expected, items, root.getKey());
        }
    }

    @ParameterizedTest
    @ValueSource(strings = {"hkey_local_machine", "HKEY_PERFORMANCE_DATA", "HKLM", ""})
    void anotherSpellingOfTheRootListsNothing(String root) {
        assertEquals(List.of(), list(root, "Software"));
    }

    @Test
    void aMissingKeyListsNothing() {
        assertEquals(List.of(), list(ROOT, key + "\\missing"));
    }

    @Test
    void manyValuesAndALongListAreListedWhole() {
        for (int i = 0; i < 500; i++) {
            Advapi32Util.registrySetIntValue(USER, key, "value " + i, i);
        }
        String[] strings = new String[3000];
        Arrays.fill(strings, "string");
        Advapi32Util.registrySetStringArray(USER, key, "list", strings);

        List<String> items = list(ROOT, key);
        assertEquals(501, items.size());
        assertTrue(items.contains("number value 499=499"));
        assertTrue(items.contains("list list=" + Collections.nCopies(3000, "string")));
    }

    @Test
    void whatTheCollectorThrowsEndsTheListing() {
        Advapi32Util.registrySetIntValue(USER, key, "a", 1);
        Advapi32Util.registrySetIntValue(USER, key, "b", 1);
        RuntimeException thrown = new RuntimeException("enough");
        List<String> names = new ArrayList<>();
        Collector collector = new Collector() {
            @Override
            public void addDwordNode(String root, String path, String name, long value) {
                names.add(name);
                throw thrown;
            }
        };
        assertSame(thrown, assertThrowsExactly(RuntimeException.class, () -> util.listRegistry(collector, ROOT, key)));
        assertEquals(List.of("a"), names);
    }

    @Test
    void aCollectorWithoutTheMethodsIsPassedOver() {
        Advapi32Util.registryCreateKey(USER, key, "subkey");
        Advapi32Util.registrySetIntValue(USER, key, "a", 1);
        List<String> names = new ArrayList<>();
        Object onlyKeys = new Object() {
            @SuppressWarnings("unused") // called by the library, by name
            public void addNode(String root, String path, String name) {
                names.add(name);
            }
        };
        util.listRegistry(onlyKeys, ROOT, key);
        util.listRegistry("no collector at all", ROOT, key);
        assertEquals(List.of("subkey"), names);
    }

    @Test
    void whatACollectorDoesNotOverrideIsPassedOver() {
        Advapi32Util.registryCreateKey(USER, key, "subkey");
        Advapi32Util.registrySetIntValue(USER, key, "a", 1);
        Advapi32Util.registrySetBinaryValue(USER, key, "b", new byte[] {2});
        Advapi32Util.registrySetStringArray(USER, key, "c", new String[] {"3"});
        Advapi32Util.registrySetStringValue(USER, key, "d", "4");
        List<String> texts = new ArrayList<>();
        RegistryCollector onlyTexts = new RegistryCollector() {
            @Override
            public void addStringNode(String root, String path, String name, String value) {
                texts.add(name + "=" + value);
            }
        };
        util.listRegistry(onlyTexts, ROOT, key);
        assertEquals(List.of("d=4"), texts);
    }
}
