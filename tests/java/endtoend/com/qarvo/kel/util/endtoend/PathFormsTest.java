package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class PathFormsTest extends EndToEnd {
    @TempDir
    Path folder;

    @Test
    void aShortNameBecomesTheLongOne() throws IOException {
        Path file = Files.createFile(folder.resolve("a name that is not short.text"));
        String shortName = Witness.shortPath(file.toString());
        assertNotEquals(file.toString(), shortName);

        assertTrue(Files.isSameFile(file, Path.of(util.getLongPathName(shortName))));
        assertTrue(util.getLongPathName(shortName).endsWith("\\a name that is not short.text"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"C:\\no such file", "Q:\\x", "", "a|b", "no\\such"})
    void aPathThatLeadsNowhereComesBackAsItIs(String path) {
        assertEquals(path, util.getLongPathName(path));
    }

    @ParameterizedTest
    @ValueSource(ints = {300, 510, 511, 512, 513, 600})
    void aPathOfAnyLengthComesBackWhole(int length) throws IOException {
        Path deep = Deep.path(folder, length);
        Files.createDirectories(deep);

        assertEquals(length, deep.toString().length());
        assertEquals(deep.toString(), util.getLongPathName(deep.toString()));
    }

    @Test
    void environmentVariablesAreExpanded() {
        String windows = System.getenv("SystemRoot");

        assertEquals(windows + "\\system32;" + windows,
                util.CovertEnvPathToFilePath("%SystemRoot%\\system32;%SYSTEMROOT%"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "C:\\plain\\path", "%NO_SUCH_VARIABLE%\\x", "100 %", "%%", "\u65E5\u672C \uD83D\uDE00"})
    void aTextWithoutVariablesComesBackAsItIs(String text) {
        assertEquals(text, util.CovertEnvPathToFilePath(text));
    }

    @ParameterizedTest
    @ValueSource(ints = {4094, 4095, 4096, 4097, 20000})
    void anExpandedTextMayHaveAnyLength(int length) {
        String windows = System.getenv("SystemRoot");
        String rest = "x".repeat(length - windows.length());

        assertEquals(windows + rest, util.CovertEnvPathToFilePath("%SystemRoot%" + rest));
    }
}
