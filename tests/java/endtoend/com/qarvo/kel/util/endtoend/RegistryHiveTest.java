package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.WinReg;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class RegistryHiveTest extends OwnRegistryKey {
    @TempDir
    Path folder;

    private final String hive = "WinUtilEndToEnd" + ProcessHandle.current().pid();

    @BeforeEach
    void switchPrivilegesOn() {
        assertTrue(util.enableBackupPrivilege());
        assertTrue(util.enableRestorePrivilege());
    }

    private String save() {
        String file = folder.resolve("hive \u00e9").toString();
        save(key, file);
        return file;
    }

    @Test
    void aHiveIsLoadedReadAndUnloaded() {
        Advapi32Util.registryCreateKey(WinReg.HKEY_CURRENT_USER, key, "subkey");
        Advapi32Util.registrySetStringValue(WinReg.HKEY_CURRENT_USER, key, "text", "in the hive");
        String file = save();

        assertTrue(util.loadRegistry("hkey_users", hive, file));
        try {
            Collector collector = new Collector();
            util.listRegistry(collector, "HKEY_USERS", hive);
            assertEquals(List.of("key subkey", "text text=in the hive"), collector.items);
            assertEquals("in the hive", util.getRegistryString("HKEY_USERS\\" + hive + "\\text"));
        } finally {
            assertTrue(util.unloadRegistry("HKEY_USERS", hive));
        }
        assertEquals("", util.getRegistryString("HKEY_USERS\\" + hive + "\\text"));
        assertFalse(util.unloadRegistry("HKEY_USERS", hive));
    }

    @Test
    void whatIsNotThereFails() {
        assertFalse(util.loadRegistry("HKEY_USERS", hive, folder.resolve("missing").toString()));
        assertFalse(util.loadRegistry("HKU", hive, save()));
        assertFalse(util.unloadRegistry("HKU", hive));
    }
}
