package com.qarvo.kel.util;

import com.qarvo.dov.io.DiskFullException;
import com.qarvo.dov.io.SharingViolationException;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.io.InputStream;
import java.io.PipedOutputStream;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.Collection;

/**
 * What a backup client on Windows needs and the Java platform does not offer: file handles with unbuffered and
 * preallocated I/O, full attribute words, security descriptors, links, encrypted files in raw form, the registry,
 * processes under other accounts, volumes and disks, accounts, network drives, hardware inventory and host facts. The
 * work is done by WinUtil64.dll.
 *
 * <p><b>Loading.</b> The first instance loads the DLL: the file that {@code -Dwinutil.library=FILE} names with its full
 * path, else WinUtil64.dll beside this jar, else in a folder of {@code java.library.path}. A service should name it:
 * then nothing is searched. A method that the loaded DLL does not carry fails with {@link UnsatisfiedLinkError}.
 * Loading switches the restore, take-ownership and security privileges of the process on where its account holds them.
 * Java 24 and later warn of native access unless the program is started with
 * {@code --enable-native-access=ALL-UNNAMED} (or the module {@code com.qarvo.winutil}).
 *
 * <p><b>Threads.</b> Instances have no state; one serves all threads, and any number may be made. Every method does its
 * work on the calling thread and returns when it is done. An interrupt of the thread ends none of them. Impersonation
 * and COM belong to the platform thread: a virtual thread, which may move from one to another between two calls, must
 * not call the methods that begin, use or end them.
 *
 * <p><b>What is not checked.</b> The natives are as close to the system as they can be, and a caller's mistake can end
 * the whole process:
 * <ul>
 * <li>A {@code String} or object must not be null unless its description says that it may.</li>
 * <li>{@code offset} and {@code length} must lie within the array or buffer.</li>
 * <li>A {@code long} that stands for something native (the record of an open file, a handle cell, an encrypted-file
 * context) belongs to the caller until it is passed to its closing method, once. It must not be used afterwards, nor
 * closed while another thread is using it. Nothing collects a forgotten one.</li>
 * </ul>
 *
 * <p><b>Paths</b> are drive or network paths, with slashes of either kind. Most methods try a path as it was given and,
 * when that fails, once more in long form, that is with <code>\\?\</code> (network paths: <code>\\?\UNC\</code>) in
 * front and backslashes throughout, so that paths of more than 260 characters work. A relative path is never made
 * absolute, so it works in the first attempt at most; <code>.</code> and <code>..</code> are not resolved in long form.
 * The reason of a failure is that of the second attempt, so for such a path it may be false: {@link #mkdir} raises
 * where the directory is there already. A path ends at a U+0000 in it.
 *
 * <p>{@link #listWinFiles} gives paths without the prefix, and without it a name that ends in a dot or a blank, or that
 * is a device's ({@code nul}, {@code com1}, ...), leads the other methods to another file; a path of more than 260
 * characters is not found by those that try it as given only. Put <code>\\?\</code> in front before passing on such
 * a path.
 *
 * <p><b>Text.</b> Where a description says "ASCII", the text goes to the system as if it were in the ANSI code page,
 * which it is not: all other characters arrive garbled, even those of the code page.
 *
 * <p><b>Passwords.</b> The copies that the library and the JVM make of a password for a call are wiped; the string
 * itself is the caller's.
 *
 * <p><b>Failures.</b> The message of an exception mostly reads {@code [Tag] (code) text}: the system function or method
 * that failed, the Win32 error code, and the system's own text in the user's language with the line break that the
 * system ends it with. A method that declares no exception reports failure by its result.
 *
 * <p>Where memory runs out for an argument or a block of the library's own, a method raises the exception that its
 * failures carry, with code 8 where they carry one, or an {@link OutOfMemoryError}. But those that read or write
 * registry values give the result of a failure, {@link #getLongPathName} and {@link #getUNC} the path as given, and
 * {@link #setFileACL} and {@link #networkAuthenticate} stay silent. Where it is a block of the library's own,
 * {@link #getFileAttr} answers -1, {@link #getLibraryIcon} null, {@link #getNetUsed} false, {@link #getSID},
 * {@link #getV6DomainName} and {@link #getNetBIOSComputerName} the empty text; {@link #getProcessInfo} leaves the process
 * out, {@link #getNetUsed} a container within another, {@link #isMemberOf} lists the group as one whose membership is not
 * established, and a volume is listed by its name in place of its drive letter.
 *
 * <p><b>Collectors and listeners</b> are plain objects whose methods are looked up by name and signature; their classes
 * need not implement anything, nor be public. They are called on the calling thread, before the method returns. An
 * item for which the collector has no method is passed over. Unless it says otherwise, an exception that a collector
 * throws ends the call and reaches its caller.
 */
public class WindowsUtil {
    /**
     * Loads the DLL, if no earlier instance has.
     *
     * @throws UnsatisfiedLinkError when it cannot be loaded; the message says why, at every attempt
     */
    public WindowsUtil() {
        WinUtilLoader.load();
    }

    // Path forms

    /**
     * Replaces the short (8.3) names in a path by the long ones. It neither resolves relative paths nor adds a prefix.
     *
     * @param path a path
     * @return the path with long names; the path as given when it does not exist or cannot be read
     */
    public native String getLongPathName(String path);

    /**
     * Replaces environment variables, written {@code %NAME%}, by their values. (The name is spelled as it is.)
     *
     * @param path any text
     * @return the text with values in it; variables that are not set stay as written
     * @throws RuntimeException when the system refuses
     */
    public native String CovertEnvPathToFilePath(String path);

    // Optional system functions

    /**
     * Tells whether this Windows has a library, or a function in it. The library is loaded for the question and let go
     * again, so its initialisation runs.
     *
     * @param library file name or path of a DLL, ASCII; may be null
     * @param function name of an exported function, ASCII; null or empty asks for the library alone
     * @return true when it is there; false when {@code library} is null or empty
     */
    public native boolean isMethodSupported(String library, String function);

    // Opening and creating files

    /**
     * Opens or creates a file, and preallocates room for it. Other processes may read and write the file meanwhile, but
     * not delete it.
     *
     * <p>With a size, write access is added, and the file gets that size at once: <b>a longer one that is there already
     * loses what lies behind it</b>. {@link #closeFile} cuts the file at the position that the handle then has. Where
     * the account may manage the volume, the new room is not zeroed: until it is written it holds whatever lay on the
     * disk there.
     *
     * <p>While another process holds the file with a conflicting share mode the call tries again, ten times at half a
     * second.
     *
     * @param path the file
     * @param access {@link Win32#GENERIC_READ}, {@link Win32#GENERIC_WRITE} and other access rights
     * @param disposition {@link Win32#CREATE_NEW}, {@link Win32#OPEN_EXISTING} or another of these
     * @param flags the {@code FILE_FLAG_} and {@code FILE_ATTRIBUTE_} values of {@link Win32}
     * @param size bytes to preallocate, 0 or less for none
     * @return the record of the open file, to be closed with {@link #closeFile}
     * @throws FileNotFoundException when the file or a folder on its path is missing, or the system cannot reach it
     * @throws SharingViolationException when another process held it through all attempts
     * @throws DiskFullException when the volume is full
     * @throws IOException when it cannot be opened, extended or measured for another reason
     */
    public native long createFileNC(String path, int access, int disposition, int flags, long size)
            throws IOException;

    /**
     * Opens or creates a file, as {@link #createFileNC(String, int, int, int, long)} does without preallocating.
     *
     * @param path the file
     * @param access {@link Win32#GENERIC_READ}, {@link Win32#GENERIC_WRITE} and other access rights
     * @param disposition {@link Win32#CREATE_NEW}, {@link Win32#OPEN_EXISTING} or another of these
     * @param flags the {@code FILE_FLAG_} and {@code FILE_ATTRIBUTE_} values of {@link Win32}
     * @return the record of the open file, to be closed with {@link #closeFile}
     * @throws IOException as there
     */
    public native long createFileNC(String path, int access, int disposition, int flags) throws IOException;

