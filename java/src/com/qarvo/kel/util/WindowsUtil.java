package com.qarvo.kel.util;

import java.io.FileNotFoundException;
import java.io.IOException;

public class WindowsUtil {
    /** Loads the DLL, once for all instances. */
    public WindowsUtil() {
        WinUtilLoader.load();
    }

    // Path forms
    public native String getLongPathName(String path);
    public native String CovertEnvPathToFilePath(String path);

    // Optional system functions
    public native boolean isMethodSupported(String library, String function);

    // Opening and creating files
    public native long createFileNC(String path, int access, int disposition, int flags, long size) throws IOException;
    public native long createFileNC(String path, int access, int disposition, int flags) throws IOException;
    public native long createFileN(String path, int access, int flags) throws IOException;
    public native long openFile(String path) throws IOException;
    public native boolean isSupportExtendFileSize(String path);
    public native boolean setFileEndOfFileInfo(long record, long endOfFile) throws IOException;

    // Reading, writing and positioning
    public native void write(long record, byte[] data, int offset, int length) throws IOException;
    public native void write(long record, java.nio.ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException;
    public native int read(long record, byte[] data, int offset, int length) throws IOException;
    public native int read(long record, java.nio.ByteBuffer buffer, int offset, int length, int sectorSize) throws IOException;
    public native long seek(long record, long position) throws IOException;
    public native long skip(long record, long distance) throws IOException;
    public native long getFilePosition(long record) throws IOException;
    public native long getFileSize(long record) throws IOException;
    public native void closeFile(long record);
    public native int WriteHandle(long handle, byte[] data, int offset, int length);

    // Sector size and aligned buffers
    public native int getSectorSize(String path);
    public native int getPageSize();
    public native long GetDirectBufferAddress(Object buffer);
    public native byte[] getAlignedByteBuffer(int size);

    // File records and directory listing
    public native void listWinFiles(Object collector, String dir, boolean withSecurity, boolean withAttributes, Object listener, boolean securityOnFiles) throws IOException;
    public native WinFileList.WinFile WinFile(String path, boolean withSecurity, boolean securityOnFiles) throws FileNotFoundException;
    public native int getFileAttr(String path);

    // File operations
    public native boolean mkdir(String path) throws IOException;
    public native boolean delete(String path);
    public native boolean renameTo(String from, String to);
    public native boolean exists(String path);
    public native boolean isDir(String path);
    public native long lastModified(String path);
    public native boolean setLastModified(String path, long milliseconds);

    // Security descriptors and access checks
    public native String getWinSecurityDescriptor(String path, int securityInformation, Object listener);
    public native void setFileAttr(String path, int attributes) throws IOException;
    public native boolean setFileAttrWithSecurityDescriptor(String path, int securityInformation, String descriptorText, int attributes) throws IOException;
    public native boolean isAccessRead(String path, String domain, String user, String password) throws IOException;
    public native boolean isAccessWrite(String path, String domain, String user, String password) throws IOException;
    public native void setFileACL(String path, String trustee, int accessPermissions, int accessMode);
    public native boolean enableSecurityPrivilege();
    public native boolean enableTakeOwnershipPrivilege();
    public native boolean enableRestorePrivilege();
    public native boolean enableBackupPrivilege();

    // Encrypted-file raw streaming
    public native long openEncryptFile(String path, long flags) throws IOException;
    public native int readEncryptFile(long context, java.io.PipedOutputStream out) throws IOException;
    public native int writeEncryptFile(long context, java.io.InputStream in) throws IOException;
    public native void closeEncryptFile(long context);
    public native void interruptEncryptFile();

    // Junctions and symbolic links
    public native boolean createJunctionPoint(String link, String target) throws IOException;
    public native boolean createDirectorySymbolicLink(String link, String target) throws IOException;
    public native boolean createFileSymbolicLink(String link, String target) throws IOException;
    public native String getLinkTarget(String path);
    public native int getLinkType(String path);
    public native boolean isLink(String path);
    public native boolean isDirectoryJunction(String path);

    // Shortcuts and libraries
    public native boolean isShortcut(String path);
    public native String getShortcutTarget(String path);
    public native boolean isLibrary(String path);
    @SuppressWarnings("rawtypes")
    public native void getLibraryFolders(String path, java.util.Collection collection);
    public native byte[] getLibraryIcon(String path);
    public native String searchPathFromLibrary(String name);
    @SuppressWarnings("rawtypes")
    public native void getSystemExcludeFolders(java.util.Collection collection);

    // Registry tree listing
    public native void listRegistry(Object collector, String rootName, String keyPath);

    // Registry values, keys and hives
    public native boolean setRegistryDWORD(String path, long value);
    public native boolean setRegistryDWORDW(String path, long value);
    public native boolean setRegistryString(String path, String text);
    public native boolean setRegistryStringW(String path, String text);
    public native boolean setRegistryMultiString(String path, String text);
    public native boolean setRegistryBinary(String path, byte[] data, int offset, int length);
    public native long getRegistryDWORD(String path);
    public native String getRegistryString(String path);
    public native byte[] getRegistryBinary(String path);
    public native String getRegistryValueString(String key, String valueName);
    public native String getRegistryValue(String path, int extraAccess, int expectedType);
    public native boolean makeNewRegistryKey(String rootName, String keyPath);
    public native boolean loadRegistry(String rootName, String keyName, String hiveFile);
    public native boolean unloadRegistry(String rootName, String keyName);

    // Launching processes as another user
    public native WinProcess createProcessAsUserN(String applicationName, String commandLine, Object reserved, String workingDirectory, String domain, String user, String password) throws IOException;
    public native WinProcess createProcessAsUserSession(String applicationName, String commandLine, Object reserved, String workingDirectory, int sessionId) throws IOException;

    // Process handles and inspection
    public native void closeHandle(long handleCell);
    public native void unloadUserProfile(long tokenCell, long profileCell);
    public native int waitForSingleObject(long handleCell);
    public native int exitValue(long handleCell) throws IOException;
    public native void endProcess(long handleCell) throws IOException;
    public native int readHandle(long handleCell, byte[] buffer, int offset, int length) throws IOException;
    public native int setPriority();
    public native int getSessionId();
    @SuppressWarnings("rawtypes")
    public native java.util.ArrayList getProcessInfo(String executableName) throws IOException;
    public native String getProcessCommandLineArguments(long processId, boolean verbose) throws IOException;
    public native boolean terminateProcessByProcessID(long processId, boolean verbose) throws IOException;
    public native boolean isServiceRunning(String serviceName) throws IOException;

    // Volumes and partitions
    public native void listPartitions(Object collector);
    public native void listNTFSPartitions(String diskPath, Object collector) throws IOException;
    public native String getVolumeName(String path);
    public native boolean isNTFSVolume(String path);
    public native String getSystemVolumeDriveLetter();
    public native String getVolumeLabel(String root);
    public native boolean setVolumeLabel(String root, String label);
    public native int getDriveType(String root);
    public native long getTotalDiskSpace(String path);
    public native long getFreeDiskSpace(String path);
    public native String[] getLogicalDrives();

    // Physical disk serial numbers
    public native void getHardDiskSN(Object collector) throws IOException;

    // Logon, impersonation and credential validation
    public native String impersonateUser(String domain, String user, String password) throws IOException;
    public native void impersonateToSelf() throws IOException;
    public native void validateUserNative(String domain, String user, String password) throws IOException, UtilException.AccountRestrictionException;
    public native String networkAuthenticate(String domain, String user, String password);

    // SIDs, groups and account names
    public native String getUsername();
    public native String getDomainName();
    public native String getV6DomainName();
    public native String getNetBIOSComputerName();
    public native String getSID();
    public native String getSIDForUser(String domain, String user);
    public native void getDomainUserGroups(String server, String user, Object collector);
    public native Object isMemberOf(Object groups);

    // Network drive connections
    public native void netUse(String user, String password, String remoteName) throws IOException;
    public native void removeNetUsed(String name) throws IOException;
    public native boolean getNetUsed(Object collector);
    public native String getUserByNetUsedPath(String path) throws IOException;
    public native String getUNC(String path);
    public native boolean isNetworkConnected();

    // WMI inventory queries
    public native String getSystemModel() throws IOException;
    public native void getProcessorInfo(Object collector) throws IOException;
    public native void getMemoryInfo(Object collector) throws IOException;
    public native String getMotherboardUUID() throws IOException;
    public native void getWindowsInstalledFeatures(Object list) throws IOException;

    // Service pipes and event log
    public native String getPipeSlotPath();
    public native String getMessagePipeSlotPath();
    public native String connectPipe(String name);
    public native int sendPipe(String name, String message);
    public native void createEventLog(String source, String message, int kind, boolean alternativeEvent);

    // Environment and OS facts
    public native String getEnv(String name);
    public native void setEnvironmentVariable(String name, String value) throws IOException;
    public native String getSHfolderPath(int folderId);
    public native int getMajorVersion();
    public native int getMinorVersion();
    public native int getProductType();
    public native boolean isWindows64();
    public native boolean Wow64EnableWow64FsRedirection(boolean enable);
    public native boolean isUserAnAdmin();
    public native int getLocationID();
    public native int getConsoleChar();
    public native int CoInitializeEx(int concurrencyModel);
    public native void CoUninitialize();
}
