#include "documented_failures.h"

#include <algorithm>
#include <iterator>

namespace testbed {

namespace {

constexpr char io[] = "java/io/IOException";
constexpr char notFound[] = "java/io/FileNotFoundException";
constexpr char sharing[] = "com/qarvo/dov/io/SharingViolationException";
constexpr char diskFull[] = "com/qarvo/dov/io/DiskFullException";
constexpr char security[] = "java/lang/SecurityException";
constexpr char runtime[] = "java/lang/RuntimeException";
constexpr char restriction[] = "com/qarvo/kel/util/UtilException$AccountRestrictionException";

struct Documented {
    const char* method;
    std::vector<const char*> exceptions;
    std::vector<const wchar_t*> values;  // that say "failed", or cannot be told from it
};

const Documented documented[] = {
    {"getLongPathName", {}, {L"\"C:\\refused\\nowhere\""}},
    {"CovertEnvPathToFilePath", {runtime}, {}},
    {"isMethodSupported", {}, {L"false"}},
    {"createFileNC__Ljava_lang_String_2IIIJ", {notFound, sharing, diskFull, io}, {}},
    {"createFileNC__Ljava_lang_String_2III", {notFound, sharing, diskFull, io}, {}},
    {"createFileN", {notFound, sharing, diskFull, io}, {}},
    {"openFile", {notFound, sharing, diskFull, io}, {}},
    {"isSupportExtendFileSize", {}, {L"false"}},
    {"setFileEndOfFileInfo", {io}, {}},
    {"write__J_3BII", {diskFull, io}, {}},
    {"write__JLjava_nio_ByteBuffer_2III", {diskFull, io}, {}},
    {"read__J_3BII", {io}, {L"-2"}},
    {"read__JLjava_nio_ByteBuffer_2III", {io}, {L"-2"}},
    {"seek", {io}, {}},
    {"skip", {io}, {}},
    {"getFilePosition", {io}, {}},
    {"getFileSize", {io}, {}},
    {"closeFile", {}, {}},
    {"WriteHandle", {}, {L"-1"}},
    {"getSectorSize", {}, {L"0"}},
    {"getPageSize", {}, {}},
    {"GetDirectBufferAddress", {}, {L"0"}},
    {"getAlignedByteBuffer", {}, {}},
    {"listWinFiles", {io}, {}},
    {"WinFile", {notFound}, {}},
    {"getFileAttr", {}, {L"-1"}},
    {"mkdir", {diskFull, security}, {L"false"}},
    {"delete", {}, {L"false"}},
    {"renameTo", {}, {L"false"}},
    {"exists", {}, {L"false"}},
    {"isDir", {}, {L"false"}},
    {"lastModified", {}, {L"0"}},
    {"setLastModified", {}, {L"false"}},
    {"getWinSecurityDescriptor", {}, {L"\"\""}},
    {"setFileAttr", {io}, {}},
    {"setFileAttrWithSecurityDescriptor", {io}, {}},
    {"isAccessRead", {io}, {}},
    {"isAccessWrite", {io}, {}},
    {"setFileACL", {}, {L""}},
    {"enableSecurityPrivilege", {}, {L"false"}},
    {"enableTakeOwnershipPrivilege", {}, {L"false"}},
    {"enableRestorePrivilege", {}, {L"false"}},
    {"enableBackupPrivilege", {}, {L"false"}},
    {"openEncryptFile", {io}, {}},
    {"readEncryptFile", {runtime, io}, {L"-1"}},
    {"writeEncryptFile", {io}, {}},
    {"closeEncryptFile", {}, {}},
    {"interruptEncryptFile", {}, {}},
    {"createJunctionPoint", {io}, {}},
    {"createDirectorySymbolicLink", {io}, {}},
    {"createFileSymbolicLink", {io}, {}},
    {"getLinkTarget", {}, {L"\"\"", L"null"}},
    {"getLinkType", {}, {L"255"}},
    {"isLink", {}, {L"false"}},
    {"isDirectoryJunction", {}, {L"false"}},
    {"isShortcut", {}, {L"false"}},
    {"getShortcutTarget", {}, {L"\"\""}},
    {"isLibrary", {}, {}},
    {"getLibraryFolders", {}, {L""}},
    {"getLibraryIcon", {}, {L"null"}},
    {"searchPathFromLibrary", {}, {L"\"\""}},
    {"getSystemExcludeFolders", {}, {}},
    {"listRegistry", {}, {}},
    {"setRegistryDWORD", {}, {L"false"}},
    {"setRegistryDWORDW", {}, {L"false"}},
    {"setRegistryString", {}, {L"false"}},
    {"setRegistryStringW", {}, {L"false"}},
    {"setRegistryMultiString", {}, {L"false"}},
    {"setRegistryBinary", {}, {L"false"}},
    {"getRegistryDWORD", {}, {L"-1"}},
    {"getRegistryString", {}, {L"\"\""}},
    {"getRegistryBinary", {}, {L"0 elements"}},
    {"getRegistryValueString", {}, {L"\"\""}},
    {"getRegistryValue", {}, {L"\"\""}},
    {"makeNewRegistryKey", {}, {L"false"}},
    {"loadRegistry", {}, {L"false"}},
    {"unloadRegistry", {}, {L"false"}},
    {"createProcessAsUserN", {io}, {}},
    {"createProcessAsUserSession", {io}, {}},
    {"closeHandle", {}, {}},
    {"unloadUserProfile", {}, {}},
    {"waitForSingleObject", {}, {L"-1"}},
    {"exitValue", {io}, {}},
    {"endProcess", {io}, {}},
    {"readHandle", {io}, {}},
    {"setPriority", {}, {L"0"}},
    {"getSessionId", {}, {L"0"}},
    {"getProcessInfo", {io}, {}},
    {"getProcessCommandLineArguments", {io}, {}},
    {"terminateProcessByProcessID", {io}, {}},
    {"isServiceRunning", {io}, {}},
    {"listPartitions", {}, {}},
    {"listNTFSPartitions", {notFound, io}, {}},
    {"getVolumeName", {}, {L"\"\""}},
    {"isNTFSVolume", {}, {L"false"}},
    {"getSystemVolumeDriveLetter", {}, {L"null"}},
    {"getVolumeLabel", {}, {L"\"\""}},
    {"setVolumeLabel", {}, {L"false"}},
    {"getDriveType", {}, {L"1"}},
    {"getTotalDiskSpace", {}, {L"0"}},
    {"getFreeDiskSpace", {}, {L"0"}},
    {"getLogicalDrives", {}, {L"null"}},
    {"getHardDiskSN", {io}, {}},
    {"impersonateUser", {io}, {}},
    {"impersonateToSelf", {io}, {}},
    {"validateUserNative", {restriction, io}, {}},
    {"networkAuthenticate", {}, {L"\"\""}},
    {"getUsername", {}, {L"\"\""}},
    {"getDomainName", {}, {L"\"UNKNOWN-DOMAIN\""}},
    {"getV6DomainName", {}, {L"\"\""}},
    {"getNetBIOSComputerName", {}, {L"\"\""}},
    {"getSID", {}, {L"\"\""}},
    {"getSIDForUser", {}, {L"\"\""}},
    {"getDomainUserGroups", {}, {}},
    {"isMemberOf", {}, {L"null"}},
    {"netUse", {io}, {}},
    {"removeNetUsed", {io}, {}},
    {"getNetUsed", {}, {L"false"}},
    {"getUserByNetUsedPath", {io}, {}},
    {"getUNC", {}, {L"\"C:\\refused\\nowhere\""}},
    {"isNetworkConnected", {}, {L"false"}},
    {"getSystemModel", {io}, {}},
    {"getProcessorInfo", {io}, {}},
    {"getMemoryInfo", {io}, {}},
    {"getMotherboardUUID", {io}, {}},
    {"getWindowsInstalledFeatures", {io}, {}},
    {"getPipeSlotPath", {}, {}},
    {"getMessagePipeSlotPath", {}, {}},
    {"connectPipe", {}, {L"\"\""}},
    {"sendPipe", {}, {L"0"}},
    {"createEventLog", {}, {L""}},
    {"getEnv", {}, {L"null"}},
    {"setEnvironmentVariable", {io}, {}},
    {"getSHfolderPath", {}, {L"null"}},
    {"getMajorVersion", {}, {}},
    {"getMinorVersion", {}, {}},
    {"getProductType", {}, {L"-1"}},
    {"isWindows64", {}, {L"false"}},
    {"Wow64EnableWow64FsRedirection", {}, {L"false"}},
    {"isUserAnAdmin", {}, {L"false"}},
    {"getLocationID", {}, {L"-1"}},
    {"getConsoleChar", {}, {L"-1"}},
    {"CoInitializeEx", {}, {}},
    {"CoUninitialize", {}, {}},
};

}  // namespace

Promises documentedFailures(const std::string& method) {
    Promises promises;
    const auto found =
        std::ranges::find_if(documented, [&](const Documented& each) { return each.method == method; });
    if (found != std::end(documented)) {
        promises.exceptions.insert(found->exceptions.begin(), found->exceptions.end());
        promises.failureValues.insert(found->values.begin(), found->values.end());
    }
    return promises;
}

std::vector<std::string> documentedMethods() {
    std::vector<std::string> methods;
    for (const Documented& each : documented) {
        methods.emplace_back(each.method);
    }
    return methods;
}

}  // namespace testbed