    /**
     * Opens a file, making it when it is missing ({@link Win32#OPEN_ALWAYS}); otherwise as
     * {@link #createFileNC(String, int, int, int, long)} does without preallocating.
     *
     * @param path the file
     * @param access {@link Win32#GENERIC_READ}, {@link Win32#GENERIC_WRITE} and other access rights
     * @param flags the {@code FILE_FLAG_} and {@code FILE_ATTRIBUTE_} values of {@link Win32}
     * @return the record of the open file, to be closed with {@link #closeFile}
     * @throws IOException as there
     */
    public native long createFileN(String path, int access, int flags) throws IOException;

    /**
     * Opens an existing file for buffered reading, with backup semantics: a process with the backup privilege may read
     * files that its account may not, and a directory can be opened too. Others may read and write the file meanwhile.
     * Retries on a sharing violation, as {@link #createFileNC(String, int, int, int, long)} does.
     *
     * @param path the file
     * @return the record of the open file, to be closed with {@link #closeFile}
     * @throws FileNotFoundException when the file or a folder on its path is missing, or the system cannot reach it
     * @throws SharingViolationException when another process held it through all attempts
     * @throws IOException when it cannot be opened or measured for another reason
     */
    public native long openFile(String path) throws IOException;

    /**
     * Tells whether files can be preallocated without zeroing in a place, by trying it: it makes a file of 1 MiB and
     * deletes it again.
     *
     * @param path the file to try with; <b>one that is there already is overwritten and then deleted</b>
     * @return true when it worked; false also when the account may not manage the volume
     */
    public native boolean isSupportExtendFileSize(String path);

    /**
     * Sets the end of an open file, cutting or extending it, without moving the handle's position.
     *
     * @param record the record of a file opened for writing
     * @param endOfFile the new size in bytes
     * @return true; false when this Windows lacks the function for it
     * @throws IOException when the system refuses; code 6 for a record of 0 or less
     */
    public native boolean setFileEndOfFileInfo(long record, long endOfFile) throws IOException;

    // Reading, writing and positioning

    /**
     * Writes bytes of an array at the handle's position and moves it on. When the system takes only part of them,
     * nothing is raised: {@link #getFilePosition} tells, by how far the position has moved.
     *
     * @param record the record of a file opened for writing
     * @param data the array; the range is not checked
     * @param offset the first byte to write
     * @param length how many bytes to write
     * @throws DiskFullException when the volume is full
     * @throws IOException when the write fails for another reason; code 6 for a record of 0 or less
     */
    public native void write(long record, byte[] data, int offset, int length) throws IOException;

    /**
     * Writes bytes of a direct buffer at the handle's position and moves it on. The buffer's own position and limit
     * play no part and do not change. That the system took only part of the bytes shows as it does for
     * {@link #write(long, byte[], int, int)}.
     *
     * <p>For a file opened with {@link Win32#FILE_FLAG_NO_BUFFERING} the length must be a multiple of the sector size
     * (that much is checked), and the system wants the position and the address to be multiples of it as well.
     *
     * @param record the record of a file opened for writing
     * @param buffer a direct buffer; the range is not checked
     * @param offset the first byte to write, counted from the buffer's start
     * @param length how many bytes to write
     * @param sectorSize the volume's sector size, a power of two; see {@link #getSectorSize}
     * @throws DiskFullException when the volume is full
     * @throws IOException when the length does not fit, the buffer is not direct, or the write fails; code 6 for a
     *         record of 0 or less
     */
    public native void write(long record, ByteBuffer buffer, int offset, int length, int sectorSize)
            throws IOException;

    /**
     * Reads bytes into an array from the handle's position and moves it on.
     *
     * @param record the record of a file opened for reading
     * @param data the array; the range is not checked
     * @param offset where the first byte goes
     * @param length how many bytes to read at most
     * @return how many bytes were read; -1 at the end of the file, and whenever {@code length} is 0
     * @throws IOException when the read fails; code 6 for a record of 0 or less
     */
    public native int read(long record, byte[] data, int offset, int length) throws IOException;

    /**
     * Reads bytes into a direct buffer from the handle's position and moves it on. The buffer's own position and limit
     * play no part and do not change.
     *
     * <p>For a file opened with {@link Win32#FILE_FLAG_NO_BUFFERING} position, address and length must be multiples of
     * the sector size. The system refuses such a read that starts at the exact end of the file, whose size need not be
     * a multiple; this counts as the end when all bytes of the file, as large as it was when opened, have been read
     * through this handle in order. After a {@link #seek} that count is off, and the same read may raise code 87.
     *
     * @param record the record of a file opened for reading
     * @param buffer a direct buffer; the range is not checked
     * @param offset where the first byte goes, counted from the buffer's start
     * @param length how many bytes to read at most
     * @param sectorSize the volume's sector size, a power of two; see {@link #getSectorSize}
     * @return how many bytes were read; -1 at the end of the file, and whenever {@code length} is 0
     * @throws IOException when the buffer is not direct or the read fails; code 6 for a record of 0 or less
     */
    public native int read(long record, ByteBuffer buffer, int offset, int length, int sectorSize)
            throws IOException;

    /**
     * Moves the handle to a position, which may lie behind the end.
     *
     * @param record the record of an open file
     * @param position bytes from the start of the file
     * @return the new position
     * @throws IOException when the system refuses, as it does a negative position; code 6 for a record of 0 or less
     */
    public native long seek(long record, long position) throws IOException;

    /**
     * Moves the handle forwards or backwards.
     *
     * @param record the record of an open file
     * @param distance bytes to move by, negative for backwards
     * @return the new position from the start of the file; not the distance moved
     * @throws IOException when the system refuses, as it does a position before the start; code 6 for a record of 0 or
     *         less
     */
    public native long skip(long record, long distance) throws IOException;

    /**
     * Gives the handle's position.
     *
     * @param record the record of an open file
     * @return bytes from the start of the file
     * @throws IOException when the system refuses; code 6 for a record of 0 or less
     */
    public native long getFilePosition(long record) throws IOException;

    /**
     * Gives the size that an open file has now.
     *
     * @param record the record of an open file
     * @return the size in bytes
     * @throws IOException with an empty message when the system refuses; code 6 for a record of 0 or less
     */
    public native long getFileSize(long record) throws IOException;

    /**
     * Closes a file and frees its record. A file that was opened with a size to preallocate is first cut at the
     * handle's position, so write to its end, or move there, before closing. A failure is not reported.
     *
     * @param record the record, of no use afterwards; nothing happens for 0 and less
     */
    public native void closeFile(long record);

    /**
     * Does nothing: a child process has no input to write to.
     *
     * @param handle not used
     * @param data not used
     * @param offset not used
     * @param length not used
     * @return always -1
     */
    public native int WriteHandle(long handle, byte[] data, int offset, int length);

    // Sector size and aligned buffers

    /**
     * Gives the sector size of the volume that a path lies on.
     *
     * @param path a path that begins with a drive letter, with <code>\\server\share\</code>, or with the device name of
     *        a shadow copy and a backslash
     * @return bytes per sector; 0 for a path of another form, a relative one among them, or when the volume does not
     *         answer
     */
    public native int getSectorSize(String path);

    /**
     * Gives the size of a memory page.
     *
     * @return bytes per page
     */
    public native int getPageSize();

    /**
     * Gives the address of a direct buffer, for instance to find the first aligned byte in it.
     *
     * @param buffer a direct {@link ByteBuffer} or other direct buffer
     * @return the address of its first byte; 0 when it is not a direct buffer
     */
    public native long GetDirectBufferAddress(Object buffer);

