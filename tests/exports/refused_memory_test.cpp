// Every native method with each of its arguments refused: the virtual machine has no memory for the
// characters of a string or the elements of an array, or the library has none for its copy. The table below
// says what each method then does; none may give an answer that it does not have.
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <set>

#include "any_method.h"
#include "pe_image.h"

namespace {

using namespace testbed;
using ::testing::IsEmpty;

constexpr wchar_t anything[] = L"*";

// What a method does without memory: the exception, and the value where none is raised.
struct Outcome {
    const char* description;
    Thrown thrown;
    std::wstring value = anything;
};

Outcome outOfMemory() {
    return {"OutOfMemoryError", {"java/lang/OutOfMemoryError", systemText(ERROR_NOT_ENOUGH_MEMORY)}};
}

Outcome raises(std::wstring message, const char* exceptionClass = "java/io/IOException") {
    return {exceptionClass, {exceptionClass, std::move(message)}};
}

// "[tag] (8) system text"
Outcome raisesWithTag(const wchar_t* tag, const char* exceptionClass = "java/io/IOException") {
    return raises(errorMessage(tag, ERROR_NOT_ENOUGH_MEMORY), exceptionClass);
}

// The form of the methods that put a text in front: "text tag (8) system text"
Outcome raisesBehind(const std::wstring& start) {
    return raises(start + L" (8) " + systemText(ERROR_NOT_ENOUGH_MEMORY));
}

Outcome answers(std::wstring value) {
    return {"its failure value", nothingThrown(), std::move(value)};
}

// How many of its arguments a method takes in which way, and how many blocks of its own it needs before it
// begins.
struct Needs {
    std::size_t wide = 0;      // GetStringChars
    std::size_t narrow = 0;    // GetStringUTFChars
    std::size_t elements = 0;  // GetByteArrayElements
    std::size_t blocks = 0;    // malloc
};

class RefusedMemory : public AnyMethodTest {
protected:
    JavaObject collector() { return java.list(); }

    // Makes the method's call once for each of its needs, with that one refused, and compares what it does.
    void check(const char* name, const Needs& needs, const Outcome& outcome,
               const std::function<std::wstring()>& method) {
        const auto refuseJava = [&](const char* function, std::size_t count) {
            for (std::size_t k = 1; k <= count; ++k) {
                const std::size_t before = java.count(function);
                java.failCall(function, k);
                judge(name, function, k, outcome, method());
                EXPECT_EQ(java.count(function) - before, k) << name << ": " << function << " was not refused";
            }
        };
        refuseJava("GetStringChars", needs.wide);
        refuseJava("GetStringUTFChars", needs.narrow);
        refuseJava("GetByteArrayElements", needs.elements);
        for (std::size_t k = 1; k <= needs.blocks; ++k) {
            const auto refused = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);
            judge(name, "malloc", k, outcome, method());
            EXPECT_GE(refused.count(), k) << name << ": block " << k << " was not refused";
        }
        Row& row = table()[name];
        row.outcome += (row.outcome.empty() ? "" : ", or ") + std::string(outcome.description);
        row.cases += needs.wide + needs.narrow + needs.elements + needs.blocks;
    }

    // Where a failure of the system gives the same answer, only the call that was not made shows the refusal.
    void expectNotAsked(std::initializer_list<const char*> functions) {
        for (const char* function : functions) {
            EXPECT_EQ(system().count(function), 0u) << function;
        }
    }

    // For methods that take no text and no array.
    static void notConcerned(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            table()[name] = {"takes none", 0};
        }
    }

    static void TearDownTestSuite() {
        std::size_t cases = 0;
        std::ofstream file("refused_memory.txt");
        for (const auto& [name, row] : table()) {
            file << name << ": " << row.outcome << ", " << row.cases << "\n";
            cases += row.cases;
        }
        file << "Refused arguments: " << table().size() << " methods, " << cases << " cases, " << violations
             << " violations\n";
        std::cout << "Refused arguments: " << table().size() << " methods, " << cases << " cases, "
                  << violations << " violations\n";
    }

    struct Row {
        std::string outcome;
        std::size_t cases = 0;
    };
    static std::map<std::string, Row>& table() {
        static std::map<std::string, Row> rows;
        return rows;
    }

