package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.FileErrorListener;
import com.qarvo.kel.util.Win32;
import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.platform.win32.WinNT.HANDLEByReference;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

class SecurityTest extends EndToEnd {
    private static final int OWNER_GROUP_DACL =
            Win32.OWNER_SECURITY_INFORMATION | Win32.GROUP_SECURITY_INFORMATION | Win32.DACL_SECURITY_INFORMATION;
    private static final int UNCHANGED = -1;
    private static final int COMPRESSED = 0x800;
    /** How this system's files, whose rights are those of a UNIX file, say that everybody may read and write. */
    private static final String EVERYONE_WRITES = "0x1301ff;;;WD";

    @TempDir
    Path folder;

    private String file;

    @BeforeEach
    void makeFile() throws IOException {
        file = Files.writeString(folder.resolve("file"), "content").toString();
    }

    private String dacl() {
        return util.getWinSecurityDescriptor(file, Win32.DACL_SECURITY_INFORMATION, null);
    }

    /** The same rights, except that everybody may write. */
    static String widened(String dacl) {
        String wider = dacl.replace("0x1200a9;;;WD", EVERYONE_WRITES);
        assertNotEquals(wider, dacl);
        return wider;
    }

    static boolean isImpersonating() {
        HANDLEByReference token = new HANDLEByReference();
        if (!Advapi32.INSTANCE.OpenThreadToken(Kernel32.INSTANCE.GetCurrentThread(), WinNT.TOKEN_QUERY, true, token)) {
            return false;
        }
        return Kernel32.INSTANCE.CloseHandle(token.getValue());
    }

    @Test
    void aDescriptorHasOwnerGroupAndRights() {
        String text = util.getWinSecurityDescriptor(file, OWNER_GROUP_DACL, null);

        assertEquals(Witness.securityDescriptor(file), text);
        assertTrue(text.endsWith(dacl()), text);
        assertTrue(dacl().startsWith("D:"), dacl());
    }

    @Test
    void aDescriptorOfWhatIsMissingIsEmptyAndReported() {
        List<String> reports = new ArrayList<>();
        FileErrorListener listener = (path, message) -> reports.add(path);

        assertEquals("", util.getWinSecurityDescriptor(folder + "\\missing", OWNER_GROUP_DACL, listener));
        assertEquals(List.of(folder + "\\missing"), reports);
    }

    @Test
    void aDescriptorThatIsSetReadsBack() throws IOException {
        String wider = widened(dacl());

        assertTrue(util.setFileAttrWithSecurityDescriptor(file, Win32.DACL_SECURITY_INFORMATION, wider, HIDDEN));

        assertEquals(wider, dacl());
        assertEquals(HIDDEN, Witness.attributes(file) & HIDDEN);
        assertTrue(util.setFileAttrWithSecurityDescriptor(file, 0, null, NORMAL));
        assertTrue(util.setFileAttrWithSecurityDescriptor(file, 0, "", UNCHANGED));
        assertEquals(0, Witness.attributes(file) & HIDDEN);
    }

    @Test
    void aTextThatIsNoDescriptorIsRefused() {
        String message = assertThrowsExactly(IOException.class, () -> util.setFileAttrWithSecurityDescriptor(file,
                Win32.DACL_SECURITY_INFORMATION, "nonsense", UNCHANGED)).getMessage();

        assertTrue(message.startsWith("Fail to set security descriptor: " + file + " ErrCode: 0x"), message);
    }

    @Test
    void attributesAreSetAsAWhole() throws IOException {
        util.setFileAttr(file, HIDDEN | READONLY);
        assertEquals(HIDDEN | READONLY, Witness.attributes(file) & (HIDDEN | READONLY));

        util.setFileAttr(file, UNCHANGED);
        util.setFileAttr(file, READONLY);
        assertEquals(READONLY, Witness.attributes(file) & (HIDDEN | READONLY));
        util.setFileAttr(file, NORMAL);
    }

    @Test
    void aFileThatCannotBeCompressedKeepsItsAttributes() {
        assertFails(IOException.class, "Fail to compress file: " + folder + "\\missing",
                () -> util.setFileAttr(folder + "\\missing", COMPRESSED));
    }

    @Test
    void anEntryOfTheAccessRightsIsAddedInSilence() {
        util.setFileACL(file, "no such account", 1, Win32.GRANT_ACCESS);
        util.setFileACL(folder + "\\missing", "Users", 1, Win32.GRANT_ACCESS);
        assertFalse(dacl().contains(EVERYONE_WRITES), dacl());

        util.setFileACL(file, "Everyone", GENERIC_WRITE, Win32.GRANT_ACCESS);

        assertTrue(dacl().contains(EVERYONE_WRITES), dacl());
    }

    @Test
    void privilegesAreSwitchedOn() {
        assertTrue(util.enableBackupPrivilege());
        assertTrue(util.enableRestorePrivilege());
        assertTrue(util.enableSecurityPrivilege());
        assertTrue(util.enableTakeOwnershipPrivilege());

        for (String name : new String[] {"Backup", "Restore", "Security", "TakeOwnership"}) {
            assertTrue(Witness.isPrivilegeOn("Se" + name + "Privilege"), name);
        }
    }

    @Test
    void anAccessCheckForNobodyIsRefusedWithoutAReason() {
        assertFails(IOException.class, "", () -> util.isAccessRead(file, "", "", ""));
        assertFails(IOException.class, "", () -> util.isAccessWrite(file, "", "", ""));
    }

    @Test
    void aLogonThatCannotBeImpersonatedSaysSo() {
        String reason = " [WindowsUtil:SystemPrivilege:impersonateUser:ImpersonateLoggedOnUser]  ("
                + INVALID_HANDLE + ") ";
        for (Executable call : List.<Executable>of(
                () -> util.impersonateUser(".", "somebody", "secret"),
                () -> util.isAccessRead(file, ".", "somebody", "secret"),
                () -> util.isAccessWrite(file, ".", "somebody", "secret"))) {
            String message = assertThrowsExactly(IOException.class, call).getMessage();
            assertTrue(message.startsWith(reason), message);
        }
    }

    @Test
    void theThreadActsAsItselfAfterwards() throws IOException {
        Advapi32.INSTANCE.ImpersonateSelf(2);
        assertTrue(isImpersonating());

        util.impersonateToSelf();
        assertFalse(isImpersonating());
    }

    @Test
    void credentialsArePresentedInSilence() throws Exception {
        assertEquals("", util.networkAuthenticate("DOM", "somebody", "secret"));
        // This system's logon accepts anybody.
        util.validateUserNative("DOM", "somebody", "secret");
        util.validateUserNative(null, null, null);
    }
}