    /**
     * Makes an ordinary byte array, which despite the name has no particular alignment. Aligned memory is a direct
     * buffer from an aligned offset on; see {@link #GetDirectBufferAddress}.
     *
     * @param size its length
     * @return the array
     * @throws NegativeArraySizeException when {@code size} is negative
     * @throws OutOfMemoryError when the JVM has no room for it
     */
    public native byte[] getAlignedByteBuffer(int size);

    // File records and directory listing

    /**
     * Lists a directory: hands each entry but {@code .} and {@code ..} to a collector, in the order in which the system
     * gives them. Subdirectories are not entered. {@link WinFileList} is a ready-made collector; others have the method
     *
     * <pre>
     * void addFile(String path, boolean directory, long size, long lastModified, int attributes,
     *         String securityDescriptor, boolean reparsePoint)
     * </pre>
     *
     * <p>with the meanings given at {@link WinFileList#addFile}. An entry whose security descriptor cannot be read is
     * reported to the listener and delivered with an empty one; where the listener has no method for that, the call
     * ends in a {@link NoSuchMethodError} once all entries are delivered. When the listing breaks off, its own error
     * is raised instead, and the entries delivered stay delivered.
     *
     * <p>The descriptor is read by the path that is delivered, tried as given only. So it is another file's for a name
     * that ends in a dot or a blank, and not to be had beyond 260 characters: {@link #getWinSecurityDescriptor} gives
     * it for the path in long form.
     *
     * @param collector takes the entries
     * @param dir the directory, as an absolute path that does <b>not</b> begin with <code>\\?\</code>: those are
     *        refused, and the long form is used anyway
     * @param withSecurity whether to read security descriptors (owner, group, DACL); those of directories are read on
     *        NTFS volumes only
     * @param withAttributes whether to deliver the attribute word; without it every entry has attributes 0 and is no
     *        reparse point, links included
     * @param listener takes the reports, see {@link FileErrorListener}; may be null
     * @param securityOnFiles whether the security descriptors of files are read too, not only those of directories
     * @throws IOException when the directory cannot be opened or the listing breaks off; the message is the system's
     *         text alone. The root of an empty drive, which has no entries at all, raises that of code 2
     */
    public native void listWinFiles(Object collector, String dir, boolean withSecurity, boolean withAttributes,
            Object listener, boolean securityOnFiles) throws IOException;

    /**
     * Describes one file or directory. A link is described itself, not what it leads to.
     *
     * @param path the file or directory
     * @param withSecurity whether to read the security descriptor (owner, group, DACL); one that cannot be read stays
     *        empty, without a report
     * @param securityOnFiles whether to read it for a file too; that of a directory is read on NTFS volumes only
     * @return the record, with attribute word and link data; a mounted volume counts as a plain directory
     * @throws FileNotFoundException when there is none or it cannot be read, whatever the reason; its message is empty
     */
    public native WinFileList.WinFile WinFile(String path, boolean withSecurity, boolean securityOnFiles)
            throws FileNotFoundException;

    /**
     * Gives the attribute word of a file or directory; that of a link itself for a link.
     *
     * @param path the file or directory
     * @return the {@code FILE_ATTRIBUTE_} bits of {@link Win32}; {@link Win32#INVALID_FILE_ATTRIBUTES} (-1) when it
     *         cannot be read
     */
    public native int getFileAttr(String path);

    // File operations

    /**
     * Makes a directory; not the ones above it. Where the folder above it seems to be missing, and the path begins with
     * two backslashes, the call waits two seconds and looks again whether the directory is there, since a network share
     * may be slow to show it.
     *
     * @param path the directory
     * @return true when it was made; false when something of that name is there already
     * @throws DiskFullException when the volume is full
     * @throws SecurityException for any other reason, a missing folder above it included; also when the directory is
     *         there already but the path is relative or has <code>.</code> or <code>..</code> in it
     */
    public native boolean mkdir(String path) throws DiskFullException;

    /**
     * Deletes a file, or a link to a file itself. Read-only and other attributes are cleared first, and stay cleared
     * when it cannot be deleted.
     *
     * @param path the file; directories are not deleted
     * @return true when it was deleted
     */
    public native boolean delete(String path);

    /**
     * Renames or moves a file or directory. Something of the new name that is there already is not replaced. A file may
     * move to another volume, a directory not.
     *
     * @param from its path
     * @param to its new path
     * @return true when it was moved
     */
    public native boolean renameTo(String from, String to);

    /**
     * Tells whether a file or directory is there; a link counts whether or not it leads anywhere.
     *
     * @param path the file or directory
     * @return true when its attributes can be read
     */
    public native boolean exists(String path);

    /**
     * Tells whether a path is a directory; junctions and links to directories count as such.
     *
     * @param path the file or directory
     * @return false also when there is none or it cannot be read
     */
    public native boolean isDir(String path);

    /**
     * Gives the time of the last write.
     *
     * @param path the file or directory
     * @return milliseconds since 1970-01-01 UTC, negative before that; 0 also when it cannot be read
     */
    public native long lastModified(String path);

    /**
     * Sets the time of the last write; that of a link itself for a link.
     *
     * @param path the file or directory
     * @param milliseconds milliseconds since 1970-01-01 UTC; the range is not checked, and 1601-01-01, where the system
     *        begins to count, leaves the time as it is
     * @return true when the system took it
     */
    public native boolean setLastModified(String path, long milliseconds);

    // Security descriptors and access checks

    /**
     * Gives the security descriptor of a file or directory as SDDL text.
     *
     * @param path the file or directory
     * @param securityInformation what to read: the {@code _SECURITY_INFORMATION} bits of {@link Win32}
     * @param listener told when it cannot be read, see {@link FileErrorListener}; may be null. One that has no method
     *        for that ends the call in a {@link NoSuchMethodError}
     * @return the text, empty when it cannot be read
     */
    public native String getWinSecurityDescriptor(String path, int securityInformation, Object listener);

    /**
     * Sets the attributes of a file or directory. {@link Win32#FILE_ATTRIBUTE_COMPRESSED} compresses the file, and
     * {@link Win32#FILE_ATTRIBUTE_ENCRYPTED} encrypts it; leaving them out undoes neither. That the attributes
     * themselves could not be set is not reported; {@link #getFileAttr} tells.
     *
     * @param path the file or directory
     * @param attributes the attribute word; {@link Win32#INVALID_FILE_ATTRIBUTES} (-1) changes nothing
     * @throws IOException when compressing failed, and then no attribute is set, or when encrypting failed
     */
    public native void setFileAttr(String path, int attributes) throws IOException;

    /**
     * Sets the security descriptor of a file or directory, then its attributes as {@link #setFileAttr} does.
     *
     * @param path the file or directory
     * @param securityInformation what to set of the descriptor: the {@code _SECURITY_INFORMATION} bits of
     *        {@link Win32}
     * @param descriptorText the descriptor as SDDL text; null or empty leaves it as it is
     * @param attributes the attribute word; {@link Win32#INVALID_FILE_ATTRIBUTES} (-1) leaves it as it is
     * @return nothing of use; it worked when no exception came
     * @throws IOException when either could not be set; the attributes are tried even when the descriptor failed. The
     *         message tells which, except that one about compressing or encrypting says nothing of the descriptor
     */
    public native boolean setFileAttrWithSecurityDescriptor(String path, int securityInformation,
            String descriptorText, int attributes) throws IOException;

    /**
     * Checks that an account may read a file, by logging it on and comparing its rights with the security descriptor.
     * When the logon succeeded, the thread acts as the process itself afterwards, even if it was impersonating before.
     *
     * @param path the file or directory
     * @param domain the account's domain or machine, ASCII
     * @param user the account, ASCII; an empty one is refused with an empty message
     * @param password its password, ASCII
     * @return true; a no always comes as an exception
     * @throws IOException when the account may not, cannot log on, or the question cannot be answered
     */
    public native boolean isAccessRead(String path, String domain, String user, String password) throws IOException;

