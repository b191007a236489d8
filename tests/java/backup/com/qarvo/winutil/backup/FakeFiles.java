package com.qarvo.winutil.backup;

import com.qarvo.dov.io.DiskFullException;
import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.ByteArrayOutputStream;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashMap;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.function.BiConsumer;
import java.util.function.Consumer;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** A system with one disk: behaves as Windows does, notes what is done to it, and fails where a test wants it to. */
final class FakeFiles extends FakeDisk implements NativeFiles {
    static final int SECTOR = 512;

    private static final class Handle {
        Node node;
        int position;
        boolean unbuffered;
        boolean writable;
        long reserved;
    }

    /** What was done, as "verb path"; it is noted before it is done. */
    final List<String> calls = new ArrayList<>();
    /** Run at each change of the disk with its call, before it is made. */
    Consumer<String> atEachChange = call -> { };
    /** Paths that do not open, list or give their descriptor. */
    final Set<String> unreadable = new HashSet<>();
    final Set<String> unlistable = new HashSet<>();
    final Set<String> withoutSecurity = new HashSet<>();
    /** Folders whose listing breaks off after the first entry. */
    final Set<String> breakingLists = new HashSet<>();
    /** Paths that do not tell their time when they are asked. */
    final Set<String> timeless = new HashSet<>();
    /** Paths whose reparse data cannot be read. */
    final Set<String> sealed = new HashSet<>();
    /** Run just before something is made at a path, once. */
    final Map<String, Runnable> before = new HashMap<>();
    /** Paths whose reading fails after the first block. */
    final Set<String> failingReads = new HashSet<>();
    /** Paths whose reading ends after the first block, whatever their size. */
    final Set<String> endingReads = new HashSet<>();
    /** Run after the first block of a path was read. */
    final Map<String, Runnable> whileReading = new HashMap<>();
    /** Run when a folder was asked for its entries, before they are given. */
    final Map<String, Runnable> whileListing = new HashMap<>();
    /** Other spellings of paths, for realPath. */
    final Map<String, String> aliases = new HashMap<>();
    /** Folders that show the entries of another one. */
    final Map<String, String> mirrors = new HashMap<>();
    long freeBytes = Long.MAX_VALUE;
    /** Whether writes write nothing and report success. */
    boolean idleWrites;
    /** Whether a write on a full disk takes what fits and only the next one fails. */
    boolean shortWrites;
    /** Paths that lose their last byte when they are closed. */
    final Set<String> losses = new HashSet<>();
    boolean renameFails;
    boolean timesFail;
    /** Whether links can be made; if not, what is made of a junction is its directory. */
    boolean makesLinks = true;
    boolean linksVanish;
    /** What links lead to whatever was asked for. */
    String linksLeadTo;
    /** Paths that cannot be deleted. */
    final Set<String> undeletable = new HashSet<>();
    /** Paths that take no attributes, do not compress, take no owner and group, and no descriptor at all. */
    final Set<String> stubborn = new HashSet<>();
    final Set<String> incompressible = new HashSet<>();
    final Set<String> owned = new HashSet<>();
    final Set<String> unsecurable = new HashSet<>();
    /** Run just before a folder is held open, once. */
    final Map<String, Runnable> whenHeld = new HashMap<>();
    /** What else happens to a folder that is made closed. */
    Consumer<Node> whenMadeClosed = node -> { };
    /** Folders that cannot be held open. */
    final Set<String> unholdable = new HashSet<>();
    /** The one account that can log on, and paths that it may not read. */
    String account = "OFFICE\\anna with secret";
    final Set<String> forbidden = new HashSet<>();
    int sectorSize = SECTOR;
    boolean administrator = true;
    boolean remote;
    String ownAccount = "S-1-5-21-1-2-3-1001";
    /** Whether what describes a directory leaves its rights out. */
    boolean recordsLackRightsOfDirectories;
    /** Whether the file system keeps rights; if not, everybody may do everything. */
    boolean keepsRights = true;
    /** How often something was read from an open file. */
    int reads;

    private static final int[] PARTS = {Win32.OWNER_SECURITY_INFORMATION, Win32.GROUP_SECURITY_INFORMATION,
        Win32.DACL_SECURITY_INFORMATION};

    private final Map<Long, Handle> handles = new HashMap<>();
    private long nextHandle = 1;

    private void note(String call) {
        calls.add(call);
        atEachChange.accept(call);
    }

    private boolean isLeftOut(Node node) {
        return node.directory && recordsLackRightsOfDirectories;
    }

    private boolean isOpen(Node node) {
        return handles.values().stream().anyMatch(h -> h.node == node);
    }

