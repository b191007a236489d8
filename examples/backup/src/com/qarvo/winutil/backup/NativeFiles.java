package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.function.BiConsumer;
import java.util.function.Consumer;

/**
 * The few operations on files that this client asks of the system; {@link WindowsNativeFiles} passes them on to the
 * native methods. Paths are absolute and separated by backslashes. A file number is what one of the opening
 * methods gave; it must be given back to {@link #close}.
 */
interface NativeFiles {
    /**
     * Gives the absolute form of a path from the command line.
     *
     * @throws ClientException when the text is no path
     */
    String absolutePath(String path);

    /** Gives the path with links and other spellings resolved, as far as it exists. */
    String realPath(String path);

    /**
     * Lists a directory. Attributes are always there; the link kind of an entry with
     * {@code FILE_ATTRIBUTE_REPARSE_POINT} is only known after {@link #entry}.
     *
     * @param withSecurity whether security descriptors are wanted
     * @param entries takes each entry, "." and ".." left out; entries taken before a failure are good
     * @param errors takes path and reason of each entry whose descriptor could not be read
     */
    void list(String directory, boolean withSecurity, Consumer<WinFile> entries, BiConsumer<String, String> errors)
            throws IOException;

    /** Looks at one path, the link itself when it is one. */
    WinFile entry(String path, boolean withSecurity) throws IOException;

    /**
     * Tells of a reparse point that {@link #entry} takes for a plain file whether it is one; where its data cannot be
     * read it may be a link.
     */
    boolean isKnownToBeNoLink(String path);

    /** Tells whether something is at a path. */
    boolean exists(String path);

    /**
     * Gives the attribute word of a path, of the link itself when it is one; -1 when it cannot be read. Of what can
     * only be reached by the privilege to back up it tells what that shows: whether it is a reparse point.
     */
    int attributes(String path);

    /** Gives owner, group and DACL of a path as SDDL text, empty when they cannot be read. */
    String security(String path);

    /** Gives the time of the last write in milliseconds since 1970-01-01 UTC, 0 when it cannot be read. */
    long lastModified(String path);

    /** Gives the sector size of the volume that holds a path, 0 when it is unknown. */
    int sectorSize(String path);

    /** Gives the address of a direct buffer's memory. */
    long address(ByteBuffer directBuffer);

    /** Opens a file for reading from start to end; unbuffered reading goes past the system's cache. */
    long open(String path, boolean unbuffered) throws IOException;

    /**
     * Makes a new file and opens it for writing; never opens one that is there.
     *
     * @param size bytes to reserve, 0 for none; what is not written until {@link #close} is cut off again
     */
    long create(String path, long size) throws IOException;

    /** Gives the size of an open file. */
    long size(long file) throws IOException;

    /** Reads into a direct buffer; gives the number of bytes read, -1 at the end of the file. */
    int read(long file, ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException;

    /** Gives the position at which an open file is read or written next. */
    long position(long file) throws IOException;

    /** Writes from a direct buffer; may take a part only and say nothing, see {@link WholeWrites}. */
    void write(long file, ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException;

    /** Closes an open file. */
    void close(long file);

    /** Makes sure that a closed file is on the disk, and not in a cache only. */
    void flushToDisk(String path) throws IOException;

    /** Deletes a file; tells whether it is gone. */
    boolean delete(String path);

    /** Renames a file; false when that failed, also because the new name is taken. */
    boolean rename(String from, String to);

    /** Makes one directory; false when something of that name is there. */
    boolean makeDirectory(String path) throws IOException;

    /**
     * Makes one directory that, where the file system knows rights, keeps everybody out from its first moment on,
     * whatever it inherits; its owner may change that.
     *
     * @return false when something of that name is there
     */
    boolean makeClosedDirectory(String path) throws IOException;

    /**
     * Opens a directory so that nobody can rename or remove it, or a directory above it, until {@link #close}; of a
     * link the link itself.
     *
     * @return a file number
     */
    long hold(String directory) throws IOException;

    /** Sets the time of the last write; tells whether that was possible. */
    boolean setLastModified(String path, long milliseconds);

    /**
     * Sets attributes of a file, a directory or a link itself. Only reading them again tells whether it worked.
     *
     * @param attributes bits of {@link Attributes#RESTORED}, those that are missing are taken away; and perhaps
     *        {@code FILE_ATTRIBUTE_COMPRESSED}, which compresses, and of a link what it leads to
     * @throws IOException when it cannot be compressed, and then no attribute is set
     */
    void setAttributes(String path, int attributes) throws IOException;

    /**
     * Sets parts of a security descriptor. Where it is a link that may be set through it, on what it leads to.
     *
     * @param parts {@code OWNER_SECURITY_INFORMATION} and its siblings
     * @param text the descriptor as SDDL text, which has these parts
     */
    void setSecurity(String path, int parts, String text) throws IOException;

    /**
     * Sets the access rights of a link itself; where it leads to stays as it is.
     *
     * @param text the rights as SDDL text; of whether they are inherited nothing is kept
     */
    void setLinkRights(String path, String text) throws IOException;

    /** Makes a link of one of the kinds of {@link WinFile}. When it fails, an empty directory may stay. */
    void makeLink(byte kind, String path, String target) throws IOException;

    /** Deletes an empty directory; tells whether it is gone. */
    boolean deleteEmptyDirectory(String path);

    /** Tells whether a path leads to another machine. */
    boolean isRemote(String path);

    /** Tells whether this process has the rights of an administrator; the system account has them. */
    boolean isAdministrator();

    /** Gives the identifier of this process's account in the form {@code S-1-5-...}, empty when it cannot be had. */
    String account();

    /** Lets this process read regardless of access rights from now on, if its account may do so. */
    void useBackupPrivilege();

    /** Lets this process write regardless of access rights, and give files to others, if its account may do so. */
    void useRestorePrivileges();

    /**
     * Checks that an account may read a file or directory. Each call logs the account on.
     *
     * @throws IOException when it may not, with a message that begins with [CheckAccessToFile]; with any other one when
     *         it cannot be logged on
     */
    void checkRead(String path, Account account) throws IOException;
}