    /**
     * Checks that an account may write a file, as {@link #isAccessRead} does for reading. With an empty user it asks
     * for the account that the thread is impersonating, and refuses with an empty message when there is none. <b>It
     * asks for that account also when the given one cannot log on</b>, so a yes means the given one only where the
     * thread was not impersonating. In every case the thread acts as the process itself afterwards.
     *
     * @param path the file or directory
     * @param domain the account's domain or machine, ASCII
     * @param user the account, ASCII; may be empty
     * @param password its password, ASCII
     * @return true; a no always comes as an exception
     * @throws IOException when the account may not, the question cannot be answered, or the account cannot log on and
     *         the thread is not impersonating
     */
    public native boolean isAccessWrite(String path, String domain, String user, String password) throws IOException;

    /**
     * Adds an entry to the access rights (DACL) of a file or directory, inherited by everything below it. It tells
     * nobody whether it worked.
     *
     * @param path the file or directory
     * @param trustee the account or group, as {@code DOMAIN\name} or a name alone
     * @param accessPermissions the access rights, {@link Win32#GENERIC_READ} and the like
     * @param accessMode {@link Win32#GRANT_ACCESS} or another of these
     */
    public native void setFileACL(String path, String trustee, int accessPermissions, int accessMode);

    /**
     * Switches the security privilege on, which reading and setting audit settings (SACL) takes. Like the other
     * privileges it stays on, for all threads of the process.
     *
     * @return true when the system took the request; not proof that the account holds the privilege
     */
    public native boolean enableSecurityPrivilege();

    /**
     * Switches the take-ownership privilege on; see {@link #enableSecurityPrivilege}.
     *
     * @return true when the system took the request; not proof that the account holds the privilege
     */
    public native boolean enableTakeOwnershipPrivilege();

    /**
     * Switches the restore privilege on, which lets files be written regardless of their access rights and hives be
     * loaded; see {@link #enableSecurityPrivilege}.
     *
     * @return true when the system took the request; not proof that the account holds the privilege
     */
    public native boolean enableRestorePrivilege();

    /**
     * Switches the backup privilege on, which lets files be read regardless of their access rights; see
     * {@link #enableSecurityPrivilege}.
     *
     * @return true when the system took the request; not proof that the account holds the privilege
     */
    public native boolean enableBackupPrivilege();

    // Encrypted-file raw streaming

    /**
     * Opens a file that the Windows Encrypting File System has encrypted, for copying its raw, still encrypted form.
     * It also clears the interrupt of {@link #interruptEncryptFile}, for every context.
     *
     * @param path the file, tried as given only
     * @param flags {@link Win32#OPEN_FOR_EXPORT} for {@link #readEncryptFile}; {@link Win32#CREATE_FOR_IMPORT} and
     *        its companions for {@link #writeEncryptFile}
     * @return the context, for one read or one write, to be closed with {@link #closeEncryptFile}
     * @throws IOException when it cannot be opened
     */
    public native long openEncryptFile(String path, long flags) throws IOException;

    /**
     * Writes the raw form of an encrypted file to a stream, all of it, before it returns. The reader of the pipe must
     * be on another thread. An exception that the stream throws ends the copy and reaches the caller.
     *
     * @param context a context opened for export
     * @param out takes the raw bytes; it is not closed
     * @return 0 when all was copied; -1 when {@link #interruptEncryptFile} ended it, which raises nothing
     * @throws RuntimeException when {@code out} is null
     * @throws IOException when the system gives up
     */
    public native int readEncryptFile(long context, PipedOutputStream out) throws IOException;

    /**
     * Makes an encrypted file from its raw form, read from a stream to its end. An exception that the stream throws
     * ends the input there and reaches the caller. An interrupt does not stop it. The native copy of every block stays
     * for good, so each stream costs its size in memory until the process ends.
     *
     * @param context a context opened for import
     * @param in gives the raw bytes; it is not closed
     * @return 0 when the file was made
     * @throws IOException when the system gives up
     */
    public native int writeEncryptFile(long context, InputStream in) throws IOException;

    /**
     * Closes an encrypted-file context.
     *
     * @param context the context, of no use afterwards
     */
    public native void closeEncryptFile(long context);

    /**
     * Stops {@link #readEncryptFile} after the current block; called from another thread. There is one interrupt for
     * the whole process: it stops every export under way, and every later one, until {@link #openEncryptFile} is called
     * again.
     */
    public native void interruptEncryptFile();

    // Junctions and symbolic links

    /**
     * Makes a directory junction. When a step after making the directory fails, the empty directory stays.
     *
     * @param link the junction, tried as given only; nothing of that name may be there
     * @param target the directory that it leads to: a drive path, a network path, or a name that begins with
     *        <code>\??\</code>, which is taken as it is
     * @return true
     * @throws IOException when it cannot be made; code 183 when the name is taken, 206 when the target is too long
     */
    public native boolean createJunctionPoint(String link, String target) throws IOException;

    /**
     * Makes a symbolic link to a directory. The account needs the right to create symbolic links, which administrators
     * have.
     *
     * @param link the link, tried as given only; nothing of that name may be there
     * @param target what it leads to, stored as it is: relative to the link's own folder when relative; need not exist
     * @return true
     * @throws IOException when it cannot be made
     */
    public native boolean createDirectorySymbolicLink(String link, String target) throws IOException;

    /**
     * Makes a symbolic link to a file, as {@link #createDirectorySymbolicLink} does to a directory.
     *
     * @param link the link, tried as given only; nothing of that name may be there
     * @param target what it leads to, stored as it is: relative to the link's own folder when relative; need not exist
     * @return true
     * @throws IOException when it cannot be made
     */
    public native boolean createFileSymbolicLink(String link, String target) throws IOException;

    /**
     * Gives what a junction or symbolic link leads to.
     *
     * @param path the link
     * @return the target without the prefixes that the file system puts in front of it, relative for a relative link,
     *         a volume name (<code>\\?\Volume{...}\</code>) for a mounted volume; empty when it has more than 2047
     *         characters; null for what is no link or cannot be read
     */
    public native String getLinkTarget(String path);

    /**
     * Gives the kind of reparse point that a path is.
     *
     * @param path the file or directory
     * @return 16 for a junction or mounted volume, 17 and 18 for a symbolic link to a file or directory; for another
     *         kind its tag with the low byte set to 0xFF; 255 for what is no reparse point or cannot be read
     */
    public native int getLinkType(String path);

    /**
     * Tells whether a path is a junction, a mounted volume or a symbolic link.
     *
     * @param path the file or directory
     * @return false also when it cannot be read
     */
    public native boolean isLink(String path);

    /**
     * Tells whether a path is a directory junction; a mounted volume counts as one here.
     *
     * @param path the file or directory
     * @return false also when it cannot be read
     */
    public native boolean isDirectoryJunction(String path);

    // Shortcuts and libraries

    /**
     * Tells whether the shell takes a file for a shortcut. The shell wants COM on the thread, which this method does
     * not start: call {@link #CoInitializeEx} before.
     *
     * @param path the file
     * @return true for a shortcut; false for junctions and symbolic links, and when the shell does not know
     */
    public native boolean isShortcut(String path);

    /**
     * Gives what a shortcut points to. The shell neither searches for a moved target nor rewrites the shortcut. <b>To
     * resolve a shortcut from a stranger makes this process talk to the server that it names.</b>
     *
     * <p>COM is started on the thread for the call, but the shortcut's objects are released only after it has ended
     * again. So the thread should hold COM itself, from {@link #CoInitializeEx} before the call to
     * {@link #CoUninitialize} behind it: otherwise the code of those objects may be gone by then, and the process with
     * it.
     *
     * @param path the shortcut
     * @return the target; empty when it cannot be resolved
     */
    public native String getShortcutTarget(String path);