    /** Tells whether a folder, or something below it, is open, so that nobody can rename it. */
    boolean isHeld(String folder) {
        return handles.values().stream().anyMatch(h -> (h.node.path + "\\").startsWith(folder + "\\"));
    }

    int openHandles() {
        return handles.size();
    }

    private static void require(boolean condition, String message) throws IOException {
        if (!condition) {
            throw new IOException(message);
        }
    }

    private void runBefore(String path) {
        Runnable hook = before.remove(path);
        if (hook != null) {
            hook.run();
        }
    }

    @Override
    public String absolutePath(String path) {
        return path.startsWith("C:") ? path : "C:\\" + path;
    }

    @Override
    public String realPath(String path) {
        return aliases.getOrDefault(path, path);
    }

    @Override
    public void list(String directory, boolean withSecurity, Consumer<WinFile> entries,
            BiConsumer<String, String> errors) throws IOException {
        require(!unlistable.contains(directory), "Access denied.\r\n");
        Node folder = find(directory);
        require(folder.directory, "The directory name is invalid.");
        Runnable hook = whileListing.remove(directory);
        if (hook != null) {
            hook.run();
        }
        String shown = mirrors.getOrDefault(directory, directory);
        Node last = at(directory);
        shown = last.target.isEmpty() ? real(shown) : real(last.target);
        String prefix = shown.endsWith("\\") ? shown : shown + "\\";
        for (Node node : List.copyOf(nodes.values())) {
            if (!node.path.startsWith(prefix) || node.path.indexOf('\\', prefix.length()) >= 0) {
                continue;
            }
            boolean secret = withSecurity && withoutSecurity.contains(node.path);
            if (secret) {
                errors.accept(node.path, "Access denied.\r\n");
            }
            entries.accept(new WinFile(Names.join(directory, node.path.substring(prefix.length())), node.directory,
                    node.content.length, node.listed != null ? node.listed : node.modified, node.attributes,
                    withSecurity && !secret && !isLeftOut(node) ? node.security : "",
                    (node.attributes & Win32.FILE_ATTRIBUTE_REPARSE_POINT) != 0));
            require(!breakingLists.contains(directory), "Data error.\r\n");
        }
    }

    @Override
    public WinFile entry(String path, boolean withSecurity) throws IOException {
        Node node = find(path);
        byte plain = node.directory ? WinFile.DIRECTORY : WinFile.FILE;
        return new WinFile(path, node.directory, node.content.length, node.modified, node.attributes,
                withSecurity && !withoutSecurity.contains(path) && !isLeftOut(node) ? node.security : "",
                sealed.contains(path) ? plain : node.kind, sealed.contains(path) ? "" : node.target);
    }

    @Override
    public boolean isKnownToBeNoLink(String path) {
        byte kind = at(path).kind;
        return !sealed.contains(path) && (kind == WinFile.DIRECTORY || kind == WinFile.FILE);
    }

    @Override
    public boolean exists(String path) {
        try {
            Node node = find(path);
            return node.directory || !path.endsWith("\\");
        } catch (FileNotFoundException e) {
            return false;
        }
    }

    @Override
    public int attributes(String path) {
        Node node = at(path);
        return node == null ? Win32.INVALID_FILE_ATTRIBUTES : node.attributes;
    }

    @Override
    public String security(String path) {
        Node node = at(path);
        if (node == null || withoutSecurity.contains(path)) {
            return "";
        }
        return keepsRights ? node.security : "O:WDG:WDD:(A;OICI;FA;;;WD)";
    }

    @Override
    public long lastModified(String path) {
        return at(path) != null && !timeless.contains(path) ? at(path).modified : 0;
    }

    @Override
    public int sectorSize(String path) {
        return sectorSize;
    }

    @Override
    public long address(ByteBuffer directBuffer) {
        // Whatever the JVM gives: a start that is on no sector's boundary.
        return 0x7F0000000018L;
    }

    @Override
    public long open(String path, boolean unbuffered) throws IOException {
        Node node = find(path);
        require(!unreadable.contains(path), "[CreateFileW] (32) Sharing violation.\r\n");
        note("open " + path);
        Handle handle = new Handle();
        handle.node = node;
        handle.unbuffered = unbuffered;
        handles.put(nextHandle, handle);
        return nextHandle++;
    }

    @Override
    public long create(String path, long size) throws IOException {
        runBefore(path);
        require(at(path) == null, "[CreateFileW] (80) File exists.\r\n");
        require(nodes.containsKey(Names.parent(real(path))), "[CreateFileW] (3) Path not found.\r\n");
        note("create " + path + " " + size);
        require(at(path) == null, "[CreateFileW] (80) File exists.\r\n");
        Node node = inherit(addFile(real(path), ""));
        if (size > freeBytes) {
            throw new DiskFullException("[createFileN] (112) Disk full.\r\n");
        }
        Handle handle = new Handle();
        handle.node = node;
        handle.writable = true;
        handle.reserved = size;
        node.content = new byte[(int) size];
        handles.put(nextHandle, handle);
        return nextHandle++;
    }

