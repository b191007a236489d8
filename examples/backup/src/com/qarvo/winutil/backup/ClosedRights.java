package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import java.io.IOException;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/**
 * The rights of what is closed to others: for the system and the administrators alone, and for the account of this
 * process where it is neither of them.
 */
final class ClosedRights {
    private static final String SYSTEM = "SY";
    private static final String ADMINISTRATORS = "BA";

    private final NativeFiles files;
    private final String account;
    private final boolean administrator;
    private final Set<String> trustees;

    private ClosedRights(NativeFiles files, String account, boolean administrator) {
        this.files = files;
        this.account = account;
        this.administrator = administrator;
        this.trustees = new HashSet<>(List.of(SYSTEM, ADMINISTRATORS, account, shortForm(account)));
    }

    /** Gives the rights for a path; who is an administrator here need not be one on a file server. */
    static ClosedRights of(NativeFiles files, String path) {
        return new ClosedRights(files, files.account(), files.isAdministrator() && !files.isRemote(path));
    }

    /** Gives the form in which the system writes some identifiers; its text has no other one for them. */
    private static String shortForm(String account) {
        return switch (account) {
            case "S-1-5-19" -> "LS";
            case "S-1-5-20" -> "NS";
            default -> account.startsWith("S-1-5-21-") && account.endsWith("-500") ? "LA" : account;
        };
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
     * Gives these rights to a directory that was just made with none for anybody. That it was is looked at: somebody
     * may have put another one in its place, or the file system may keep no rights.
     *
     * @throws IOException when it is not what was made, or cannot be given rights
     */
    void closeMade(String directory) throws IOException {
        Descriptor found = read(directory);
        if (!found.deniesEverybodyFirst() && !found.grantsOnly(trustees)) {
            throw asFound(found);
        }
        files.setSecurity(directory, Win32.DACL_SECURITY_INFORMATION, text(true));
    }

    /**
     * Gives these rights to a directory that was there, and takes it over when it belongs to somebody else: an owner
     * can give himself every right again, whatever the list says.
     *
     * @return what has to be set to undo that, as SDDL text
     * @throws IOException when that cannot be done, and then nothing is changed, or when only a part of it can
     */
    String closeExisting(String directory) throws IOException {
        // What cannot be put back must not be taken away.
        Descriptor found = read(directory);
        boolean foreign = !found.belongsTo(trustees);
        if (foreign && !administrator) {
            throw new IOException("it belongs to another account");
        }
        if (foreign) {
            files.setSecurity(directory, Win32.OWNER_SECURITY_INFORMATION, "O:" + ADMINISTRATORS);
        }
        files.setSecurity(directory, Win32.DACL_SECURITY_INFORMATION, text(true));
        return found.only(foreign).text();
    }

    /** Requires that a directory is closed: not every file system keeps rights, or says that it does not. */
    void requireClosed(String directory) throws IOException {
        Descriptor found = read(directory);
        if (!found.belongsTo(trustees) || !found.grantsOnly(trustees)) {
            throw asFound(found);
        }
    }

    private Descriptor read(String directory) throws IOException {
        String found = files.security(directory);
        if (found.isEmpty()) {
            throw new IOException("its rights cannot be read");
        }
        return Descriptor.parse(found);
    }

    private static IOException asFound(Descriptor found) {
        return new IOException("its rights are " + Escapes.printable(found.text()) + " after all");
    }
}