    /**
     * Tells by its name whether a file is a Windows library.
     *
     * @param path the file
     * @return true when it ends in {@code .library-ms}, in lower case, behind at least one other character
     */
    public native boolean isLibrary(String path);

    /**
     * Adds the folders of a Windows library to a collection, as strings. COM is started on the thread for the call. A
     * library from a stranger makes this process talk to the servers that it names.
     *
     * @param path the library file
     * @param collection takes the folders through {@code boolean add(Object)}; unchanged when the library cannot be
     *        read
     */
    @SuppressWarnings("rawtypes")
    public native void getLibraryFolders(String path, Collection collection);

    /**
     * Gives the icon of a Windows library, in 16 x 16 pixels. COM is started on the thread for the call. A library from
     * a stranger makes this process talk to the server that its icon lies on.
     *
     * @param path the library file
     * @return the bytes of a BMP file; null when there is none
     */
    public native byte[] getLibraryIcon(String path);

    /**
     * Finds a file by the system's search order: program folder, current folder, system folders, {@code PATH}. Where
     * the machine or the process has the safe search mode on, the current folder comes behind the system folders.
     *
     * @param name the file name with its extension
     * @return the full path; empty when it is not found
     */
    public native String searchPathFromLibrary(String name);

    /**
     * Adds the folders that a backup of user data leaves out to a collection, as strings: the programs folder for
     * 32-bit programs, the programs folder, the Windows folder.
     *
     * @param collection takes the folders through {@code boolean add(Object)}
     */
    @SuppressWarnings("rawtypes")
    public native void getSystemExcludeFolders(Collection collection);

    // Registry tree listing

    /**
     * Lists one registry key: hands its direct subkeys, then its values, to a {@link RegistryCollector} or an object
     * with methods of those names and signatures, each of which may be left out.
     *
     * <p>Text with variables in it comes unexpanded. A list of strings ends at its first empty one. Texts, and strings
     * in lists, are cut at 16383 characters, names of REG_SZ values at 255. Type 9 is REG_FULL_RESOURCE_DESCRIPTOR.
     * Values of other types, 64-bit numbers and resource lists (type 8) among them, are left out, and so is a subkey
     * whose name has 255 characters. A key that cannot be opened gives nothing.
     *
     * <p>Names and texts come by way of the ANSI code page, with question marks for the characters that it lacks. A
     * value whose name has such characters is left out; a subkey cannot be opened by the name that comes.
     *
     * @param collector takes the items
     * @param rootName {@code HKEY_LOCAL_MACHINE}, {@code HKEY_USERS}, {@code HKEY_CURRENT_USER},
     *        {@code HKEY_CLASSES_ROOT} or {@code HKEY_CURRENT_CONFIG}, in capitals
     * @param keyPath the path below the root, ASCII; empty for the root itself
     */
    public native void listRegistry(Object collector, String rootName, String keyPath);

    // Registry values, keys and hives

    /**
     * Writes a 32-bit number to the registry, making the key when it is missing.
     *
     * <p>This method and the others that take a full value path want it in the form {@code ROOT\key path\value name},
     * below 1024 characters, where {@code ROOT} is one of the names that {@link #listRegistry} takes. A longer one
     * fails. Keys that the writing methods make have the class name {@code LocalSystem}.
     *
     * @param path the full value path, ASCII, its root in capitals
     * @param value the number; its low 32 bits count
     * @return true when it was written
     */
    public native boolean setRegistryDWORD(String path, long value);

    /**
     * Writes a 32-bit number to the registry, as {@link #setRegistryDWORD} does.
     *
     * @param path the full value path in any characters, its root in any case
     * @param value the number; its low 32 bits count
     * @return true when it was written
     */
    public native boolean setRegistryDWORDW(String path, long value);

    /**
     * Writes a text (REG_SZ) to the registry, making the key when it is missing. It is stored without a terminating
     * zero.
     *
     * @param path the full value path, ASCII, its root in capitals; see {@link #setRegistryDWORD}
     * @param text the text, ASCII
     * @return true when it was written
     */
    public native boolean setRegistryString(String path, String text);

    /**
     * Writes a text (REG_SZ) to the registry, as {@link #setRegistryString} does.
     *
     * @param path the full value path in any characters, its root in any case; see {@link #setRegistryDWORD}
     * @param text the text, in any characters
     * @return true when it was written
     */
    public native boolean setRegistryStringW(String path, String text);

    /**
     * Writes a text as a list of strings (REG_MULTI_SZ) to the registry, making the key when it is missing. It is
     * stored without a terminating zero, and as one string: a U+0000 in the text does not arrive as a separator.
     *
     * @param path the full value path, ASCII, its root in capitals; see {@link #setRegistryDWORD}
     * @param text the text, ASCII
     * @return true when it was written
     */
    public native boolean setRegistryMultiString(String path, String text);

    /**
     * Writes bytes (REG_BINARY) to the registry, making the key when it is missing.
     *
     * @param path the full value path, ASCII, its root in capitals; see {@link #setRegistryDWORD}
     * @param data the array; the range is not checked
     * @param offset the first byte to write
     * @param length how many bytes to write
     * @return true when they were written
     */
    public native boolean setRegistryBinary(String path, byte[] data, int offset, int length);

    /**
     * Reads a 32-bit number from the registry.
     *
     * @param path the full value path, ASCII, its root in capitals; see {@link #setRegistryDWORD}
     * @return 0 to 4294967295; -1 when it cannot be read or is of another type
     */
    public native long getRegistryDWORD(String path);

    /**
     * Reads a text from the registry, with variables in it unexpanded.
     *
     * @param path the full value path, ASCII, its root in capitals; see {@link #setRegistryDWORD}
     * @return the text; empty when it cannot be read, is of another type, or takes more than 1024 bytes
     */
    public native String getRegistryString(String path);

    /**
     * Reads the bytes of a registry value of any type; those of a text are not the stored ones, but its characters
     * converted to the ANSI code page.
     *
     * @param path the full value path, ASCII, its root in capitals; see {@link #setRegistryDWORD}
     * @return the bytes; none when they cannot be read or are more than 1024
     */
    public native byte[] getRegistryBinary(String path);

    /**
     * Reads a text from the registry, as {@link #getRegistryString} does, from a value whose name may hold backslashes.
     *
     * @param key root name and key path, joined by a backslash, ASCII, the root in capitals
     * @param valueName the name of the value, ASCII
     * @return the text; empty when it cannot be read, is of another type, or takes more than 1024 bytes
     */
    public native String getRegistryValueString(String key, String valueName);

    /**
     * Reads a registry value of any size as text, in a chosen view of the registry.
     *
     * @param path the full value path in any characters, its root in any case; see {@link #setRegistryDWORD}. An
     *        unknown root stands for {@code HKEY_LOCAL_MACHINE}
     * @param extraAccess {@link Win32#KEY_WOW64_64KEY}, {@link Win32#KEY_WOW64_32KEY}, or 0
     * @param expectedType the type that the value must have; {@link Win32#REG_SZ} stands for
     *        {@link Win32#REG_EXPAND_SZ} as well
     * @return its data as text up to the first zero, with variables in it unexpanded; empty when it cannot be read, is
     *         of another type, or does not hold still
     */
    public native String getRegistryValue(String path, int extraAccess, int expectedType);

    /**
     * Makes a registry key, and those above it that are missing.
     *
     * @param rootName the root, in any case; see {@link #listRegistry}
     * @param keyPath the path below it
     * @return true when it is there now
     */
    public native boolean makeNewRegistryKey(String rootName, String keyPath);