    @Override
    public long size(long file) {
        return handles.get(file).node.content.length;
    }

    @Override
    public long position(long file) {
        return handles.get(file).position;
    }

    @Override
    public int read(long file, ByteBuffer buffer, int offset, int length, int sector) throws IOException {
        Handle handle = handles.get(file);
        reads++;
        if (handle.unbuffered) {
            // At an end in the middle of a sector too, where the library now and then notices it as the end.
            require((address(buffer) + offset) % sectorSize == 0 && length % sectorSize == 0 && sector == sectorSize
                    && handle.position % sectorSize == 0, "[ReadFile] (87) Invalid parameter.\r\n");
        }
        require(handle.position == 0 || !failingReads.contains(handle.node.path), "[ReadFile] (23) Data error.\r\n");
        int count = Math.min(length, handle.node.content.length - handle.position);
        if (count <= 0 || handle.position > 0 && endingReads.contains(handle.node.path)) {
            return -1;
        }
        // Natives see the memory only, not the limit.
        buffer.duplicate().clear().put(offset, handle.node.content, handle.position, count);
        handle.position += count;
        Runnable hook = whileReading.get(handle.node.path);
        if (hook != null && handle.position == count) {
            hook.run();
        }
        return count;
    }

    @Override
    public void write(long file, ByteBuffer buffer, int offset, int length, int sector) throws IOException {
        Handle handle = handles.get(file);
        require(handle.writable, "[WriteFile] (5) Access denied.\r\n");
        if (idleWrites) {
            return;
        }
        int taken = (int) Math.min(length, freeBytes);
        if (taken < length && (!shortWrites || taken == 0)) {
            throw new DiskFullException("[WriteFile] (112) Disk full.\r\n");
        }
        byte[] bytes = new byte[taken];
        buffer.duplicate().clear().get(offset, bytes);
        ByteArrayOutputStream content = new ByteArrayOutputStream();
        content.write(handle.node.content, 0, handle.position);
        content.write(bytes, 0, taken);
        byte[] rest = handle.node.content;
        if (content.size() < rest.length) {
            content.write(rest, content.size(), rest.length - content.size());
        }
        handle.node.content = content.toByteArray();
        handle.position += taken;
        freeBytes -= taken;
        note("write " + handle.node.path);
    }

    @Override
    public void close(long file) {
        Handle handle = handles.remove(file);
        if (handle == null) {
            throw new IllegalStateException("closed twice");
        }
        if (handle.node.directory) {
            return;
        }
        note("close " + handle.node.path);
        if (handle.reserved > 0) {
            handle.node.content = Arrays.copyOf(handle.node.content, handle.position);
        }
        byte[] content = handle.node.content;
        if (handle.writable && losses.stream().anyMatch(handle.node.path::startsWith)) {
            handle.node.content = Arrays.copyOf(content, content.length - 1);
        }
    }

    @Override
    public void flushToDisk(String path) {
        note("flush " + path);
    }

    @Override
    public boolean delete(String path) {
        Node node = at(path);
        if (node == null || node.directory || isOpen(node) || undeletable.contains(path)) {
            return false;
        }
        note("delete " + path);
        nodes.remove(node.path);
        return true;
    }

    @Override
    public boolean rename(String from, String to) {
        if (renameFails || nodes.containsKey(to)) {
            return false;
        }
        note("rename " + from + " " + to);
        Node node = nodes.remove(from);
        node.path = to;
        nodes.put(to, node);
        return true;
    }

    @Override
    public boolean makeDirectory(String path) throws IOException {
        return makeDirectory("mkdir ", path) != null;
    }

    @Override
    public boolean makeClosedDirectory(String path) throws IOException {
        Node made = makeDirectory("mkdir-closed ", path);
        if (made != null) {
            made.security = "O:" + ownAccount + "G:SYD:(D;;0xd0156;;;WD)"
                    + made.security.replaceFirst("^.*?D:[A-Z]*", "");
            whenMadeClosed.accept(made);
        }
        return made != null;
    }

    private Node makeDirectory(String verb, String path) throws IOException {
        runBefore(path);
        if (at(path) != null) {
            return null;
        }
        if (freeBytes == 0) {
            throw new DiskFullException("[createDir] (112) Disk full.\r\n, '" + path + "'");
        }
        if (unreadable.contains(path)) {
            throw new SecurityException("[createDir] (5) Access denied.\r\n, '" + path + "'");
        }
        note(verb + path);
        return at(path) == null ? inherit(addDirectory(real(path))) : null;
    }

