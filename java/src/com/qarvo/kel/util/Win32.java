package com.qarvo.kel.util;

/**
 * Values of the Win32 interface that the native methods take or give as plain numbers, under the names that the system
 * has for them.
 */
public final class Win32 {
    /** Access: read. */
    public static final int GENERIC_READ = 0x80000000;
    /** Access: write. */
    public static final int GENERIC_WRITE = 0x40000000;
    /** Access: everything. */
    public static final int GENERIC_ALL = 0x10000000;
    /** Access: delete or rename. */
    public static final int DELETE = 0x00010000;
    /** Access: read owner, group and DACL. */
    public static final int READ_CONTROL = 0x00020000;
    /** Access: change the DACL. */
    public static final int WRITE_DAC = 0x00040000;
    /** Access: change the owner. */
    public static final int WRITE_OWNER = 0x00080000;

    /** Disposition: make a new file; fails when there is one. */
    public static final int CREATE_NEW = 1;
    /** Disposition: make a file, emptying one that is there. */
    public static final int CREATE_ALWAYS = 2;
    /** Disposition: open a file that must be there. */
    public static final int OPEN_EXISTING = 3;
    /** Disposition: open a file, making it when it is missing. */
    public static final int OPEN_ALWAYS = 4;
    /** Disposition: open a file that must be there, and empty it; needs write access. */
    public static final int TRUNCATE_EXISTING = 5;

    /** Open flag: a write returns when it has reached the disk. */
    public static final int FILE_FLAG_WRITE_THROUGH = 0x80000000;
    /** Open flag: past the system's cache; positions, sizes and addresses must be multiples of the sector size. */
    public static final int FILE_FLAG_NO_BUFFERING = 0x20000000;
    /** Open flag: tells the cache that access will be here and there. */
    public static final int FILE_FLAG_RANDOM_ACCESS = 0x10000000;
    /** Open flag: tells the cache that access will be from start to end. */
    public static final int FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
    /** Open flag: the file goes when its last handle is closed. */
    public static final int FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;
    /** Open flag: for backup and restore; also what makes it possible to open a directory. */
    public static final int FILE_FLAG_BACKUP_SEMANTICS = 0x02000000;
    /** Open flag: the link itself, not what it leads to. */
    public static final int FILE_FLAG_OPEN_REPARSE_POINT = 0x00200000;

    /** Attribute: read-only. */
    public static final int FILE_ATTRIBUTE_READONLY = 0x1;
    /** Attribute: hidden. */
    public static final int FILE_ATTRIBUTE_HIDDEN = 0x2;
    /** Attribute: part of the system. */
    public static final int FILE_ATTRIBUTE_SYSTEM = 0x4;
    /** Attribute: directory; cannot be set. */
    public static final int FILE_ATTRIBUTE_DIRECTORY = 0x10;
    /** Attribute: changed since the last backup. */
    public static final int FILE_ATTRIBUTE_ARCHIVE = 0x20;
    /** Attribute: none of the others; only valid alone. */
    public static final int FILE_ATTRIBUTE_NORMAL = 0x80;
    /** Attribute: temporary, kept in memory while there is room. */
    public static final int FILE_ATTRIBUTE_TEMPORARY = 0x100;
    /** Attribute: sparse; cannot be set. */
    public static final int FILE_ATTRIBUTE_SPARSE_FILE = 0x200;
    /** Attribute: reparse point (link, mounted volume, ...); cannot be set. */
    public static final int FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
    /** Attribute: compressed by the file system. */
    public static final int FILE_ATTRIBUTE_COMPRESSED = 0x800;
    /** Attribute: the data is not at hand at once. */
    public static final int FILE_ATTRIBUTE_OFFLINE = 0x1000;
    /** Attribute: left out of the content index. */
    public static final int FILE_ATTRIBUTE_NOT_CONTENT_INDEXED = 0x2000;
    /** Attribute: encrypted by the file system. */
    public static final int FILE_ATTRIBUTE_ENCRYPTED = 0x4000;
    /** In place of an attribute word: none could be read; none is to be set. */
    public static final int INVALID_FILE_ATTRIBUTES = -1;

    /** Security information: the owner. */
    public static final int OWNER_SECURITY_INFORMATION = 0x1;
    /** Security information: the primary group. */
    public static final int GROUP_SECURITY_INFORMATION = 0x2;
    /** Security information: the access rights. */
    public static final int DACL_SECURITY_INFORMATION = 0x4;
    /** Security information: the audit settings; needs the security privilege. */
    public static final int SACL_SECURITY_INFORMATION = 0x8;

    /** Access mode: adds to what the account has. */
    public static final int GRANT_ACCESS = 1;
    /** Access mode: replaces what the account has. */
    public static final int SET_ACCESS = 2;
    /** Access mode: denies. */
    public static final int DENY_ACCESS = 3;
    /** Access mode: removes what the account has. */
    public static final int REVOKE_ACCESS = 4;

    /** Raw encrypted files: open for export, that is for backup; the absence of the import flags. */
    public static final long OPEN_FOR_EXPORT = 0;
    /** Raw encrypted files: open for import, that is for restore. */
    public static final long CREATE_FOR_IMPORT = 1;
    /** Raw encrypted files: import of a directory. */
    public static final long CREATE_FOR_DIR = 2;
    /** Raw encrypted files: import over a hidden file. */
    public static final long OVERWRITE_HIDDEN = 4;

    /** Registry access: the view of 64-bit programs. */
    public static final int KEY_WOW64_64KEY = 0x100;
    /** Registry access: the view of 32-bit programs. */
    public static final int KEY_WOW64_32KEY = 0x200;
    /** Registry value: text. */
    public static final int REG_SZ = 1;
    /** Registry value: text with environment variables in it. */
    public static final int REG_EXPAND_SZ = 2;

    /** Drive type: unknown. */
    public static final int DRIVE_UNKNOWN = 0;
    /** Drive type: the path is no root, or nothing is there. */
    public static final int DRIVE_NO_ROOT_DIR = 1;
    /** Drive type: removable, such as a memory stick. */
    public static final int DRIVE_REMOVABLE = 2;
    /** Drive type: fixed. */
    public static final int DRIVE_FIXED = 3;
    /** Drive type: on the network. */
    public static final int DRIVE_REMOTE = 4;
    /** Drive type: CD, DVD and the like. */
    public static final int DRIVE_CDROM = 5;
    /** Drive type: in memory. */
    public static final int DRIVE_RAMDISK = 6;

    /** Exit code of a process that is still running. */
    public static final int STILL_ACTIVE = 259;

    /** Concurrency model of COM: any thread. */
    public static final int COINIT_MULTITHREADED = 0;
    /** Concurrency model of COM: the calling thread only. */
    public static final int COINIT_APARTMENTTHREADED = 2;

    private Win32() {
    }
}