    /**
     * Attaches a hive file to the registry. It takes the backup and the restore privilege: call
     * {@link #enableBackupPrivilege} and {@link #enableRestorePrivilege} first.
     *
     * @param rootName {@code HKEY_LOCAL_MACHINE} or {@code HKEY_USERS}, in any case
     * @param keyName the key below it that the hive appears as
     * @param hiveFile the hive file
     * @return true when it was attached
     */
    public native boolean loadRegistry(String rootName, String keyName, String hiveFile);

    /**
     * Detaches a hive; it takes the same privileges as {@link #loadRegistry}.
     *
     * @param rootName {@code HKEY_LOCAL_MACHINE} or {@code HKEY_USERS}, in any case
     * @param keyName the key that the hive appears as
     * @return true when it was detached; false while a key in it is open
     */
    public native boolean unloadRegistry(String rootName, String keyName);

    // Launching processes as another user

    /**
     * Starts a process under a named account, with its profile loaded and its environment, elevated where the account
     * can be. The process has no standard input; its standard output and error arrive at the streams of the result.
     * The calling process needs the right to start processes under other tokens, which services have; its backup and
     * restore privileges are switched on, and stay on. When a step behind loading the profile fails, the profile stays
     * loaded and the token open, and nothing gives them back. All strings may be null, but not program and command line
     * both.
     *
     * <p>Any number of threads may launch; their processes start one after the other, and none inherits another's ends
     * of the streams. A process that other code starts in the very moment of that, with a {@link ProcessBuilder} for
     * one, may inherit them, and the streams then end only with that process too; the launched process in turn inherits
     * what other code has made inheritable then.
     *
     * @param applicationName the program file; null to take it from the command line
     * @param commandLine the command line, program included
     * @param reserved not used; pass null
     * @param workingDirectory the folder to start in; null for the one of the calling process
     * @param domain the account's domain or machine, {@code .} for this machine
     * @param user the account
     * @param password its password
     * @return the process, to be closed with {@link WinProcess#close}
     * @throws IOException when a step fails, the message names it; code 1326 for a wrong name or password, 87 without
     *         program and command line
     */
    public native WinProcess createProcessAsUserN(String applicationName, String commandLine, Object reserved,
            String workingDirectory, String domain, String user, String password) throws IOException;

    /**
     * Starts a process as the user who is logged on in a session, elevated where the account can be. The process has no
     * standard input; its standard output and error arrive at the streams of the result, of which the same holds as for
     * {@link #createProcessAsUserN}. Only the local system account may do this. All strings may be null, but not
     * program and command line both.
     *
     * @param applicationName the program file; null to take it from the command line
     * @param commandLine the command line, program included
     * @param reserved not used; pass null
     * @param workingDirectory the folder to start in; null for the one of the calling process
     * @param sessionId the terminal-services session
     * @return the process, to be closed with {@link WinProcess#close}; it has neither token nor profile
     * @throws IOException when a step fails, the message names it; code 87 without program and command line
     */
    public native WinProcess createProcessAsUserSession(String applicationName, String commandLine, Object reserved,
            String workingDirectory, int sessionId) throws IOException;

    // Process handles and inspection

    /**
     * Closes the handle in a cell and frees the cell. {@link WinProcess} and {@link WinPipe} do this for theirs.
     *
     * @param handleCell the handle cell, of no use afterwards; nothing happens for 0 and less
     */
    public native void closeHandle(long handleCell);

    /**
     * Unloads an account's profile, closes its token and frees both cells. {@link WinProcess} does this for its own.
     * Unloading takes both: with only one of them the profile stays loaded, and that one's cell is freed nevertheless.
     *
     * @param tokenCell the handle cell of the token, of no use afterwards; 0 or less for none
     * @param profileCell the handle cell of the profile, of no use afterwards; 0 or less for none
     */
    public native void unloadUserProfile(long tokenCell, long profileCell);

    /**
     * Waits until a process has ended, without a time limit.
     *
     * @param handleCell the handle cell of the process
     * @return 0 when it has ended, -1 when the wait failed
     */
    public native int waitForSingleObject(long handleCell);

    /**
     * Gives the exit code of a process.
     *
     * @param handleCell the handle cell of the process
     * @return the exit code; {@link Win32#STILL_ACTIVE} (259) while it runs
     * @throws IOException when the system refuses
     */
    public native int exitValue(long handleCell) throws IOException;

    /**
     * Ends a process at once, with exit code 0, and does not wait for it.
     *
     * @param handleCell the handle cell of the process
     * @throws IOException when the system refuses
     */
    public native void endProcess(long handleCell) throws IOException;

    /**
     * Reads from the output of a child process; blocks until there is some or the child has closed its end.
     *
     * @param handleCell the handle cell of the read end, see {@link WinPipe#getHandle}
     * @param buffer the array; the range is not checked
     * @param offset where the first byte goes
     * @param length how many bytes to read at most
     * @return how many bytes were read; -1 when the child has closed its end, but also whenever {@code length} is 0
     *         and for each write of no bytes by a child that goes on
     * @throws IOException when the read fails for another reason; code 6 for a cell of 0 or less
     */
    public native int readHandle(long handleCell, byte[] buffer, int offset, int length) throws IOException;

    /**
     * Lowers the priority of the calling process to "below normal".
     *
     * @return 1 when it was lowered, else 0
     */
    public native int setPriority();

    /**
     * Gives the terminal-services session of the calling process.
     *
     * @return the session id; 0, which is also the id of the services' session, when it cannot be had
     */
    public native int getSessionId();

    /**
     * Lists running processes. Those whose token this account may not read are left out, and those whose account has
     * no name that the system can find.
     *
     * @param executableName the file name of the program, such as {@code java.exe}, in any case; null or empty for all
     * @return a list of {@link WinProcessInfo}
     * @throws IOException when the processes cannot be listed
     */
    @SuppressWarnings("rawtypes")
    public native ArrayList getProcessInfo(String executableName) throws IOException;

    /**
     * Gives the command line of a running process, of which the first 2048 characters are read.
     *
     * @param processId the process id
     * @param verbose whether to print each step to the standard output of the process
     * @return the command line, program included
     * @throws IOException when the process cannot be opened or read; code 87 for an id that no process has, one of more
     *         than 32 bits included
     */
    public native String getProcessCommandLineArguments(long processId, boolean verbose) throws IOException;

    /**
     * Ends a process, with exit code 0, and waits without a time limit until it has ended.
     *
     * @param processId the process id
     * @param verbose whether to print each step to the standard output of the process
     * @return nothing of use; it worked when no exception came
     * @throws IOException when the process cannot be opened or ended; code 87 for an id that no process has, one of
     *         more than 32 bits included
     */
    public native boolean terminateProcessByProcessID(long processId, boolean verbose) throws IOException;

    /**
     * Tells whether a Windows service is running.
     *
     * @param serviceName the service's name, not the name it is displayed under
     * @return true when it is running; false in any other state, starting and stopping included
     * @throws IOException when it cannot be asked; code 1060 when there is none of that name
     */
    public native boolean isServiceRunning(String serviceName) throws IOException;

    // Volumes and partitions

    /**
     * Adds all volumes of the machine to a collection, as strings: each with its drive letter ({@code C:\}) or, when it
     * has none, its volume name (<code>\\?\Volume{...}\</code>). One that is mounted in a folder as well may come with
     * that folder's path. Trouble is printed to the standard output and ends the list.
     *
     * @param collector takes the volumes through {@code boolean add(Object)}
     */
    public native void listPartitions(Object collector);

    /**
     * Adds the data volumes of one physical disk to a collection, as {@link #listPartitions} gives them: on a disk with
     * an MBR those on partitions of the NTFS (and exFAT) type, on one with GPT those on basic data partitions.
     *
     * @param diskPath the disk, {@code \\.\PhysicalDrive0} and so on; opening it takes administrator's rights
     * @param collector takes the volumes through {@code boolean add(Object)}
     * @throws FileNotFoundException when there is no such disk; the message is the system's text alone
     * @throws IOException when the path does not end in a number or the disk cannot be read; likewise
     */
    public native void listNTFSPartitions(String diskPath, Object collector) throws IOException;

