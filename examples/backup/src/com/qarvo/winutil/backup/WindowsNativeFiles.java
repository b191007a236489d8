package com.qarvo.winutil.backup;

import static com.qarvo.winutil.backup.PathForms.extended;
import static com.qarvo.winutil.backup.PathForms.hasTrailingDotOrSpace;
import static com.qarvo.winutil.backup.PathForms.needsExtended;

import com.qarvo.kel.util.FileErrorListener;
import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WinFileList.WinFile;
import com.qarvo.kel.util.WindowsUtil;
import java.io.File;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.AclEntry;
import java.nio.file.attribute.AclEntryPermission;
import java.nio.file.attribute.AclEntryType;
import java.nio.file.attribute.AclFileAttributeView;
import java.nio.file.attribute.FileAttribute;
import java.util.EnumSet;
import java.util.List;
import java.util.function.BiConsumer;
import java.util.function.Consumer;

/**
 * The system as the native methods of {@link WindowsUtil} give it.
 *
 * <p>Most paths are passed on in extended form. It has no limit of 260 characters, and the system takes it as it is:
 * in "C:\a\b." it would otherwise drop the last dot and open another file.
 */
final class WindowsNativeFiles implements NativeFiles {
    /** The type of what is no reparse point or cannot be read; the last byte of every other one that is no link. */
    private static final int NO_LINK_TYPE = 0xFF;

    private final WindowsUtil util = new WindowsUtil();

    /** The access rights of something that is about to be made. */
    private record Rights(List<AclEntry> value) implements FileAttribute<List<AclEntry>> {
        @Override
        public String name() {
            return "acl:acl";
        }
    }

    @Override
    public String absolutePath(String path) {
        try {
            String plain = PathForms.classic(path);
            if (plain.isEmpty()) {
                throw new InvalidPathException(path, "it is empty");
            }
            return Path.of(plain).toAbsolutePath().normalize().toString();
        } catch (InvalidPathException e) {
            throw new ClientException("\"" + Escapes.printable(path) + "\" is not a path: " + e.getReason() + ".", e);
        }
    }

    @Override
    public String realPath(String path) {
        Path existing = Path.of(path);
        String rest = "";
        while (existing != null) {
            try {
                return Names.join(existing.toRealPath().toString(), rest);
            } catch (IOException e) {
                Path name = existing.getFileName();
                rest = name == null ? rest : Names.join(name.toString(), rest);
                existing = existing.getParent();
            }
        }
        return path;
    }

    @Override
    public void list(String directory, boolean withSecurity, Consumer<WinFile> entries,
            BiConsumer<String, String> errors) throws IOException {
        WinFileList found = new WinFileList();
        FileErrorListener listener = (path, reason) -> {
            if (!needsExtended(path)) {
                errors.accept(path, reason);
            }
        };
        try {
            util.listWinFiles(found, directory, withSecurity, true, listener, true);
        } catch (IOException e) {
            if (!isEmptyRoot(directory)) {
                throw e;
            }
        } finally {
            for (WinFile entry : found.files()) {
                entries.accept(withSecurity && needsExtended(entry.getPath()) ? secured(entry, errors) : entry);
            }
        }
    }

    /**
     * Tells whether a directory that cannot be listed is the root of a volume with nothing in it: it lacks the entries
     * "." and ".." too, so that the system says of it that no file was found. Java tells that from a failure, which has
     * no list, where it does not take the name for another one.
     */
    private static boolean isEmptyRoot(String directory) {
        if (hasTrailingDotOrSpace(directory)) {
            return false;
        }
        String[] names = new File(directory).list();
        return names != null && names.length == 0;
    }

    @Override
    public WinFile entry(String path, boolean withSecurity) throws IOException {
        return util.WinFile(extended(path), withSecurity, true);
    }

    @Override
    public boolean isKnownToBeNoLink(String path) {
        // Of every other kind of reparse point the library gives the tag, but for its last byte.
        int type = util.getLinkType(extended(path));
        return type != NO_LINK_TYPE && (type & NO_LINK_TYPE) == NO_LINK_TYPE;
    }

    @Override
    public boolean exists(String path) {
        return util.exists(extended(path));
    }

    @Override
    public int attributes(String path) {
        int found = util.getFileAttr(extended(path));
        return found == Win32.INVALID_FILE_ATTRIBUTES ? attributesOfOpened(path) : found;
    }