private:
    void judge(const char* name, const char* function, std::size_t k, const Outcome& outcome,
               const std::wstring& value) {
        const Thrown thrown = java.takeException();
        const bool right = thrown == outcome.thrown && (outcome.value == anything || value == outcome.value);
        violations += right ? 0 : 1;
        EXPECT_TRUE(right) << name << ", " << function << " number " << k
                           << " refused: " << ::testing::PrintToString(thrown) << ", " << toUtf8(value)
                           << "; wanted " << ::testing::PrintToString(outcome.thrown) << ", "
                           << toUtf8(outcome.value);
    }

    static inline std::size_t violations = 0;
};

// ROW(renameTo, outOfMemory(), .wide = 2) calls the method with arguments made for its signature, once for
// each need.
#define ROW(method, outcome, ...)               \
    check(#method, Needs{__VA_ARGS__}, outcome, \
          [&] { return call<decltype(Java_com_qarvo_kel_util_WindowsUtil_##method)>(#method); })

TEST_F(RefusedMemory, OfPathFormsAndOptionalFunctions) {
    ROW(getLongPathName, answers(L"\"C:\\refused\""), .wide = 1, .blocks = 1);
    expectNotAsked({"GetLongPathNameW"});
    ROW(CovertEnvPathToFilePath, raisesWithTag(L"CovertEnvPathToFilePath", "java/lang/RuntimeException"),
        .wide = 1, .blocks = 1);
    ROW(isMethodSupported, outOfMemory(), .narrow = 2);
}

TEST_F(RefusedMemory, OfOpenFiles) {
    const std::wstring path = folder() / L"file.txt";
    writeFile(path, "content");
    number = NATIVE(openFile)(path);

    ROW(write__J_3BII, raisesWithTag(L"WriteFile"), .elements = 1);
    ROW(read__J_3BII, raisesWithTag(L"ReadFile"), .elements = 1);

    NATIVE(closeFile)(number);
    EXPECT_EQ(readFile(path), "content");
    notConcerned({"write__JLjava_nio_ByteBuffer_2III", "read__JLjava_nio_ByteBuffer_2III", "seek", "skip",
                  "getFilePosition", "getFileSize", "closeFile", "WriteHandle", "setFileEndOfFileInfo",
                  "getPageSize", "GetDirectBufferAddress", "getAlignedByteBuffer"});
}

TEST_F(RefusedMemory, OfOpeningFiles) {
    const auto open = system().answer("CreateFileW", ~0ull, ERROR_FILE_NOT_FOUND);
    ROW(createFileNC__Ljava_lang_String_2IIIJ, raisesWithTag(L"createFileN"), .wide = 1, .blocks = 2);
    ROW(createFileNC__Ljava_lang_String_2III, raisesWithTag(L"createFileN"), .wide = 1, .blocks = 2);
    ROW(createFileN, raisesWithTag(L"createFileN"), .wide = 1, .blocks = 2);
    ROW(openFile, raisesWithTag(L"openFile"), .wide = 1, .blocks = 2);
    ROW(isSupportExtendFileSize, outOfMemory(), .wide = 1, .blocks = 2);
    ROW(getSectorSize, outOfMemory(), .wide = 1);
}

TEST_F(RefusedMemory, OfRecordsAndListing) {
    object = collector();
    ROW(listWinFiles, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(WinFile, raises(L"", "java/io/FileNotFoundException"), .wide = 1, .blocks = 2);
    ROW(getFileAttr, outOfMemory(), .wide = 1);
    // No attribute word, and known to callers: what the library's own memory is missing for.
    ROW(getFileAttr, answers(L"-1"), .blocks = 1);
}

// Behind the copy of its path each of these makes the long form of it, for the second attempt.
TEST_F(RefusedMemory, OfFileOperations) {
    const auto make = system().answer("CreateDirectoryW", FALSE, ERROR_PATH_NOT_FOUND);
    ROW(mkdir, raisesWithTag(L"createDir", "java/lang/SecurityException"), .wide = 1, .blocks = 1);
    ROW(delete, outOfMemory(), .wide = 1, .blocks = 2);
    ROW(renameTo, outOfMemory(), .wide = 2, .blocks = 2);
    ROW(exists, outOfMemory(), .wide = 1, .blocks = 2);
    ROW(isDir, outOfMemory(), .wide = 1, .blocks = 2);
    ROW(lastModified, outOfMemory(), .wide = 1, .blocks = 2);
    ROW(setLastModified, outOfMemory(), .wide = 1, .blocks = 2);
}

TEST_F(RefusedMemory, OfSecurityDescriptorsAndAccessChecks) {
    ROW(getWinSecurityDescriptor, outOfMemory(), .wide = 1, .blocks = 2);
    ROW(setFileAttr, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(setFileAttrWithSecurityDescriptor, raisesWithTag(L"setFileAttrWithSecurityDescriptor"), .wide = 2,
        .blocks = 2);
    ROW(isAccessRead, raisesWithTag(L"CheckAccessToFile"), .wide = 1, .narrow = 3, .blocks = 1);
    ROW(isAccessWrite, raisesWithTag(L"CheckAccessToFile"), .wide = 1, .narrow = 3, .blocks = 1);
    // It tells nobody how it ended, whatever ended it.
    ROW(setFileACL, answers(L""), .wide = 2);
    expectNotAsked({"GetNamedSecurityInfoW", "SetNamedSecurityInfoW"});
    notConcerned({"enableSecurityPrivilege", "enableTakeOwnershipPrivilege", "enableRestorePrivilege",
                  "enableBackupPrivilege"});
}

TEST_F(RefusedMemory, OfEncryptedFiles) {
    ROW(openEncryptFile, raisesWithTag(L"OpenEncryptedFileRawW"), .wide = 1);
    // The system asks for one block, and makes a file of what it was given until it is told of an error.
    DWORD told = ERROR_SUCCESS;
    const auto import =
        REPLACE(WriteEncryptedFileRaw, [&](PFE_IMPORT_FUNC callback, PVOID context, PVOID) -> DWORD {
            BYTE block[16];
            ULONG length = sizeof(block);
            told = callback(block, context, &length);
            EXPECT_EQ(length, 0u);
            return ERROR_SUCCESS;
        });
    object = java.collector("read", "([BII)I", [](const Arguments&) { return jint{8}; });
    ROW(writeEncryptFile, raisesWithTag(L"WriteEncryptedFileRaw"), .elements = 1);
    EXPECT_EQ(told, DWORD{ERROR_NOT_ENOUGH_MEMORY});
    notConcerned({"readEncryptFile", "closeEncryptFile", "interruptEncryptFile"});
}

TEST_F(RefusedMemory, OfLinks) {
    ROW(createJunctionPoint, raisesWithTag(L"CreateJunctionPoint"), .wide = 2, .blocks = 2);
    ROW(createDirectorySymbolicLink, raisesWithTag(L"CreateDirectorySymbolicLink"), .wide = 2, .blocks = 2);
    ROW(createFileSymbolicLink, raisesWithTag(L"CreateFileSymbolicLink"), .wide = 2, .blocks = 2);
    ROW(getLinkTarget, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(getLinkType, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(isLink, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(isDirectoryJunction, outOfMemory(), .wide = 1, .blocks = 1);
}

TEST_F(RefusedMemory, OfShortcutsAndLibraries) {
    object = collector();
    ROW(isShortcut, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(getShortcutTarget, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(isLibrary, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(getLibraryFolders, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(getLibraryIcon, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(searchPathFromLibrary, outOfMemory(), .wide = 1, .blocks = 1);
    notConcerned({"getSystemExcludeFolders"});
}

// The family says of every failure only that it was one.
TEST_F(RefusedMemory, OfRegistryValuesKeysAndHives) {
    // Names that lead to a key, so that only the refusal keeps a method from asking for it.
    text = LR"(HKEY_CURRENT_USER\WinUtilRefused\value)";
    object = collector();
    ROW(listRegistry, outOfMemory(), .narrow = 2);
    ROW(setRegistryDWORD, answers(L"false"), .narrow = 1);
    ROW(setRegistryDWORDW, answers(L"false"), .wide = 1, .blocks = 1);
    ROW(setRegistryString, answers(L"false"), .narrow = 2);
    ROW(setRegistryStringW, answers(L"false"), .wide = 2, .blocks = 1);
    ROW(setRegistryMultiString, answers(L"false"), .narrow = 2);
    ROW(setRegistryBinary, answers(L"false"), .narrow = 1, .elements = 1);
    ROW(getRegistryDWORD, answers(L"-1"), .narrow = 1);
    ROW(getRegistryString, answers(L"\"\""), .narrow = 1);
    ROW(getRegistryBinary, answers(L"0 elements"), .narrow = 1);
    ROW(getRegistryValueString, answers(L"\"\""), .narrow = 2);
    ROW(getRegistryValue, answers(L"\"\""), .wide = 1, .blocks = 1);
    text = L"HKEY_CURRENT_USER";
    ROW(makeNewRegistryKey, answers(L"false"), .wide = 2, .blocks = 2);
    ROW(loadRegistry, answers(L"false"), .wide = 3, .blocks = 3);
    ROW(unloadRegistry, answers(L"false"), .wide = 2, .blocks = 2);
    expectNotAsked({"RegOpenKeyExA", "RegOpenKeyExW", "RegCreateKeyExA", "RegCreateKeyExW", "RegSetValueExA",
                    "RegSetValueExW", "RegLoadKeyW", "RegUnLoadKeyW"});
}

TEST_F(RefusedMemory, OfLaunches) {
    // The cells of a failed launch are let go, five or three of them in each.
    ledger().expectLeft("calloc", 6 * 5 + 3 * 3);
    ROW(createProcessAsUserN, raisesBehind(L"[WindowsUtil:createProcessAsUserN] "), .wide = 6);
    ROW(createProcessAsUserSession, raisesBehind(L"[WindowsUtil:createProcessAsUserSession] "), .wide = 3);
}

TEST_F(RefusedMemory, OfProcessesAndServices) {
    HANDLE cell = nullptr;
    java.defineConstructor("java/util/ArrayList", "()V");
    java.defineMethod("java/util/ArrayList", "add", "(Ljava/lang/Object;)Z",
                      [](const Arguments&) { return true; });
    number = reinterpret_cast<jlong>(&cell);
    ROW(readHandle, raisesBehind(L" [WindowsUtil:readHandle]"), .elements = 1);
    ROW(getProcessInfo, raisesBehind(L"[WindowsUtil:getProcessInfo] "), .wide = 1, .blocks = 1);
    ROW(isServiceRunning, raisesBehind(L"[WindowsUtil:getServiceStatus] "), .wide = 1, .blocks = 1);
    notConcerned({"closeHandle", "unloadUserProfile", "waitForSingleObject", "exitValue", "endProcess",
                  "setPriority", "getSessionId", "getProcessCommandLineArguments",
                  "terminateProcessByProcessID"});
}

TEST_F(RefusedMemory, OfVolumesAndDisks) {
    object = collector();
    ROW(listNTFSPartitions, raises(systemText(ERROR_NOT_ENOUGH_MEMORY)), .wide = 1);
    ROW(getVolumeName, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(isNTFSVolume, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(getVolumeLabel, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(setVolumeLabel, outOfMemory(), .narrow = 2);
    ROW(getDriveType, outOfMemory(), .narrow = 1);
    ROW(getTotalDiskSpace, outOfMemory(), .narrow = 1);
    ROW(getFreeDiskSpace, outOfMemory(), .narrow = 1);
    notConcerned({"listPartitions", "getSystemVolumeDriveLetter", "getLogicalDrives", "getHardDiskSN"});
}

TEST_F(RefusedMemory, OfLogons) {
    ROW(impersonateUser, raisesBehind(L" [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser] "),
        .narrow = 3);
    ROW(validateUserNative, raisesBehind(L" "), .wide = 3, .blocks = 3);
    // What it answers says nothing in any case.
    ROW(networkAuthenticate, answers(L"\"\""), .wide = 3, .blocks = 3);
    expectNotAsked({"LogonUserW"});
    notConcerned({"impersonateToSelf"});
}

TEST_F(RefusedMemory, OfAccountNamesAndGroups) {
    object = collector();
    ROW(getSIDForUser, outOfMemory(), .wide = 2, .blocks = 2);
    ROW(getDomainUserGroups, outOfMemory(), .wide = 2, .blocks = 2);
    notConcerned({"getUsername", "getDomainName", "getV6DomainName", "getNetBIOSComputerName", "getSID"});
}

// The string is not an argument but an element of one: a group whose name cannot be had is one whose
// membership was not established.
TEST_F(RefusedMemory, OfTheElementsOfAList) {
    std::size_t listed = 0;
    const JavaObject group = java.string(text);
    java.defineConstructor("test/Groups", "()V");
    java.defineMethod("test/Groups", "size", "()I", [](const Arguments&) { return jint{1}; });
    java.defineMethod("test/Groups", "get", "(I)Ljava/lang/Object;", [&](const Arguments&) { return group; });
    java.defineMethod("test/Groups", "add", "(Ljava/lang/Object;)Z", [&](const Arguments& arguments) {
        listed += arguments[0].object() == group ? 1 : 0;
        return true;
    });

    check("isMemberOf", {.wide = 1}, answers(L"1 listed"), [&] {
        listed = 0;
        NATIVE(isMemberOf)(java.object("test/Groups"));
        return std::to_wstring(listed) + L" listed";
    });
}

TEST_F(RefusedMemory, OfNetworkDrives) {
    ROW(netUse, raisesWithTag(L"WNetUseConnectionW"), .wide = 3, .blocks = 3);
    ROW(removeNetUsed, raisesWithTag(L"WNetUseConnectionW"), .wide = 1, .blocks = 1);
    ROW(getUserByNetUsedPath, raisesWithTag(L"WNetGetUserW"), .wide = 1, .blocks = 1);
    ROW(getUNC, answers(L"\"C:\\refused\""), .wide = 1, .blocks = 1);
    expectNotAsked({"WNetGetUniversalNameW"});
    notConcerned({"getNetUsed", "isNetworkConnected"});
}

TEST_F(RefusedMemory, OfPipesAndTheEventLog) {
    ROW(connectPipe, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(sendPipe, outOfMemory(), .wide = 2, .blocks = 2);
    ROW(createEventLog, outOfMemory(), .wide = 2, .blocks = 2);
    notConcerned({"getPipeSlotPath", "getMessagePipeSlotPath"});
}

TEST_F(RefusedMemory, OfTheEnvironment) {
    ROW(getEnv, outOfMemory(), .wide = 1, .blocks = 1);
    ROW(setEnvironmentVariable, raisesWithTag(L"SetEnvironmentVariableW"), .wide = 2, .blocks = 2);
    notConcerned({"getSHfolderPath", "getMajorVersion", "getMinorVersion", "getProductType", "isWindows64",
                  "Wow64EnableWow64FsRedirection", "isUserAnAdmin", "getLocationID", "getConsoleChar",
                  "CoInitializeEx", "CoUninitialize"});
    notConcerned({"getSystemModel", "getProcessorInfo", "getMemoryInfo", "getMotherboardUUID",
                  "getWindowsInstalledFeatures"});
}

// Runs last: what the tests before it put into the table is what the library exports.
TEST_F(RefusedMemory, IsLookedAtForEveryMethod) {
    const auto image = PeImage::ofFile(libraryFile());
    ASSERT_TRUE(image);
    std::set<std::string> missing;
    for (const auto& exported : image->exports()) {
        missing.insert(exported.name.substr(nativePrefix.size()));
    }
    EXPECT_EQ(missing.size(), table().size());
    for (const auto& [name, row] : table()) {
        missing.erase(name);
    }

    EXPECT_THAT(missing, IsEmpty());
}

}  // namespace
