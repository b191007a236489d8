// Methods called with arguments that lead nowhere, on the system as it is: what is asked for is not there, or
// is none of it.
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

class Nowhere : public AnyMethodTest {
protected:
    Nowhere() {
        text = L"C:\\refused\\nowhere";
        object = java.list();
    }
};

#define NOWHERE(method)                                                                                 \
    RECIPE(Nowhere, method, nowhere) {                                                                  \
        examine([&] { return call<decltype(Java_com_qarvo_kel_util_WindowsUtil_##method)>(#method); }); \
    }

NOWHERE(getLongPathName)
NOWHERE(CovertEnvPathToFilePath)
NOWHERE(isMethodSupported)
NOWHERE(createFileNC__Ljava_lang_String_2III)
NOWHERE(openFile)
NOWHERE(isSupportExtendFileSize)
NOWHERE(setFileEndOfFileInfo)
NOWHERE(write__J_3BII)
NOWHERE(write__JLjava_nio_ByteBuffer_2III)
NOWHERE(read__J_3BII)
NOWHERE(read__JLjava_nio_ByteBuffer_2III)
NOWHERE(seek)
NOWHERE(skip)
NOWHERE(getFilePosition)
NOWHERE(getFileSize)
NOWHERE(closeFile)
NOWHERE(WriteHandle)
NOWHERE(getSectorSize)
NOWHERE(getPageSize)
NOWHERE(GetDirectBufferAddress)
NOWHERE(getAlignedByteBuffer)
NOWHERE(listWinFiles)
NOWHERE(WinFile)
NOWHERE(getFileAttr)
NOWHERE(mkdir)
NOWHERE(delete)
NOWHERE(renameTo)
NOWHERE(exists)
NOWHERE(isDir)
NOWHERE(lastModified)
NOWHERE(setFileAttrWithSecurityDescriptor)
NOWHERE(setFileACL)
NOWHERE(enableSecurityPrivilege)
NOWHERE(enableTakeOwnershipPrivilege)
NOWHERE(enableRestorePrivilege)
NOWHERE(enableBackupPrivilege)
NOWHERE(openEncryptFile)
NOWHERE(createDirectorySymbolicLink)
NOWHERE(createFileSymbolicLink)
NOWHERE(getLinkTarget)
NOWHERE(getLinkType)
NOWHERE(isLink)
NOWHERE(isDirectoryJunction)
NOWHERE(isLibrary)
NOWHERE(getLibraryFolders)
NOWHERE(getLibraryIcon)
NOWHERE(searchPathFromLibrary)
NOWHERE(setRegistryDWORD)
NOWHERE(setRegistryDWORDW)
NOWHERE(setRegistryString)
NOWHERE(setRegistryStringW)
NOWHERE(setRegistryMultiString)
NOWHERE(setRegistryBinary)
NOWHERE(getRegistryDWORD)
NOWHERE(getRegistryString)
NOWHERE(getRegistryBinary)
NOWHERE(getRegistryValueString)
NOWHERE(getRegistryValue)
NOWHERE(makeNewRegistryKey)
NOWHERE(loadRegistry)
NOWHERE(unloadRegistry)
NOWHERE(closeHandle)
NOWHERE(unloadUserProfile)
NOWHERE(waitForSingleObject)
NOWHERE(exitValue)
NOWHERE(endProcess)
NOWHERE(readHandle)
NOWHERE(getSessionId)
NOWHERE(getProcessCommandLineArguments)
NOWHERE(terminateProcessByProcessID)
NOWHERE(isServiceRunning)
NOWHERE(listNTFSPartitions)
NOWHERE(getVolumeName)
NOWHERE(isNTFSVolume)

RECIPE(WinUtilTest, getSystemVolumeDriveLetter, ofTheSystem) {
    answersInstead("MultiByteToWideChar", L"\"\"", comesEmpty);
    examine([&] { return NATIVE(getSystemVolumeDriveLetter)(); });
}

NOWHERE(getDriveType)
NOWHERE(getTotalDiskSpace)
NOWHERE(getFreeDiskSpace)
NOWHERE(getLogicalDrives)
NOWHERE(getUsername)
NOWHERE(getDomainName)
NOWHERE(getNetBIOSComputerName)
NOWHERE(getSIDForUser)
NOWHERE(netUse)
NOWHERE(removeNetUsed)
NOWHERE(getUserByNetUsedPath)
NOWHERE(getUNC)
NOWHERE(isNetworkConnected)
NOWHERE(getPipeSlotPath)
NOWHERE(getMessagePipeSlotPath)
NOWHERE(createEventLog)
NOWHERE(getEnv)
NOWHERE(getSHfolderPath)

RECIPE(WinUtilTest, getMajorVersion, ofTheSystem) {
    answersInstead("GetVersionExA", L"0", comesEmpty);
    examine([&] { return NATIVE(getMajorVersion)(); });
}

RECIPE(WinUtilTest, getMinorVersion, ofTheSystem) {
    answersInstead("GetVersionExA", L"0", comesEmpty);
    examine([&] { return NATIVE(getMinorVersion)(); });
}

NOWHERE(getProductType)
NOWHERE(isWindows64)
NOWHERE(Wow64EnableWow64FsRedirection)
NOWHERE(isUserAnAdmin)
NOWHERE(getLocationID)

}  // namespace
