package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class NamesTest {
    @ParameterizedTest
    @ValueSource(strings = {"a.txt", ".hidden", "name.", "name ", " nul", "a..b", "console", "com", "com10",
        "auxiliary", "nul_", "\uD83D\uDE00", "\uD83D", "caf\u00E9"})
    void acceptsNamesThatAFolderCanHold(String name) {
        assertNull(Names.problemOf(name));
    }

    @ParameterizedTest
    @ValueSource(strings = {"", ".", "..", "...", ".. ", " ", "a/b", "a\\b", "C:", "a:stream", "a*", "a?", "a\"", "<a",
        "a>", "a|b", "a\0", "a\n", "con", "CON", "nul", "NUL.txt", "aux .c", "prn", "COM1", "lpt9.x", "com\u00B2",
        "CONIN$", "conout$"})
    void refusesNamesThatLeadElsewhere(String name) {
        assertNotNull(Names.problemOf(name));
    }

    @Test
    void checksEachComponentOfAPath() {
        assertNull(Names.problemOfPath("a\\b\\c"));
        assertNotNull(Names.problemOfPath("a\\..\\c"));
        assertNotNull(Names.problemOfPath("a\\\\c"));
        assertNotNull(Names.problemOfPath("\\a"));
        assertNotNull(Names.problemOfPath("a\\"));
    }

    @Test
    void joinsWithOneBackslash() {
        assertEquals("C:\\a", Names.join("C:\\", "a"));
        assertEquals("C:\\a\\b", Names.join("C:\\a", "b"));
        assertEquals("C:\\a", Names.join("C:\\a", ""));
        assertEquals("b", Names.join("", "b"));
    }

    @Test
    void insideIsDecidedByWholeComponentsWithoutRegardToCase() {
        assertTrue(Names.isInside("C:\\Data\\x", "c:\\data"));
        assertTrue(Names.isInside("C:\\data", "C:\\data\\"));
        assertTrue(Names.isInside("C:\\x", "C:\\"));
        assertFalse(Names.isInside("C:\\data2", "C:\\data"));
        assertFalse(Names.isInside("C:\\data", "C:\\data\\x"));
    }
}