    /**
     * Gives where the volume of a path is mounted.
     *
     * @param path a path
     * @return a drive root such as {@code C:\}, or a folder with a backslash at the end; empty when it cannot be had
     */
    public native String getVolumeName(String path);

    /**
     * Tells whether a path lies on a volume with NTFS.
     *
     * @param path a path
     * @return false also when it cannot be found out
     */
    public native boolean isNTFSVolume(String path);

    /**
     * Gives the drive letter of the Windows folder.
     *
     * @return the letter alone, such as {@code C}; null when it cannot be had
     */
    public native String getSystemVolumeDriveLetter();

    /**
     * Gives the name that the shell shows for a volume, which may have the drive letter in it, or where it shows none
     * the volume's plain label. The shell wants COM on the thread, which this method does not start: call
     * {@link #CoInitializeEx} before.
     *
     * @param root the root of the volume, such as {@code C:\}
     * @return the name; empty when it cannot be had
     */
    public native String getVolumeLabel(String root);

    /**
     * Sets the label of a volume.
     *
     * @param root the root of the volume, such as {@code C:\}, ASCII
     * @param label the label, ASCII
     * @return true when it was set
     */
    public native boolean setVolumeLabel(String root, String label);

    /**
     * Gives the kind of drive.
     *
     * @param root the root of the drive, such as {@code C:\}, ASCII
     * @return {@link Win32#DRIVE_FIXED} or another of these
     */
    public native int getDriveType(String root);

    /**
     * Gives the size of the volume that a path lies on.
     *
     * @param path an existing folder, ASCII
     * @return bytes; the caller's quota where there is one; 0 when it cannot be had
     */
    public native long getTotalDiskSpace(String path);

    /**
     * Gives the free room of the volume that a path lies on, whatever the caller's quota.
     *
     * @param path an existing folder, ASCII
     * @return bytes; 0 when it cannot be had
     */
    public native long getFreeDiskSpace(String path);

    /**
     * Gives the drives that have a letter.
     *
     * @return their roots, such as {@code C:\}; null when they cannot be had
     */
    public native String[] getLogicalDrives();

    // Physical disk serial numbers

    /**
     * Reports every physical disk whose serial number can be had, from WMI or from the disk itself.
     *
     * @param collector takes the disks: a {@link DiskCollector}, or an object with a method of that name and signature;
     *        those delivered before a failure stay delivered
     * @throws IOException when WMI fails
     */
    public native void getHardDiskSN(Object collector) throws IOException;

    // Logon, impersonation and credential validation

    /**
     * Logs an account on and lets the calling thread act as it, until {@link #impersonateToSelf} is called on the same
     * thread: the platform thread, so never on a virtual one. Privileges that logons take are switched on for the
     * process, and stay on.
     *
     * @param domain the account's domain or machine, ASCII; {@code .} for this machine
     * @param user the account, ASCII
     * @param password its password, ASCII
     * @return always empty
     * @throws IOException when the account cannot log on or be impersonated
     */
    public native String impersonateUser(String domain, String user, String password) throws IOException;

    /**
     * Ends the impersonation of the calling platform thread; without one it does nothing.
     *
     * @throws IOException when the system refuses, and then the thread must do no further work
     */
    public native void impersonateToSelf() throws IOException;

    /**
     * Checks an account's name and password, by every means there is, and keeps no logon. An account that cannot log on
     * is checked by connecting to the machine or domain of the name given, which first cancels a connection to it,
     * unless that is what {@link #getDomainName} gives; {@code .} and NetBIOS names are not. May block on the network.
     *
     * @param domain the account's domain; null counts as empty
     * @param user the account; null counts as empty
     * @param password its password; null counts as empty
     * @throws UtilException.AccountRestrictionException when name and password are right but the account may not log
     *         on
     * @throws IOException when they are not accepted, or cannot be checked
     */
    public native void validateUserNative(String domain, String user, String password)
            throws IOException, UtilException.AccountRestrictionException;

    /**
     * Presents an account's name and password to the network and drops the logon again. Whether it was accepted is not
     * told: ask {@link #validateUserNative} for that.
     *
     * @param domain the account's domain or machine
     * @param user the account
     * @param password its password
     * @return always empty
     */
    public native String networkAuthenticate(String domain, String user, String password);

    // SIDs, groups and account names

    /**
     * Gives the account that the thread acts as.
     *
     * @return its name without domain; empty when it cannot be had
     */
    public native String getUsername();

    /**
     * Gives the DNS domain of the computer.
     *
     * @return the domain; the computer's name when it is in none; {@code UNKNOWN-DOMAIN} when neither can be had
     */
    public native String getDomainName();

    /**
     * Gives the domain or machine of the account that the thread acts as.
     *
     * @return its name, right for ASCII names only; empty when it cannot be had
     */
    public native String getV6DomainName();

    /**
     * Gives the NetBIOS name of the computer.
     *
     * @return the name; empty when it cannot be had
     */
    public native String getNetBIOSComputerName();

    /**
     * Gives the security identifier of the account that the thread acts as.
     *
     * @return the identifier in the form {@code S-1-5-...}; empty when it cannot be had or has more than eight parts
     */
    public native String getSID();

    /**
     * Gives the security identifier of an account. May block on the network.
     *
     * @param domain the account's domain or machine; null or empty to search for the bare name
     * @param user the account or group; null gives an empty result
     * @return the identifier in the form {@code S-1-5-...}; empty when there is no such account, or the identifier has
     *         more than eight parts
     */
    public native String getSIDForUser(String domain, String user);

    /**
     * Adds the groups of an account to a collection, as strings: the domain's groups, then the local ones, those that
     * it is in by way of another group included. A failure adds nothing. May block on the network.
     *
     * @param server the machine to ask; null or empty for this one, which is also asked when the server cannot be
     *        reached
     * @param user the account
     * @param collector takes the groups through {@code boolean add(Object)}
     */
    public native void getDomainUserGroups(String server, String user, Object collector);

    /**
     * Gives those of some directory groups that the current user is <b>not</b> known to be a member of, directly or by
     * way of other groups: the groups that he is not in, those where the directory failed, and null elements. A group
     * that the directory does not know is left out. Names may hold any character: they are escaped in the filters of
     * the directory. Blocks on the network. Unlike the queries of WMI it starts no COM: without {@link #CoInitializeEx}
     * on the calling thread before it, the directory fails for every group.
     *
     * @param groups a list of group names, with the methods {@code boolean add(Object)}, {@code Object get(int)} and
     *        {@code int size()}, and a public constructor without arguments
     * @return a new list of the same class; null when the class lacks one of these
     */
    public native Object isMemberOf(Object groups);

    // Network drive connections

    /**
     * Connects to a network share, without a drive letter, for all threads of the logon session. An existing connection
     * to it is cancelled first; a remembered one counts as success. Blocks on the network.
     *
     * @param user the account, as {@code DOMAIN\name} or a name alone
     * @param password its password
     * @param remoteName the share, <code>\\server\share</code>
     * @throws IOException when it cannot be connected
     */
    public native void netUse(String user, String password, String remoteName) throws IOException;

    /**
     * Ends a connection to a network share, unless files on it are open.
     *
     * @param name the drive letter with its colon, or <code>\\server\share</code>
     * @throws IOException when it cannot be ended; code 2250 when there is none. Its tag names the connecting function
     */
    public native void removeNetUsed(String name) throws IOException;

    /**
     * Reports the current network connections, containers with what is in them. Names end after 1024 characters. The
     * call goes on for as long as the system's enumeration fails.
     *
     * @param collector takes the connections: a {@link NetworkCollector}, or an object with a method of that name and
     *        signature
     * @return true when the connections could be listed
     */
    public native boolean getNetUsed(Object collector);

