package com.qarvo.kel.util;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertInstanceOf;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;

import com.qarvo.dov.io.DiskFullException;
import com.qarvo.dov.io.SharingViolationException;
import java.io.IOException;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class ValueClassesTest {
    @Test
    void aProcessTakesStandardErrorBeforeStandardOutput() {
        WinPipe error = new WinPipe(2);
        WinPipe output = new WinPipe(3);

        WinProcess process = new WinProcess(1, error, output, 4, 5);

        assertEquals(1, process.getHandle());
        assertSame(error, process.getStandardError());
        assertSame(output, process.getStandardOutput());
        assertEquals(4, process.getTokenHandle());
        assertEquals(5, process.getProfileHandle());
        assertEquals(3, output.getHandle());
    }

    @ParameterizedTest
    @CsvSource({"-1,1", "0,-1", "0,9", "8,1", "1,2147483647", "2147483647,2147483647"})
    void aPipeChecksTheRangeThatTheNativeReadDoesNot(int offset, int length) {
        WinPipe pipe = new WinPipe(1);
        byte[] buffer = new byte[8];

        assertThrows(IndexOutOfBoundsException.class, () -> pipe.read(buffer, offset, length));
    }

    @Test
    void readingNothingFromAPipeDoesNotBlock() throws IOException {
        assertEquals(0, new WinPipe(1).read(new byte[8], 8, 0));
    }

    @Test
    void aProcessDescriptionKeepsEveryField() {
        WinProcessInfo info = new WinProcessInfo("java.exe", 4_294_967_295L, 2, "kim", "CORP");

        assertEquals("java.exe", info.getExecutableName());
        assertEquals(4_294_967_295L, info.getProcessId());
        assertEquals(2, info.getSessionId());
        assertEquals("kim", info.getAccountName());
        assertEquals("CORP", info.getDomainName());
        assertEquals("java.exe (process 4294967295, session 2, CORP\\kim)", info.toString());
    }

    @Test
    void aServerFeatureKeepsEveryField() {
        WinServerFeature feature = new WinServerFeature(7, 3, "File Server");

        assertEquals(7, feature.getId());
        assertEquals(3, feature.getParentId());
        assertEquals("File Server", feature.getName());
        assertEquals("File Server (7 in 3)", feature.toString());
    }

    @Test
    void theFileExceptionsAreIoExceptionsWithTheirMessage() {
        assertEquals("full", assertInstanceOf(IOException.class, new DiskFullException("full")).getMessage());
        assertEquals("held", assertInstanceOf(IOException.class, new SharingViolationException("held")).getMessage());
    }

    @Test
    void anAccountRestrictionIsAUtilException() {
        assertEquals("why", assertInstanceOf(UtilException.class,
                new UtilException.AccountRestrictionException("why")).getMessage());
    }
}
