package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNotSame;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.Kernel32Util;
import com.sun.jna.platform.win32.Netapi32Util;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.ptr.IntByReference;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.NullAndEmptySource;
import org.junit.jupiter.params.provider.ValueSource;

/** Who this process is, and what is known of accounts; of a directory only that there is none. */
class IdentityTest extends EndToEnd {
    /** A list that cannot be made empty. */
    private static final class OnlyOf extends ArrayList<Object> {
        OnlyOf(Object... elements) {
            super(List.of(elements));
        }
    }

    @AfterEach
    void actAsTheProcess() {
        Advapi32.INSTANCE.RevertToSelf();
    }

    private static String computerName(int format) {
        char[] name = new char[1024];
        IntByReference size = new IntByReference(name.length);
        assertTrue(Kernel32.INSTANCE.GetComputerNameEx(format, name, size));
        return new String(name, 0, size.getValue());
    }

    @Test
    void theUserIsThatOfTheProcess() {
        assertEquals(Advapi32Util.getUserName(), util.getUsername());
        assertEquals(Advapi32Util.getAccountByName(util.getUsername()).sidString, util.getSID());
        assertEquals(Advapi32Util.getAccountBySid(util.getSID()).domain, util.getV6DomainName());
    }

    @Test
    void theUserIsTheImpersonatedOne() {
        String own = util.getSID();
        Advapi32.INSTANCE.ImpersonateSelf(2);

        assertEquals(own, util.getSID());
        assertEquals(Kernel32Util.getComputerName(), util.getV6DomainName());
    }

    @Test
    void theComputerHasItsNames() {
        String name = computerName(WinBase.COMPUTER_NAME_FORMAT.ComputerNameDnsFullyQualified);

        assertEquals(name.substring(name.indexOf('.') + 1), util.getDomainName());
        assertEquals(computerName(WinBase.COMPUTER_NAME_FORMAT.ComputerNamePhysicalNetBIOS),
                util.getNetBIOSComputerName());
    }

    @ParameterizedTest
    @CsvSource({
        "NT AUTHORITY, SYSTEM, S-1-5-18",
        "BUILTIN, Administrators, S-1-5-32-544",
        ", Administrators, S-1-5-32-544",
        "'', Everyone, S-1-1-0",
        ", no such account, ''",
        "no such domain, SYSTEM, ''",
        "BUILTIN, , ''",
        "'', '', ''",
    })
    void aNamedAccountHasItsSid(String domain, String user, String sid) {
        assertEquals(sid, util.getSIDForUser(domain, user));
    }

    @Test
    void anAccountIsFoundInItsDomain() {
        assertEquals(util.getSID(), util.getSIDForUser(util.getV6DomainName(), util.getUsername()));
        assertEquals(util.getSID(), util.getSIDForUser(null, util.getUsername()));
    }

    @ParameterizedTest
    @NullAndEmptySource
    @ValueSource(strings = "\\\\no-such-server")
    void aUserHasTheGroupsThatTheSystemNames(String server) {
        List<Object> groups = new ArrayList<>();

        util.getDomainUserGroups(server, util.getUsername(), groups);

        // This system knows of no groups in a domain.
        Netapi32Util.Group[] expected = Netapi32Util.getUserLocalGroups(util.getUsername());
        assertEquals(Arrays.stream(expected).map(group -> group.name).toList(), groups);
    }

    @Test
    void theExceptionOfACollectionReachesTheCaller() {
        IllegalStateException full = new IllegalStateException("full");
        List<Object> collection = new ArrayList<>() {
            @Override
            public boolean add(Object element) {
                throw full;
            }
        };

        assertSame(full, assertThrowsExactly(IllegalStateException.class,
                () -> util.getDomainUserGroups(null, "somebody", collection)));
    }

    @Test
    void withoutADirectoryNoMembershipIsEstablished() {
        List<String> groups = new ArrayList<>(List.of("Staff", "Gr\u00FCnde \u65E5\u672C"));

        Object rest = util.isMemberOf(groups);

        assertEquals(groups, rest);
        assertNotSame(groups, rest);
        assertSame(ArrayList.class, rest.getClass());
    }

    @Test
    void anEmptyListHasNoMembershipsToAskFor() {
        Object rest = util.isMemberOf(new ArrayList<>());

        assertNotNull(rest);
        assertEquals(List.of(), rest);
    }

    @Test
    void aListThatCannotBeMadeAnewGivesNone() {
        assertNull(util.isMemberOf(new OnlyOf("Staff")));
        assertNull(util.isMemberOf(null));
    }
}
