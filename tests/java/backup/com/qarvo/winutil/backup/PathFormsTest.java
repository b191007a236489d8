package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class PathFormsTest {
    @ParameterizedTest
    @CsvSource({"C:\\a, \\\\?\\C:\\a", "c:\\, \\\\?\\c:\\", "\\\\server\\share\\a, \\\\?\\UNC\\server\\share\\a"})
    void theClassicAndTheExtendedFormLeadToEachOther(String classic, String extended) {
        assertEquals(extended, PathForms.extended(classic));
        assertEquals(extended, PathForms.extended(extended));
        assertEquals(classic, PathForms.classic(extended));
        assertEquals(classic, PathForms.classic(classic));
    }

    @Test
    void thePrefixOfAShareIsKnownInAnyCase() {
        assertEquals("\\\\server\\share", PathForms.classic("\\\\?\\unc\\server\\share"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"\\\\?\\Volume{01234567-89ab-cdef-0123-456789abcdef}\\", "\\\\?\\GLOBALROOT\\Device\\x",
        "\\\\?\\C:", "\\\\?\\C:a", "\\\\?\\", "\\\\?\\a\\b", "\\\\.\\C:\\", "\\\\.\\Volume{0}\\"})
    void whatHasNoClassicFormIsRefused(String path) {
        ClientException e = assertThrows(ClientException.class, () -> PathForms.classic(path));

        assertEquals(path + " cannot be used: it takes a path that begins with a drive letter, or that of a share.",
                e.getMessage());
    }

    @Test
    void someNamesAndLongPathsNeedTheExtendedForm() {
        assertTrue(PathForms.needsExtended("C:\\" + "a".repeat(245)));
        assertFalse(PathForms.needsExtended("C:\\" + "a".repeat(244)));
        for (String path : new String[] {"C:\\a.", "C:\\a ", "C:\\a.\\b", "C:\\a \\b"}) {
            assertTrue(PathForms.needsExtended(path), path);
        }
        assertFalse(PathForms.needsExtended("C:\\a.b\\c d"));
    }
}
