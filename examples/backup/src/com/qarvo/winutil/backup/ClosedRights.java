package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import java.io.IOException;
import java.util.Set;

/**
 * The rights of what is closed to others: for the system and the administrators alone, and for the account of this
 * process where it is neither of them.
 */
final class ClosedRights {
    private static final String SYSTEM = "SY";
    private static final String ADMINISTRATORS = "BA";

    private final String account;
    private final boolean administrator;

    private ClosedRights(String account, boolean administrator) {
        this.account = account;
        this.administrator = administrator;
    }

    static ClosedRights of(NativeFiles files) {
        return new ClosedRights(files.account(), files.isAdministrator());
    }

    /** Gives them as SDDL text; those of a directory hold for everything that is made below it. */
    String text(boolean directory) {
        String inherited = directory ? "OICI" : "";
        return "D:P" + grant(inherited, SYSTEM) + grant(inherited, ADMINISTRATORS)
                + (administrator ? "" : grant(inherited, account));
    }

    private static String grant(String inherited, String trustee) {
        return "(A;" + inherited + ";FA;;;" + trustee + ")";
    }

    /**
     * Closes a directory, and makes sure that it is: not every file system keeps rights, or says that it does not.
     *
     * @throws IOException when it cannot be closed
     */
    void close(NativeFiles files, String directory) throws IOException {
        if (account.isEmpty()) {
            throw new IOException("the system does not tell which account this is");
        }
        // An owner can give himself every right again, whatever the list says. Who may not change the list of somebody
        // else's directory may still take it over first; and who cannot take it over yet, once the list lets him.
        boolean taken = administrator && takeOver(files, directory);
        files.setSecurity(directory, Win32.DACL_SECURITY_INFORMATION, text(true));
        if (administrator && !taken) {
            takeOver(files, directory);
        }
        requireClosed(files.security(directory));
    }

    private static boolean takeOver(NativeFiles files, String directory) {
        try {
            files.setSecurity(directory, Win32.OWNER_SECURITY_INFORMATION, "O:" + ADMINISTRATORS);
            return true;
        } catch (IOException e) {
            // Whose it is in the end is looked at when all is done.
            return false;
        }
    }

    private void requireClosed(String found) throws IOException {
        if (found.isEmpty()) {
            throw new IOException("its rights cannot be read");
        }
        if (!Descriptor.parse(found).grantsOnly(Set.of(SYSTEM, ADMINISTRATORS, account))) {
            throw new IOException("its rights are " + Escapes.printable(found) + " after all");
        }
    }
}
