package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.IOException;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class EscapesTest {
    @ParameterizedTest
    @ValueSource(strings = {"plain", "C:\\data\\x", "tab\there", "line\nbreak\r", "\uD83D\uDE00", "half \uD83D pair",
        "\uDE00\uD83D", "caf\u00E9", "\u202Etxt.exe", "\u2028", "\u0000\u001B[2J\u007F\u0085", "\\u0041", "\\", " "})
    void whatIsEscapedComesBack(String text) throws IOException {
        String escaped = Escapes.escape(text);

        assertEquals(text, Escapes.unescape(escaped));
        assertFalse(escaped.chars().anyMatch(c -> c < ' '), escaped);
    }

    @Test
    void writesReadableTextAsItIs() {
        assertEquals("caf\u00E9 \uD83D\uDE00", Escapes.escape("caf\u00E9 \uD83D\uDE00"));
        assertEquals("C:\\\\x", Escapes.escape("C:\\x"));
        assertEquals("\\uD83D", Escapes.escape("\uD83D"));
        assertEquals("\\t\\n\\r\\u001B", Escapes.escape("\t\n\r\u001B"));
    }

    @Test
    void printsPathsForPeopleWithoutControlCharacters() {
        assertEquals("C:\\a\\u001B[31m\\n", Escapes.printable("C:\\a\u001B[31m\n"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"\\", "\\x", "\\u12", "\\u12G4", "\\u+123", "abc\\", "\\U0041"})
    void refusesEscapesThatItDoesNotWrite(String field) {
        assertThrows(IOException.class, () -> Escapes.unescape(field));
    }
}
