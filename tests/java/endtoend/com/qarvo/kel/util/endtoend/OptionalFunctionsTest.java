package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class OptionalFunctionsTest extends EndToEnd {
    @ParameterizedTest
    @CsvSource(nullValues = "null", value = {
        "kernel32.dll, CreateFileW, true",
        "kernel32, CreateFileW, true",
        "kernel32.dll, NoSuchFunction, false",
        "kernel32.dll, createfilew, false",
        "kernel32.dll, '', true",
        "kernel32.dll, null, true",
        "no such library.dll, CreateFileW, false",
        "no such library.dll, '', false",
        "'', CreateFileW, false",
        "null, CreateFileW, false",
        "null, null, false",
    })
    void aFunctionIsSupportedWhenItsModuleLoadsAndHasIt(String library, String function, boolean supported) {
        assertEquals(supported, util.isMethodSupported(library, function));
    }

    @Test
    void loadingTheLibrarySwitchesItsThreePrivilegesOn() {
        assertEquals(true, Witness.isPrivilegeOn("SeRestorePrivilege"));
        assertEquals(true, Witness.isPrivilegeOn("SeTakeOwnershipPrivilege"));
        assertEquals(true, Witness.isPrivilegeOn("SeSecurityPrivilege"));
        assertEquals(false, Witness.isPrivilegeOn("SeShutdownPrivilege"));
    }
}