    @Override
    public long hold(String directory) throws IOException {
        require(!unholdable.contains(directory), "[CreateFileW] (32) Sharing violation.\r\n");
        Runnable hook = whenHeld.remove(directory);
        if (hook != null) {
            hook.run();
        }
        Handle handle = new Handle();
        handle.node = find(directory);
        handles.put(nextHandle, handle);
        return nextHandle++;
    }

    @Override
    public boolean isRemote(String path) {
        return remote;
    }

    @Override
    public boolean isAdministrator() {
        return administrator;
    }

    @Override
    public String account() {
        return ownAccount;
    }

    @Override
    public boolean setLastModified(String path, long milliseconds) {
        Node node = at(path);
        if (timesFail || node == null || (node.attributes & Win32.FILE_ATTRIBUTE_READONLY) != 0) {
            return false;
        }
        note("time " + path);
        // The system takes the first moment of its calendar for no time at all.
        node.modified = milliseconds == -11_644_473_600_000L ? node.modified : milliseconds;
        return true;
    }

    @Override
    public void setAttributes(String path, int attributes) throws IOException {
        Node node = find(path);
        int compressed = attributes & Win32.FILE_ATTRIBUTE_COMPRESSED;
        require(compressed == 0 || !incompressible.contains(path) && !isOpen(node), "Fail to compress file: " + path);
        note((compressed == 0 ? "attributes " : "compress ") + path);
        if (compressed != 0) {
            node.modified = 0;
        }
        if (!stubborn.contains(path)) {
            node.attributes = node.attributes & ~Attributes.RESTORED | attributes;
        }
    }

    @Override
    public void setSecurity(String path, int parts, String text) throws IOException {
        Node node = find(path);
        note("security " + parts + " " + path);
        require(!unsecurable.contains(path), "Fail to set security descriptor: (5) Access denied.\r\n");
        require(parts == Win32.DACL_SECURITY_INFORMATION || !owned.contains(path), "(1307) Invalid owner.\r\n");
        require(node.kind == WinFile.DIRECTORY || node.kind == WinFile.FILE, "a link was followed");
        if (keepsRights) {
            node.security = merged(node.security, parts, text);
        }
    }

    private static String merged(String before, int parts, String text) {
        Pattern form = Pattern.compile("(O:.+?(?=G:|D:|$))?(G:.+?(?=D:|$))?(D:.*)?");
        Matcher old = form.matcher(before);
        Matcher set = form.matcher(text);
        if (!old.matches() || !set.matches()) {
            throw new IllegalArgumentException(before + " " + text);
        }
        StringBuilder merged = new StringBuilder();
        for (int part = 1; part <= 3; part++) {
            String value = ((parts & PARTS[part - 1]) != 0 ? set : old).group(part);
            merged.append(value == null ? "" : value);
        }
        return merged.toString();
    }

    @Override
    public void setLinkRights(String path, String text) throws IOException {
        Node node = find(path);
        note("link-rights " + path);
        require(!unsecurable.contains(path), "Access is denied");
        require(node.kind != WinFile.DIRECTORY && node.kind != WinFile.FILE, "not a link");
        node.security = merged(node.security, Win32.DACL_SECURITY_INFORMATION, text);
    }

    @Override
    public void makeLink(byte kind, String path, String target) throws IOException {
        note("link " + path);
        if (!makesLinks) {
            if (kind == WinFile.JUNCTION) {
                addDirectory(real(path));
            }
            throw new IOException("[CreateJunctionPoint] (50) Not supported.\r\n");
        }
        if (!linksVanish) {
            inherit(addLink(real(path), kind, linksLeadTo == null ? target : linksLeadTo));
        }
    }

    @Override
    public boolean deleteEmptyDirectory(String path) {
        Node node = at(path);
        if (node == null || !node.directory || isOpen(node) || undeletable.contains(path) || !below(path).isEmpty()) {
            return false;
        }
        note("rmdir " + path);
        nodes.remove(node.path);
        return true;
    }

    @Override
    public void useBackupPrivilege() {
        note("privilege backup");
    }

    @Override
    public void useRestorePrivileges() {
        note("privilege restore");
    }

    @Override
    public void checkRead(String path, Account who) throws IOException {
        note("check " + path);
        require(account.equals(who + " with " + who.password()),
                " [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser]  (1326) Logon failure.\r\n");
        require(!forbidden.contains(path), "[CheckAccessToFile] (5) Access denied.\r\n");
    }
}
