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

/** A system with one disk: behaves as Windows does, notes what is done to it, and fails where a test wants it to. */
final class FakeFiles extends FakeDisk implements NativeFiles {
    static final int SECTOR = 512;

    private static final class Handle {
        Node node;
        int position;
        int sizeWhenOpened;
        boolean unbuffered;
        boolean writable;
        long reserved;
    }

    /** What was done, as "verb path". */
    final List<String> calls = new ArrayList<>();
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
    /** Paths of directories that cannot be deleted. */
    final Set<String> undeletable = new HashSet<>();
    /** Paths that take no attributes, do not compress, take no owner and group, and no descriptor at all. */
    final Set<String> stubborn = new HashSet<>();
    final Set<String> incompressible = new HashSet<>();
    final Set<String> owned = new HashSet<>();
    final Set<String> unsecurable = new HashSet<>();
    /** The one account that can log on, and paths that it may not read. */
    String account = "OFFICE\\anna with secret";
    final Set<String> forbidden = new HashSet<>();
    int sectorSize = SECTOR;

    private final Map<Long, Handle> handles = new HashMap<>();
    private long nextHandle = 1;

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
        String shown = mirrors.getOrDefault(directory, directory);
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
                    withSecurity && !secret ? node.security : "",
                    (node.attributes & Win32.FILE_ATTRIBUTE_REPARSE_POINT) != 0));
            require(!breakingLists.contains(directory), "Data error.\r\n");
        }
    }

    @Override
    public WinFile entry(String path, boolean withSecurity) throws IOException {
        Node node = find(path);
        byte plain = node.directory ? WinFile.DIRECTORY : WinFile.FILE;
        return new WinFile(path, node.directory, node.content.length, node.modified, node.attributes,
                withSecurity && !withoutSecurity.contains(path) ? node.security : "",
                sealed.contains(path) ? plain : node.kind, sealed.contains(path) ? "" : node.target);
    }

    @Override
    public boolean isKnownToBeNoLink(String path) {
        byte kind = nodes.get(path).kind;
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
    public long lastModified(String path) {
        return nodes.containsKey(path) && !timeless.contains(path) ? nodes.get(path).modified : 0;
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
        calls.add("open " + path);
        Handle handle = new Handle();
        handle.node = node;
        handle.sizeWhenOpened = node.content.length;
        handle.unbuffered = unbuffered;
        handles.put(nextHandle, handle);
        return nextHandle++;
    }

    @Override
    public long create(String path, long size) throws IOException {
        runBefore(path);
        require(!nodes.containsKey(path), "[CreateFileW] (80) File exists.\r\n");
        require(nodes.containsKey(Names.parent(path)), "[CreateFileW] (3) Path not found.\r\n");
        calls.add("create " + path + " " + size);
        Node node = addFile(path, "");
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
        if (handle.unbuffered) {
            // The library knows the end by the size at the opening; anywhere else the position counts too.
            require((address(buffer) + offset) % sectorSize == 0 && length % sectorSize == 0 && sector == sectorSize
                    && (handle.position % sectorSize == 0 || handle.position == handle.sizeWhenOpened),
                    "[ReadFile] (87) Invalid parameter.\r\n");
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
        calls.add("write " + handle.node.path);
    }

    @Override
    public void close(long file) {
        Handle handle = handles.remove(file);
        if (handle == null) {
            throw new IllegalStateException("closed twice");
        }
        if (handle.reserved > 0) {
            handle.node.content = Arrays.copyOf(handle.node.content, handle.position);
        }
        byte[] content = handle.node.content;
        if (handle.writable && losses.stream().anyMatch(handle.node.path::startsWith)) {
            handle.node.content = Arrays.copyOf(content, content.length - 1);
        }
        calls.add("close " + handle.node.path);
    }

    @Override
    public void flushToDisk(String path) {
        calls.add("flush " + path);
    }

    @Override
    public boolean delete(String path) {
        Node node = nodes.get(path);
        if (node == null || node.directory || handles.values().stream().anyMatch(h -> h.node == node)) {
            return false;
        }
        calls.add("delete " + path);
        nodes.remove(path);
        return true;
    }

    @Override
    public boolean rename(String from, String to) {
        if (renameFails || nodes.containsKey(to)) {
            return false;
        }
        calls.add("rename " + from + " " + to);
        Node node = nodes.remove(from);
        node.path = to;
        nodes.put(to, node);
        return true;
    }

    @Override
    public boolean makeDirectory(String path) throws IOException {
        runBefore(path);
        if (nodes.containsKey(path)) {
            return false;
        }
        if (freeBytes == 0) {
            throw new DiskFullException("[createDir] (112) Disk full.\r\n, '" + path + "'");
        }
        if (unreadable.contains(path)) {
            throw new SecurityException("[createDir] (5) Access denied.\r\n, '" + path + "'");
        }
        calls.add("mkdir " + path);
        addDirectory(path);
        return true;
    }

    @Override
    public boolean setLastModified(String path, long milliseconds) {
        Node node = nodes.get(path);
        if (timesFail || node == null || (node.attributes & Win32.FILE_ATTRIBUTE_READONLY) != 0) {
            return false;
        }
        calls.add("time " + path);
        // The system takes the first moment of its calendar for no time at all.
        node.modified = milliseconds == -11_644_473_600_000L ? node.modified : milliseconds;
        return true;
    }

    @Override
    public void setAttributes(String path, int attributes) throws IOException {
        Node node = find(path);
        int compressed = attributes & Win32.FILE_ATTRIBUTE_COMPRESSED;
        require(compressed == 0 || !incompressible.contains(path), "Fail to compress file: " + path);
        calls.add((compressed == 0 ? "attributes " : "compress ") + path);
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
        calls.add("security " + parts + " " + path);
        require(!unsecurable.contains(path), "Fail to set security descriptor: (5) Access denied.\r\n");
        require(parts == Win32.DACL_SECURITY_INFORMATION || !owned.contains(path), "(1307) Invalid owner.\r\n");
        require(node.kind == WinFile.DIRECTORY || node.kind == WinFile.FILE, "a link was followed");
        node.security = text;
    }

    @Override
    public void makeLink(byte kind, String path, String target) throws IOException {
        calls.add("link " + path);
        if (!makesLinks) {
            if (kind == WinFile.JUNCTION) {
                addDirectory(path);
            }
            throw new IOException("[CreateJunctionPoint] (50) Not supported.\r\n");
        }
        if (!linksVanish) {
            addLink(path, kind, linksLeadTo == null ? target : linksLeadTo);
        }
    }

    @Override
    public boolean deleteEmptyDirectory(String path) {
        Node node = nodes.get(path);
        if (node == null || !node.directory || undeletable.contains(path) || !below(path).isEmpty()) {
            return false;
        }
        calls.add("rmdir " + path);
        nodes.remove(path);
        return true;
    }

    @Override
    public void useBackupPrivilege() {
        calls.add("privilege backup");
    }

    @Override
    public void useRestorePrivileges() {
        calls.add("privilege restore");
    }

    @Override
    public void checkRead(String path, Account who) throws IOException {
        calls.add("check " + path);
        require(account.equals(who + " with " + who.password()),
                " [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser]  (1326) Logon failure.\r\n");
        require(!forbidden.contains(path), "[CheckAccessToFile] (5) Access denied.\r\n");
    }
}