    /** Attributes are read without the privilege to back up, which opens more. */
    private int attributesOfOpened(String path) {
        try {
            util.closeFile(hold(path));
        } catch (IOException e) {
            return Win32.INVALID_FILE_ATTRIBUTES;
        }
        boolean reparsePoint = util.getLinkType(extended(path)) != NO_LINK_TYPE;
        return Win32.FILE_ATTRIBUTE_DIRECTORY | (reparsePoint ? Win32.FILE_ATTRIBUTE_REPARSE_POINT : 0);
    }

    @Override
    public String security(String path) {
        // Not that of a record, which has none of a directory on some file systems that know rights.
        return util.getWinSecurityDescriptor(extended(path), Win32.OWNER_SECURITY_INFORMATION
                | Win32.GROUP_SECURITY_INFORMATION | Win32.DACL_SECURITY_INFORMATION, null);
    }

    @Override
    public long lastModified(String path) {
        return util.lastModified(extended(path));
    }

    @Override
    public int sectorSize(String path) {
        return util.getSectorSize(path);
    }

    @Override
    public long address(ByteBuffer directBuffer) {
        return util.GetDirectBufferAddress(directBuffer);
    }

    @Override
    public long open(String path, boolean unbuffered) throws IOException {
        int flags = Win32.FILE_FLAG_BACKUP_SEMANTICS
                | (unbuffered ? Win32.FILE_FLAG_NO_BUFFERING : Win32.FILE_FLAG_SEQUENTIAL_SCAN);
        return util.createFileNC(extended(path), Win32.GENERIC_READ, Win32.OPEN_EXISTING, flags);
    }

    @Override
    public long create(String path, long size) throws IOException {
        int flags = Win32.FILE_ATTRIBUTE_NORMAL | Win32.FILE_FLAG_SEQUENTIAL_SCAN;
        return util.createFileNC(extended(path), Win32.GENERIC_WRITE, Win32.CREATE_NEW, flags, size);
    }

    @Override
    public long size(long file) throws IOException {
        return util.getFileSize(file);
    }

    @Override
    public long position(long file) throws IOException {
        return util.getFilePosition(file);
    }