    /**
     * Gives the account that a network connection was made with.
     *
     * @param path the drive letter with its colon, or <code>\\server\share</code>
     * @return the account
     * @throws IOException when there is no such connection
     */
    public native String getUserByNetUsedPath(String path) throws IOException;

    /**
     * Replaces the letter of a network drive by the share that it stands for.
     *
     * @param path a path
     * @return the path with <code>\\server\share</code> in front; the path as given when it is on no network drive
     */
    public native String getUNC(String path);

    /**
     * Tells whether the machine has a network connection, by modem, local network or proxy.
     *
     * @return false also when it cannot be found out
     */
    public native boolean isNetworkConnected();

    // WMI inventory queries

    /**
     * Gives manufacturer and model of the machine. Like the other queries of WMI it starts COM on the thread for the
     * call and may take seconds.
     *
     * @return both, separated by a blank, at most 1023 characters; empty when WMI knows neither
     * @throws IOException when WMI fails
     */
    public native String getSystemModel() throws IOException;

    /**
     * Reports every processor.
     *
     * @param collector takes the processors: a {@link ProcessorCollector}, or an object with a method of that name and
     *        signature
     * @throws IOException when WMI fails
     */
    public native void getProcessorInfo(Object collector) throws IOException;

    /**
     * Reports every memory module.
     *
     * @param collector takes the modules: a {@link MemoryCollector}, or an object with a method of that name and
     *        signature
     * @throws IOException when WMI fails
     */
    public native void getMemoryInfo(Object collector) throws IOException;

    /**
     * Gives the UUID of the machine.
     *
     * @return the UUID; empty when WMI does not know it
     * @throws IOException when WMI fails
     */
    public native String getMotherboardUUID() throws IOException;

    /**
     * Adds the installed features of a Windows server to a list, as {@link WinServerFeature}. A Windows that is no
     * server has none: either nothing is added there, or the query fails.
     *
     * @param list takes the features through {@code boolean add(Object)}
     * @throws IOException when WMI fails
     */
    public native void getWindowsInstalledFeatures(Object list) throws IOException;

    // Service pipes and event log

    /**
     * Gives the name of the backup service's pipe.
     *
     * @return {@code \\.\pipe\BACKUP}
     */
    public native String getPipeSlotPath();

    /**
     * Gives the name of the message pipe.
     *
     * @return {@code \\.\pipe\MESSAGE}
     */
    public native String getMessagePipeSlotPath();

    /**
     * Serves one client of a named pipe: blocks until a client connects, answers each of its messages with "OK", and
     * returns when it has closed its end. A message of no bytes or of more than 8192 ends the call unanswered.
     * Clients that come between two calls find no pipe.
     *
     * <p>The pipe has the system's default rights: the local system, administrators and this process's account may
     * write to it, and everybody, on other machines too, may open it for reading. A client that says nothing holds the
     * only instance, and this call, for as long as it likes. Where another process made a pipe of that name before,
     * clients may find that one.
     *
     * @param name the pipe, such as {@link #getMessagePipeSlotPath}
     * @return the last message, taken as bytes up to the first zero. <b>What {@link #sendPipe} sends is UTF-16, so of
     *         an English text only the first character comes out.</b> A message shorter than the one before it keeps
     *         that one's end behind it. Empty when the pipe could not be made, nothing came, or the client was there
     *         before the call waited for it
     */
    public native String connectPipe(String name);

    /**
     * Sends one message to a named pipe and reads the answer. While all instances of the pipe are busy it waits up to
     * 20 seconds for one, as often as another client is faster. Who made the pipe is not looked at: a stranger who
     * owned the name first gets the message, and may act as the account of the sender.
     *
     * @param name the pipe, such as {@link #getMessagePipeSlotPath}
     * @param message the message
     * @return 1 for an answer that sorts before "OK", such as "NO REPLY"; 0 for any other answer, "OK" included, and
     *         <b>also when the message could not be sent</b>
     */
    public native int sendPipe(String name, String message);

    /**
     * Writes an entry to the application event log. A failure is printed to the standard output.
     *
     * @param source the event source; unless it is registered the log shows the text with a remark
     * @param message the text; may be null
     * @param kind 1 for a warning, 2 for an error, anything else for information
     * @param alternativeEvent whether the entry has the event id 0x501D6 instead of 0x101
     */
    public native void createEventLog(String source, String message, int kind, boolean alternativeEvent);

    // Environment and OS facts

    /**
     * Gives an environment variable of the process, from the copy that the C runtime made when it started: it does not
     * see what {@link #setEnvironmentVariable} changes.
     *
     * @param name its name, in any case
     * @return its value; null when it is not set
     */
    public native String getEnv(String name);

    /**
     * Sets an environment variable of the process, for the processes that it starts natively. Neither {@link #getEnv}
     * nor {@link System#getenv(String)} sees the change.
     *
     * @param name its name
     * @param value its value; null removes it
     * @throws IOException when the system refuses
     */
    public native void setEnvironmentVariable(String name, String value) throws IOException;

    /**
     * Gives the path of a special folder.
     *
     * @param folderId a CSIDL value, such as 5 for the documents or 26 for the roaming application data
     * @return the path; null when there is no such folder
     */
    public native String getSHfolderPath(int folderId);

    /**
     * Gives the major version of Windows, as the system shows it to this process: programs that do not declare support
     * for a later one are told 6.2 (Windows 8).
     *
     * @return the number before the dot
     */
    public native int getMajorVersion();

    /**
     * Gives the minor version of Windows; see {@link #getMajorVersion}.
     *
     * @return the number behind the dot
     */
    public native int getMinorVersion();

    /**
     * Gives the kind of Windows.
     *
     * @return 1 for a workstation, 2 for a domain controller, 3 for another server; -1 when it is none of these
     */
    public native int getProductType();

    /**
     * Tells whether this is a 32-bit process on a 64-bit Windows. As WinUtil64.dll only runs in 64-bit processes, the
     * answer is always no, <b>also on a 64-bit Windows</b>.
     *
     * @return true in a 32-bit process on a 64-bit Windows
     */
    public native boolean isWindows64();

    /**
     * Switches the redirection of the system folder for 32-bit processes; in a 64-bit process there is nothing to
     * switch.
     *
     * @param enable whether redirection is to be on
     * @return what the system answers; true on a Windows without redirection
     */
    public native boolean Wow64EnableWow64FsRedirection(boolean enable);

    /**
     * Tells whether the process runs with administrator's rights; a member of the administrators who has not elevated
     * it does not count.
     *
     * @return true for an elevated process
     */
    public native boolean isUserAnAdmin();

    /**
     * Gives the country or region that is set for the user.
     *
     * @return the system's number (GEOID) for it; -1 when none is set
     */
    public native int getLocationID();

    /**
     * Reads one key from the console, without showing it and without waiting for Enter. Blocks until one is pressed.
     *
     * @return the character in the console's code page; 0 or 0xE0 announces a function or arrow key, whose code the
     *         next call gives; -1 without a console
     */
    public native int getConsoleChar();

    /**
     * Starts COM on the calling thread, the platform thread: never on a virtual one. Each call that answers 0 or 1 must
     * be followed by {@link #CoUninitialize} on the same thread.
     *
     * @param concurrencyModel {@link Win32#COINIT_MULTITHREADED} or {@link Win32#COINIT_APARTMENTTHREADED}
     * @return the HRESULT: 0 started, 1 was started already in this model, negative a failure (0x80010106: it is
     *         started in another model)
     */
    public native int CoInitializeEx(int concurrencyModel);

    /** Ends what {@link #CoInitializeEx} started on the calling platform thread. */
    public native void CoUninitialize();
}
