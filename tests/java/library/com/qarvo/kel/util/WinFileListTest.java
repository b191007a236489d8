package com.qarvo.kel.util;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class WinFileListTest {
    private final WinFileList list = new WinFileList();

    @Test
    void aNewListIsEmpty() {
        assertTrue(list.files().isEmpty());
    }

    @Test
    void entriesKeepTheirOrderAndEveryField() {
        list.addFile("C:\\data\\b.txt", false, 0x1_0000_0001L, -1, Win32.FILE_ATTRIBUTE_ARCHIVE, "O:SY", false);
        list.addFile("C:\\data\\a", true, 0, 1_600_000_000_123L, Win32.FILE_ATTRIBUTE_DIRECTORY, "", true);

        assertEquals(2, list.files().size());
        WinFile file = list.files().get(0);
        assertEquals("C:\\data\\b.txt", file.getPath());
        assertEquals("b.txt", file.getName());
        assertFalse(file.isDirectory());
        assertEquals(0x1_0000_0001L, file.getSize());
        assertEquals(-1, file.getLastModified());
        assertEquals(Win32.FILE_ATTRIBUTE_ARCHIVE, file.getAttributes());
        assertEquals("O:SY", file.getSecurityDescriptor());
        assertFalse(file.isReparsePoint());
        WinFile directory = list.files().get(1);
        assertEquals("C:\\data\\a", directory.getPath());
        assertTrue(directory.isDirectory());
        assertEquals(1_600_000_000_123L, directory.getLastModified());
        assertTrue(directory.isReparsePoint());
    }

    @Test
    void theListIsAViewThatOnlyAddFileChanges() {
        list.addFile("C:\\a", false, 1, 2, 0, "", false);

        assertThrows(UnsupportedOperationException.class, () -> list.files().clear());
        assertEquals(1, list.files().size());
    }

    @Test
    void aRecordOfAListingKnowsNoLinkKind() {
        WinFile directory = new WinFile("C:\\link", true, 0, 0, Win32.FILE_ATTRIBUTE_REPARSE_POINT, "", true);
        WinFile file = new WinFile("C:\\link", false, 0, 0, Win32.FILE_ATTRIBUTE_REPARSE_POINT, "", true);

        assertEquals(WinFile.DIRECTORY, directory.getLinkKind());
        assertEquals(WinFile.FILE, file.getLinkKind());
        assertFalse(directory.isLink());
        assertEquals("", file.getLinkTarget());
    }

    @Test
    void theFlagOfAListingCountsAndNotItsAttributes() {
        int attributes = Win32.FILE_ATTRIBUTE_REPARSE_POINT;

        assertFalse(new WinFile("C:\\a", false, 0, 0, attributes, "", false).isReparsePoint());
        assertTrue(new WinFile("C:\\a", false, 0, 0, 0, "", true).isReparsePoint());
    }

    @ParameterizedTest
    @CsvSource({"0,false", "2,false", "16,true", "17,true", "18,true"})
    void junctionsAndSymbolicLinksAreLinks(byte kind, boolean link) {
        WinFile record = new WinFile("C:\\a", true, 0, 0, Win32.FILE_ATTRIBUTE_DIRECTORY, "", kind, "..\\b");

        assertEquals(kind, record.getLinkKind());
        assertEquals(link, record.isLink());
        assertEquals("..\\b", record.getLinkTarget());
    }

    @Test
    void aSingleRecordTakesTheReparseFlagFromItsAttributes() {
        int mounted = Win32.FILE_ATTRIBUTE_DIRECTORY | Win32.FILE_ATTRIBUTE_REPARSE_POINT;

        assertTrue(new WinFile("C:\\mnt", true, 0, 0, mounted, "", WinFile.DIRECTORY, "").isReparsePoint());
        assertFalse(new WinFile("C:\\a", false, 0, 0, 0x20, "", WinFile.FILE, "").isReparsePoint());
    }

    @Test
    void theNameOfAPathWithoutBackslashIsThePath() {
        assertEquals("a.txt", new WinFile("a.txt", false, 0, 0, 0, "", false).getName());
    }
}