    @Override
    public int read(long file, ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException {
        return util.read(file, buffer, offset, length, sectorSize);
    }

    @Override
    public void write(long file, ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException {
        util.write(file, buffer, offset, length, sectorSize);
    }

    @Override
    public void close(long file) {
        util.closeFile(file);
    }

    @Override
    public void flushToDisk(String path) throws IOException {
        try (FileChannel channel = FileChannel.open(Path.of(path), StandardOpenOption.WRITE)) {
            channel.force(true);
        }
    }

    @Override
    public boolean delete(String path) {
        return util.delete(extended(path));
    }

    @Override
    public boolean rename(String from, String to) {
        return util.renameTo(extended(from), extended(to));
    }

    @Override
    public boolean makeDirectory(String path) throws IOException {
        return util.mkdir(extended(path));
    }

    @Override
    public boolean makeClosedDirectory(String path) throws IOException {
        if (hasTrailingDotOrSpace(path)) {
            throw new IOException("a name in it ends in a dot or a blank, which Java takes for another one");
        }
        try {
            Files.createDirectory(Path.of(path), new Rights(List.of(everybodyOut())));
            return true;
        } catch (FileAlreadyExistsException e) {
            return false;
        } catch (FileSystemException e) {
            throw new IOException(e.getReason() == null ? e.getMessage() : e.getReason(), e);
        }
    }

    /**
     * Gives the entry that keeps everybody out. It stands before all that is inherited, which the system adds to the
     * rights of what is made; the owner may change rights all the same.
     */
    private AclEntry everybodyOut() throws IOException {
        List<AclEntry> everybody = entriesOf("D:P(A;;FA;;;WD)");
        return AclEntry.newBuilder(everybody.get(everybody.size() - 1)).setType(AclEntryType.DENY)
                .setPermissions(EnumSet.complementOf(EnumSet.of(AclEntryPermission.READ_ACL,
                        AclEntryPermission.READ_ATTRIBUTES, AclEntryPermission.SYNCHRONIZE)))
                .build();
    }

    /**
     * Gives access rights in Java's form. It knows accounts by their names alone, which depend on the language of the
     * system, so that a file of no content gets the rights as text, and is asked for them.
     */
    private List<AclEntry> entriesOf(String text) throws IOException {
        // Not createTempFile: its random names cost a third of a second the first time.
        Path sample = Files.createFile(Path.of(System.getProperty("java.io.tmpdir"), "rights-"
                + Long.toHexString(ProcessHandle.current().pid()) + "-" + Long.toHexString(System.nanoTime())));
        try {
            setSecurity(sample.toString(), Win32.DACL_SECURITY_INFORMATION, text);
            return Files.getFileAttributeView(sample, AclFileAttributeView.class).getAcl();
        } finally {
            Files.delete(sample);
        }
    }

    @Override
    public long hold(String directory) throws IOException {
        // The library shares what it opens for reading and writing, and never for deleting.
        return util.createFileNC(extended(directory), Win32.GENERIC_READ, Win32.OPEN_EXISTING,
                Win32.FILE_FLAG_BACKUP_SEMANTICS | Win32.FILE_FLAG_OPEN_REPARSE_POINT);
    }

    @Override
    public boolean setLastModified(String path, long milliseconds) {
        return util.setLastModified(extended(path), milliseconds);
    }

    @Override
    public void setAttributes(String path, int attributes) throws IOException {
        util.setFileAttr(extended(path), attributes == 0 ? Win32.FILE_ATTRIBUTE_NORMAL : attributes);
    }

    @Override
    public void setSecurity(String path, int parts, String text) throws IOException {
        util.setFileAttrWithSecurityDescriptor(extended(path), parts, text, Win32.INVALID_FILE_ATTRIBUTES);
    }

    @Override
    public void setLinkRights(String path, String text) throws IOException {
        if (hasTrailingDotOrSpace(path)) {
            throw new IOException("Java takes its name for another one");
        }
        try {
            // Not by the library: what it tries second goes through the link.
            Files.getFileAttributeView(Path.of(path), AclFileAttributeView.class, LinkOption.NOFOLLOW_LINKS)
                    .setAcl(entriesOf(text));
        } catch (InvalidPathException e) {
            throw new IOException(e.getReason(), e);
        }
    }

    @Override
    public void makeLink(byte kind, String path, String target) throws IOException {
        switch (kind) {
            case WinFile.JUNCTION -> util.createJunctionPoint(extended(path), target);
            case WinFile.FILE_SYMBOLIC_LINK -> util.createFileSymbolicLink(extended(path), target);
            case WinFile.DIRECTORY_SYMBOLIC_LINK -> util.createDirectorySymbolicLink(extended(path), target);
            default -> throw new IllegalArgumentException("no kind of link: " + kind);
        }
    }

    @Override
    public boolean deleteEmptyDirectory(String path) {
        try {
            // Java takes such a path for that of another directory.
            return !hasTrailingDotOrSpace(path) && Files.deleteIfExists(Path.of(path));
        } catch (IOException | InvalidPathException e) {
            return false;
        }
    }

    @Override
    public boolean isRemote(String path) {
        String drive = path.substring(0, Math.min(path.length(), "C:\\".length()));
        return path.startsWith("\\\\") || util.getDriveType(drive) == Win32.DRIVE_REMOTE;
    }

    @Override
    public boolean isAdministrator() {
        return util.isUserAnAdmin();
    }

    @Override
    public String account() {
        return util.getSID();
    }

    @Override
    public void useBackupPrivilege() {
        // The answers say that the system was asked, not what the account got: that shows with each file.
        util.enableBackupPrivilege();
    }

    @Override
    public void useRestorePrivileges() {
        util.enableRestorePrivilege();
        util.enableTakeOwnershipPrivilege();
    }

    @Override
    public void checkRead(String path, Account account) throws IOException {
        util.isAccessRead(extended(path), account.domain(), account.user(), account.password());
    }

    /** A listing reads descriptors by the classic form of a path, which does not reach every file. */
    private WinFile secured(WinFile entry, BiConsumer<String, String> errors) {
        String security = "";
        try {
            security = util.WinFile(extended(entry.getPath()), true, true).getSecurityDescriptor();
        } catch (IOException e) {
            // Reported below, as an empty descriptor is.
        }
        if (security.isEmpty()) {
            errors.accept(entry.getPath(), "the system gives none");
        }
        return new WinFile(entry.getPath(), entry.isDirectory(), entry.getSize(), entry.getLastModified(),
                entry.getAttributes(), security, entry.isReparsePoint());
    }
}
