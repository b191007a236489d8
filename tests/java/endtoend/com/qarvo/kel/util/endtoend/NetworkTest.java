package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.qarvo.kel.util.NetworkCollector;
import com.sun.jna.Native;
import com.sun.jna.NativeLibrary;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.Mpr;
import com.sun.jna.platform.win32.Winnetwk.NETRESOURCE;
import com.sun.jna.ptr.IntByReference;
import com.sun.jna.ptr.PointerByReference;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Network drives on a machine that need not have any: what the system answers others, the library answers too. */
class NetworkTest extends EndToEnd {
    private static final NativeLibrary MPR = NativeLibrary.getInstance("mpr");
    private static final String SHARE = "\\\\winutil-no-such-server\\share";
    private static final int CONNECTED = 1;
    private static final int MODEM_LAN_OR_PROXY = 7;

    /** Keeps what it is handed. */
    public static final class Connections implements NetworkCollector {
        final List<String> remoteNames = new ArrayList<>();

        @Override
        public void addEntry(String scope, String type, String displayType, String usage, String localName,
                String remoteName, String provider) {
            remoteNames.add(remoteName);
        }
    }

    private static int cancel(String name) {
        return MPR.getFunction("WNetCancelConnectionW").invokeInt(new Object[] {new WString(name), 0});
    }

    @Test
    void aShareThatIsNotConnectedCannotBeDisconnected() {
        assertFails(IOException.class, Witness.message("WNetUseConnectionW", cancel(SHARE)),
                () -> util.removeNetUsed(SHARE));
    }

    @Test
    void aShareOfNoServerCannotBeConnected() {
        NETRESOURCE resource = new NETRESOURCE();
        resource.dwType = 1;
        resource.lpRemoteName = SHARE;
        int code = Mpr.INSTANCE.WNetUseConnection(null, resource, "secret", "user", 0, null,
                new IntByReference(), null);

        assertFails(IOException.class, Witness.message("WNetUseConnectionW", code),
                () -> util.netUse("user", "secret", SHARE));
    }

    @Test
    void theConnectionsAreListedWhereThereIsANetwork() {
        PointerByReference enumeration = new PointerByReference();
        boolean network = MPR.getFunction("WNetOpenEnumW")
                .invokeInt(new Object[] {CONNECTED, 0, 0, null, enumeration}) == 0;
        if (network) {
            MPR.getFunction("WNetCloseEnum").invokeInt(new Object[] {enumeration.getValue()});
        }
        Connections connections = new Connections();

        assertEquals(network, util.getNetUsed(connections));

        if (!network) {
            assertEquals(List.of(), connections.remoteNames);
        }
    }

    @Test
    void theUserOfAConnectionIsTheOneThatTheSystemNames() throws IOException {
        char[] user = new char[256];
        int code = MPR.getFunction("WNetGetUserW")
                .invokeInt(new Object[] {new WString("C:"), user, new IntByReference(user.length)});

        if (code == 0) {
            assertEquals(Native.toString(user), util.getUserByNetUsedPath("C:"));
        } else {
            assertFails(IOException.class, Witness.message("WNetGetUserW", code),
                    () -> util.getUserByNetUsedPath("C:"));
        }
    }

    @Test
    void aPathOnNoNetworkDriveIsItsOwnUniversalName() {
        for (String path : new String[] {"C:\\windows\\\u00e9\u20ac", "relative", "", SHARE + "\\file"}) {
            assertEquals(path, util.getUNC(path));
        }
    }

    @Test
    void theMachineIsConnectedWhenTheSystemSaysSo() {
        IntByReference flags = new IntByReference();
        boolean state = NativeLibrary.getInstance("wininet").getFunction("InternetGetConnectedState")
                .invokeInt(new Object[] {flags, 0}) != 0;

        assertEquals(state && (flags.getValue() & MODEM_LAN_OR_PROXY) != 0, util.isNetworkConnected());
    }
}
