package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Who can read a store. */
class StoreRightsTest {
    private static final String CLOSED = "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)";

    private final Bed bed = new Bed().withSource();
    private final FakeFiles files = bed.files;

    @Test
    void aNewStoreIsClosedFromItsFirstMoment() {
        List<String> open = new ArrayList<>();
        files.atEachChange = call -> files.nodes.keySet().stream()
                .filter(path -> Names.isInside(path, "C:\\store") && files.isOpenToOthers(path)).forEach(open::add);

        Bed.Result result = bed.backup();

        assertEquals(0, result.code(), result.err());
        assertEquals(List.of(), open);
        assertTrue(files.calls.contains("mkdir-closed C:\\store"));
        assertEquals("O:" + files.ownAccount + "G:SY" + CLOSED, files.node("C:\\store").security);
        assertFalse(files.isOpenToOthers("C:\\store\\manifest.txt"));
    }

    @Test
    void onRequestItIsAsOpenAsItsFolder() {
        Bed.Result result = bed.run("backup", "--share-store", "C:\\src", "C:\\store");

        assertEquals(0, result.code(), result.err());
        assertTrue(files.calls.contains("mkdir C:\\store"));
        assertEquals(FakeDisk.SDDL, files.node("C:\\store").security);
    }

    @Test
    void aFolderThatIsThereStaysAsItIs() {
        files.addDirectory("C:\\store");

        assertEquals(0, bed.backup().code());

        assertEquals(FakeDisk.SDDL, files.node("C:\\store").security);
    }

    @Test
    void whereTheFileSystemKeepsNoRightsItIsSaidAndNothingIsLeft() {
        files.keepsRights = false;

        Bed.Result result = bed.backup();

        assertEquals(new Bed.Result(2, "", "The store C:\\store cannot be closed to others: its rights are"
                + " O:WDG:WDD:(A;OICI;FA;;;WD) after all; --share-store leaves it as open as its folder.\n"), result);
        assertNull(files.node("C:\\store"));
        assertEquals(0, bed.run("backup", "--share-store", "C:\\src", "C:\\store").code());
    }

    @Test
    void aFolderOfSomebodyElseInItsPlaceIsNoticed() {
        files.whenHeld.put("C:\\store", () -> {
            files.move("C:\\store", "C:\\moved");
            files.addDirectory("C:\\store").security = "O:S-1-5-21-9-9-9-1009G:SY" + CLOSED;
        });

        Bed.Result result = bed.backup();

        assertEquals(2, result.code());
        assertTrue(result.err().contains("its rights are O:S-1-5-21-9-9-9-1009"), result.err());
        assertEquals(List.of(), files.below("C:\\store"));
        assertEquals(0, files.openHandles());
    }

    @Test
    void nobodyCanRenameItWhileItIsWritten() {
        List<Boolean> held = new ArrayList<>();
        files.atEachChange = call -> {
            if (call.startsWith("write C:\\store")) {
                held.add(files.isHeld("C:\\store"));
            }
        };

        bed.backup();

        assertFalse(held.isEmpty() || held.contains(false));
        assertEquals(0, files.openHandles());
    }

    @Test
    void ofAnAccountWithoutANameNothingIsClosed() {
        files.administrator = false;
        files.ownAccount = "";

        assertEquals(2, bed.backup().code());
        assertNull(files.node("C:\\store"));
    }
}
