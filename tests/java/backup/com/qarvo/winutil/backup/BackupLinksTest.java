package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.winutil.backup.ManifestEntry.Type;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class BackupLinksTest {
    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @AfterEach
    void noFileIsLeftOpen() {
        assertEquals(0, files.openHandles());
    }

    @Test
    void aLinkWithoutADescriptorIsStoredAndReported() {
        files.addLink("C:\\src\\dangling", WinFile.FILE_SYMBOLIC_LINK, "C:\\nowhere").attributes = 0x422;
        files.withoutSecurity.add("C:\\src\\dangling");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\dangling: its security descriptor cannot be read: the system gives none\n",
                result.err());
        assertEquals(0x422, bed.entry("dangling").attributes());
        assertEquals(ManifestEntry.UNREAD, bed.entry("dangling").security());
    }

    @Test
    void linksAreStoredAsLinksAndNotFollowed() {
        files.addDirectory("C:\\elsewhere");
        files.addFile("C:\\elsewhere\\secret", "s");
        files.addLink("C:\\src\\junction", WinFile.JUNCTION, "C:\\elsewhere");
        files.addLink("C:\\src\\dir", WinFile.DIRECTORY_SYMBOLIC_LINK, "..\\elsewhere");
        files.addLink("C:\\src\\file", WinFile.FILE_SYMBOLIC_LINK, "C:\\elsewhere\\secret");
        for (String link : List.of("junction", "dir", "file")) {
            files.mirrors.put("C:\\src\\" + link, "C:\\elsewhere");
        }

        Bed.Result result = bed.backup();

        assertEquals(0, result.code(), result.err());
        assertEquals(Type.JUNCTION, bed.entry("junction").type());
        assertEquals("C:\\elsewhere", bed.entry("junction").linkTarget());
        assertEquals(Type.DIRECTORY_LINK, bed.entry("dir").type());
        assertEquals("..\\elsewhere", bed.entry("dir").linkTarget());
        assertEquals(Type.FILE_LINK, bed.entry("file").type());
        assertFalse(bed.manifest().stream().anyMatch(e -> e.path().contains("secret")));
        assertFalse(files.calls.stream().anyMatch(c -> c.startsWith("open C:\\src\\file")));
        assertTrue(result.out().contains("3 links"), result.out());
    }

    @Test
    void aLinkWhoseTargetCannotBeReadIsReported() {
        files.addLink("C:\\src\\junction", WinFile.JUNCTION, "");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertTrue(result.err().startsWith("left out: C:\\src\\junction: it is a link"), result.err());
    }

    @Test
    void aDirectoryWithAnotherReparseTagIsReportedAndNotEntered() {
        files.addDirectory("C:\\volume");
        files.addFile("C:\\volume\\secret", "s");
        files.addLink("C:\\src\\mounted", WinFile.DIRECTORY, "");
        files.mirrors.put("C:\\src\\mounted", "C:\\volume");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\mounted: it is a mounted volume or a reparse point of an unknown kind, and"
                + " not entered\n", result.err());
        assertFalse(bed.manifest().stream().anyMatch(e -> e.path().startsWith("mounted")));
    }

    @Test
    void aFileWithAnotherReparseTagIsAFile() {
        files.addLink("C:\\src\\deduplicated", WinFile.FILE, "").content = "content".getBytes();

        assertEquals(0, bed.backup().code());

        assertEquals(Bed.sha256("content"), bed.entry("deduplicated").sha256());
    }

    @ParameterizedTest
    @ValueSource(bytes = {WinFile.FILE, WinFile.FILE_SYMBOLIC_LINK})
    void aFileThatMayBeALinkIsReportedAndNotOpened(byte kind) {
        files.addLink("C:\\src\\sealed", kind, "C:\\elsewhere");
        files.sealed.add("C:\\src\\sealed");

        Bed.Result result = bed.backup();

        assertEquals(1, result.code());
        assertEquals("left out: C:\\src\\sealed: it may be a link, and its reparse point cannot be read\n",
                result.err());
        assertNull(bed.entry("sealed"));
        assertFalse(files.calls.contains("open C:\\src\\sealed"));
    }
}
