package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;
import java.util.Set;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * A security descriptor as SDDL text, taken apart. The text comes from a manifest, and so perhaps from anyone: only
 * what a backup writes is accepted, owner, group and DACL in this order, each at most once.
 */
final class Descriptor {
    private static final String SID = "[A-Z]{2}|S-1-[0-9A-FXa-fx-]+";
    /** One that allows or denies and has no condition; its first group says which, its second who is meant. */
    private static final Pattern PLAIN_ENTRY = Pattern.compile("\\(([AD]);[A-Z]*;[^;()]*;;;([^;()]+)\\)");
    private static final Pattern PLAIN_ENTRIES = Pattern.compile("(" + PLAIN_ENTRY + ")*");
    private static final String FLAGS = "(P|AR|AI|NO_ACCESS_CONTROL){0,4}";

    private final String owner;
    private final String group;
    private final String flags;
    private final String entries;

    /** Takes the parts; one that the text does not have is null. */
    private Descriptor(String owner, String group, String flags, String entries) {
        this.owner = owner;
        this.group = group;
        this.flags = flags;
        this.entries = entries;
    }

    static Descriptor parse(String text) throws IOException {
        // The system would read no further than to a zero, and set something else than what is shown and compared.
        require(!text.isEmpty() && text.chars().noneMatch(Character::isISOControl));
        int groupStart = text.startsWith("O:") ? endOfSid(text, 2) : 0;
        int daclStart = text.startsWith("G:", groupStart) ? endOfSid(text, groupStart + 2) : groupStart;
        String owner = groupStart == 0 ? null : sid(text.substring(2, groupStart));
        String group = daclStart == groupStart ? null : sid(text.substring(groupStart + 2, daclStart));
        if (daclStart == text.length()) {
            return new Descriptor(owner, group, null, null);
        }
        require(text.startsWith("D:", daclStart));
        int firstEntry = text.indexOf('(', daclStart);
        int flagsEnd = firstEntry < 0 ? text.length() : firstEntry;
        String flags = text.substring(daclStart + 2, flagsEnd);
        require(flags.matches(FLAGS));
        String entries = text.substring(flagsEnd);
        requireEntries(entries);
        return new Descriptor(owner, group, flags, entries);
    }

    /** Gives the parts that there are: to set one that is missing would, of a DACL, give everyone all rights. */
    int parts() {
        return (owner == null ? 0 : Win32.OWNER_SECURITY_INFORMATION)
                | (group == null ? 0 : Win32.GROUP_SECURITY_INFORMATION) | dacl();
    }

    /** Gives the bit for the DACL, 0 when there is none. */
    int dacl() {
        return flags == null ? 0 : Win32.DACL_SECURITY_INFORMATION;
    }

    /** Gives the text to set. The system keeps the mark of an inherited list only when it is asked for as well. */
    String text() {
        String asked = flags != null && flags.contains("AI") && !flags.contains("AR")
                ? flags.replace("AI", "ARAI") : flags;
        return (owner == null ? "" : "O:" + owner) + (group == null ? "" : "G:" + group)
                + (flags == null ? "" : "D:" + asked + entries);
    }

    /** Tells whether its owner is one of these identifiers. */
    boolean belongsTo(Set<String> trustees) {
        return owner != null && trustees.contains(owner);
    }

    /** Tells whether it denies everybody something before all else; what it only inherited or hands down is none. */
    boolean deniesEverybodyFirst() {
        Matcher first = PLAIN_ENTRY.matcher(Objects.requireNonNullElse(entries, ""));
        return first.lookingAt() && first.group(1).equals("D") && first.group(2).equals("WD")
                && !first.group().matches("\\(D;[A-Z]*I[OD].*");
    }

    /** Gives a descriptor that has the access rights of this one alone, or its owner as well. */
    Descriptor only(boolean ownerToo) {
        return new Descriptor(ownerToo ? owner : null, null, flags, entries);
    }

    /** Tells whether it grants nothing to anyone but these identifiers. */
    boolean grantsOnly(Set<String> trustees) {
        if (flags == null || flags.contains("NO_ACCESS_CONTROL") || !PLAIN_ENTRIES.matcher(entries).matches()) {
            return false;
        }
        return PLAIN_ENTRY.matcher(entries).results()
                .allMatch(entry -> entry.group(1).equals("D") || trustees.contains(entry.group(2)));
    }

    /**
     * Says in which parts of this descriptor another one differs. How a list came to be, inherited or not, does not
     * count: only what it grants and denies, and whether it is protected from the folders above.
     */
    List<String> differencesOf(Descriptor found) {
        List<String> differences = new ArrayList<>();
        compare("its owner is ", owner, found.owner, differences);
        compare("its group is ", group, found.group, differences);
        compare("its access rights are ", rights(), found.rights(), differences);
        return differences;
    }

    private String rights() {
        return flags == null ? null : flags.replaceAll("AR|AI", "") + entries;
    }

    private static void compare(String what, String wanted, String found, List<String> differences) {
        if (wanted != null && !wanted.equals(found)) {
            differences.add(what + shown(found) + " instead of " + shown(wanted));
        }
    }

    private static String shown(String part) {
        String text = Objects.requireNonNullElse(part, "");
        return text.isEmpty() ? "none" : Escapes.printable(text);
    }

    /** Gives the end of the identifier that begins there: the next part's letter stands before the next colon. */
    private static int endOfSid(String text, int start) {
        int colon = text.indexOf(':', start);
        return colon < 0 ? text.length() : Math.max(colon - 1, start);
    }

    private static String sid(String text) throws IOException {
        require(text.matches(SID));
        return text;
    }

    /** Requires entries in parentheses and nothing between them; conditions in them have parentheses of their own. */
    private static void requireEntries(String entries) throws IOException {
        int depth = 0;
        boolean quoted = false;
        for (int i = 0; i < entries.length(); i++) {
            char c = entries.charAt(i);
            quoted ^= c == '"';
            if (!quoted) {
                depth += c == '(' ? 1 : 0;
                require(depth > 0);
                depth -= c == ')' ? 1 : 0;
            }
        }
        require(depth == 0 && !quoted);
    }

    private static void require(boolean condition) throws IOException {
        if (!condition) {
            throw new IOException("it is malformed");
        }
    }
}
