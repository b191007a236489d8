// Whether an account may read or write a file; whatever fails, the thread ends up acting as the process
// itself.
#include "descriptors.h"
#include "guarded_heap.h"
#include "thread_token.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

// The user of every token of this process, and rights that are the check's own: 1 reads, 2 writes.
const std::wstring readable = L"O:SYG:SYD:(A;;0x1;;;WD)";
const std::wstring writable = L"O:SYG:SYD:(A;;0x2;;;WD)";
const std::wstring closed = L"O:SYG:SYD:(D;;0x3;;;WD)";

const wchar_t* const logonTag = L" [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser] ";

class AccessCheckTest : public WinUtilTest {
protected:
    AccessCheckTest() { writeFile(folder() / L"file", "content"); }
    ~AccessCheckTest() override { RevertToSelf(); }

    // A logon of anybody, who is then the process' own user.
    Replacement acceptLogon() {
        return REPLACE(LogonUserA,
                       [this](LPCSTR user, LPCSTR domain, LPCSTR password, DWORD, DWORD, PHANDLE token) {
                           given = {user, domain, password};
                           *token = impersonationToken();
                           return TRUE;
                       });
    }

    // Gives every file that descriptor.
    Replacement protect(const std::wstring& sddl) {
        return REPLACE(GetFileSecurityW, [this, bytes = descriptorOf(sddl)](
                                             LPCWSTR path, SECURITY_INFORMATION parts,
                                             PSECURITY_DESCRIPTOR buffer, DWORD size, LPDWORD needed) {
            EXPECT_EQ(parts, 7u);
            asked.push_back({path, size});
            *needed = static_cast<DWORD>(bytes.size());
            if (size < bytes.size()) {
                SetLastError(ERROR_INSUFFICIENT_BUFFER);
                return FALSE;
            }
            std::memcpy(buffer, bytes.data(), bytes.size());
            return TRUE;
        });
    }

    bool isAccessRead(const std::wstring& user = L"user") {
        return NATIVE(isAccessRead)(folder() / L"file", L"DOM", user, L"secret");
    }
    bool isAccessWrite(const std::wstring& user = L"user") {
        return NATIVE(isAccessWrite)(folder() / L"file", L"DOM", user, L"secret");
    }

    struct Asked {
        std::wstring path;
        DWORD size;
    };
    std::vector<std::string> given;
    std::vector<Asked> asked;
};

std::wstring refusal(DWORD code) {
    return errorMessage(L"CheckAccessToFile", code);
}

TEST_F(AccessCheckTest, ReadsWithTheRightToRead) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(readable);

    EXPECT_TRUE(isAccessRead());

    EXPECT_THAT(given, ElementsAre("user", "DOM", "secret"));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(AccessCheckTest, ReadsNotWithTheRightToWrite) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(writable);

    EXPECT_FALSE(isAccessRead());

    EXPECT_EQ(java.takeException(), ioException(refusal(ERROR_ACCESS_DENIED)));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(AccessCheckTest, WritesWithTheRightToWriteOnly) {
    const auto logon = acceptLogon();
    {
        const auto descriptor = protect(writable);
        EXPECT_TRUE(isAccessWrite());
    }
    EXPECT_FALSE(isImpersonating());
    for (const std::wstring& sddl : {readable, closed}) {
        const auto descriptor = protect(sddl);

        EXPECT_FALSE(isAccessWrite());

        EXPECT_EQ(java.takeException(), ioException(refusal(ERROR_ACCESS_DENIED)));
        EXPECT_FALSE(isImpersonating());
    }
}

TEST_F(AccessCheckTest, MapsGenericRightsToItsOwn) {
    const auto logon = acceptLogon();
    const auto check = system().watch("AccessCheck");
    const auto descriptor = protect(L"O:SYG:SYD:(A;;GA;;;WD)");
    // What the check is given, taken while it runs.
    GENERIC_MAPPING mapping = {};
    DWORD privileges = 0;
    std::vector<DWORD> desired;
    const auto look =
        REPLACE(AccessCheck, [&](PSECURITY_DESCRIPTOR of, HANDLE token, DWORD access, PGENERIC_MAPPING map,
                                 PPRIVILEGE_SET set, LPDWORD size, LPDWORD granted, LPBOOL status) {
            mapping = *map;
            privileges = *size;
            desired.push_back(access);
            return REAL(AccessCheck)(of, token, access, map, set, size, granted, status);
        });

    EXPECT_TRUE(isAccessRead());
    EXPECT_TRUE(isAccessWrite());

    EXPECT_THAT(desired, ElementsAre(1u, 2u));
    EXPECT_EQ(mapping.GenericRead, 1u);
    EXPECT_EQ(mapping.GenericWrite, 2u);
    EXPECT_EQ(mapping.GenericExecute, 0u);
    EXPECT_EQ(mapping.GenericAll, 3u);
    EXPECT_EQ(privileges, 20u);
}

TEST_F(AccessCheckTest, ReadsADescriptorBeyond256BytesAtTheSizeAskedFor) {
    const GuardedHeap heap(system());
    const auto logon = acceptLogon();
    std::wstring sddl = L"O:SYG:SYD:";
    for (int i = 0; i < 20; ++i) {
        sddl += L"(A;;0x1;;;WD)";
    }
    const auto descriptor = protect(sddl);

    EXPECT_TRUE(isAccessRead());

    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].size, 256u);
    EXPECT_EQ(asked[1].size, descriptorOf(sddl).size());
}

TEST_F(AccessCheckTest, ReadsTheDescriptorByTheLongFormWhenTheAttributesCannotBeRead) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(readable);

    EXPECT_TRUE(NATIVE(isAccessRead)(L"C:\\missing/file", L"DOM", L"user", L"secret"));
    EXPECT_TRUE(NATIVE(isAccessRead)(L"\\\\?\\C:\\missing/file", L"DOM", L"user", L"secret"));

    EXPECT_EQ(asked.at(0).path, L"\\\\?\\C:\\missing\\file");
    EXPECT_EQ(asked.at(1).path, L"\\\\?\\C:\\missing/file");
}

TEST_F(AccessCheckTest, TellsWhyTheDescriptorCannotBeRead) {
    const auto logon = acceptLogon();

    EXPECT_FALSE(NATIVE(isAccessRead)(folder() / L"missing", L"DOM", L"user", L"secret"));

    EXPECT_EQ(java.takeException(), ioException(refusal(ERROR_FILE_NOT_FOUND)));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(AccessCheckTest, RefusesToReadForNobodyWithoutLookingAtTheFile) {
    for (const bool null : {false, true}) {
        EXPECT_FALSE(null ? NATIVE(isAccessRead)(folder() / L"file", nullptr, nullptr, nullptr)
                          : isAccessRead(L""));

        EXPECT_EQ(java.takeException(), ioException(L""));
    }
    EXPECT_EQ(system().count("GetFileAttributesExW"), 0u);
    EXPECT_EQ(system().count("LogonUserA"), 0u);
}

TEST_F(AccessCheckTest, ReadingForNobodyLeavesTheCallersImpersonation) {
    const HANDLE token = impersonationToken();
    ASSERT_TRUE(ImpersonateLoggedOnUser(token));

    EXPECT_FALSE(isAccessRead(L""));

    EXPECT_EQ(java.takeException(), ioException(L""));
    EXPECT_TRUE(isImpersonating());
    RevertToSelf();
    CloseHandle(token);
}

TEST_F(AccessCheckTest, ReadingPassesTheReasonOfAFailedLogonOn) {
    const auto logon = system().answer("LogonUserA", FALSE, ERROR_LOGON_FAILURE);

    EXPECT_FALSE(isAccessRead());

    EXPECT_EQ(java.takeException(), ioException(logonTag + (L" (1326) " + systemText(ERROR_LOGON_FAILURE))));
    EXPECT_EQ(system().count("GetFileAttributesExW"), 0u);
    EXPECT_EQ(system().count("RevertToSelf"), 0u);
}

TEST_F(AccessCheckTest, ReadingMakesDoWithTheProcessWhenTheThreadHasNoToken) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(readable);
    const auto thread = system().answer("OpenThreadToken", FALSE, ERROR_NO_TOKEN);
    const auto process = system().watch("OpenProcessToken");

    // The check takes no token of a process, so that this, too, ends as a no.
    EXPECT_FALSE(isAccessRead());

    EXPECT_EQ(process.calls().back().argument<DWORD>(1), static_cast<DWORD>(TOKEN_QUERY));
    EXPECT_EQ(java.takeException(), ioException(refusal(ERROR_NO_IMPERSONATION_TOKEN)));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(AccessCheckTest, ReadingFailsWithoutAnyToken) {
    const auto logon = acceptLogon();
    const auto thread = system().answer("OpenThreadToken", FALSE, ERROR_NO_TOKEN);
    const auto process = system().answer("OpenProcessToken", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(isAccessRead());

    EXPECT_EQ(java.takeException(), ioException(L"Cannot not get current process"));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(AccessCheckTest, AsksForTheTokenOfTheThreadAsTheProcess) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(L"O:SYG:SYD:(A;;0x3;;;WD)");
    const auto open = system().watch("OpenThreadToken");

    isAccessRead();
    isAccessWrite();

    ASSERT_EQ(open.count(), 2u);
    for (const RecordedCall& call : open.calls()) {
        EXPECT_EQ(call.argument<DWORD>(1), 8u);
        EXPECT_EQ(call.argument<BOOL>(2), TRUE);
    }
}

TEST_F(AccessCheckTest, WritingForNobodyAsksForWhomTheThreadActsAs) {
    const auto descriptor = protect(writable);
    const HANDLE token = impersonationToken();
    ASSERT_TRUE(ImpersonateLoggedOnUser(token));

    EXPECT_TRUE(isAccessWrite(L""));

    EXPECT_EQ(system().count("LogonUserA"), 0u);
    EXPECT_FALSE(isImpersonating());
    CloseHandle(token);
}

TEST_F(AccessCheckTest, WritingForNobodyAsNobodyIsRefusedWithoutAReason) {
    EXPECT_FALSE(isAccessWrite(L""));

    EXPECT_EQ(java.takeException(), ioException(L""));
    EXPECT_EQ(system().count("RevertToSelf"), 1u);
}

TEST_F(AccessCheckTest, WritingGoesOnWithTheThreadsTokenWhenTheLogonFails) {
    const auto descriptor = protect(writable);
    const auto logon = system().answer("LogonUserA", FALSE, ERROR_LOGON_FAILURE);
    const HANDLE token = impersonationToken();
    ASSERT_TRUE(ImpersonateLoggedOnUser(token));

    EXPECT_TRUE(isAccessWrite());

    EXPECT_FALSE(isImpersonating());
    CloseHandle(token);
}

TEST_F(AccessCheckTest, WritingPassesTheReasonOfAFailedLogonOnWhenThereIsNoToken) {
    const auto logon = system().answer("LogonUserA", FALSE, ERROR_LOGON_FAILURE);

    EXPECT_FALSE(isAccessWrite());

    EXPECT_EQ(java.takeException(), ioException(logonTag + (L" (1326) " + systemText(ERROR_LOGON_FAILURE))));
    EXPECT_EQ(system().count("OpenProcessToken"), 3u) << "by the three privileges, and not for the check";
}

TEST_F(AccessCheckTest, ActsAsItselfBehindEveryStepThatFails) {
    struct Step {
        const char* function;
        std::uint64_t answer;
    };
    const Step steps[] = {{"GetFileAttributesExW", FALSE},
                          {"GetFileSecurityW", FALSE},
                          {"AccessCheck", FALSE},
                          {"OpenThreadToken", FALSE}};
    const auto logon = acceptLogon();
    for (const Step& step : steps) {
        SCOPED_TRACE(step.function);
        const auto descriptor = protect(closed);
        const auto failing = system().answer(step.function, step.answer, ERROR_INVALID_FUNCTION);
        const std::size_t impersonated = system().count("ImpersonateLoggedOnUser");

        EXPECT_FALSE(isAccessRead());
        EXPECT_EQ(java.takeException().className, "java/io/IOException");
        EXPECT_FALSE(isImpersonating());

        EXPECT_FALSE(isAccessWrite());
        EXPECT_EQ(java.takeException().className, "java/io/IOException");
        EXPECT_FALSE(isImpersonating());

        EXPECT_EQ(system().count("ImpersonateLoggedOnUser"), impersonated + 2);
        EXPECT_GT(failing.count(), 0u);
    }
}

TEST_F(AccessCheckTest, ActsAsItselfWhenTheExceptionCannotBeMade) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(closed);
    for (const char* function : {"FindClass", "GetMethodID", "NewObject", "NewString"}) {
        SCOPED_TRACE(function);
        java.failCall(function);
        EXPECT_FALSE(isAccessRead());
        java.takeException();
        EXPECT_FALSE(isImpersonating());

        java.failCall(function);
        EXPECT_FALSE(isAccessWrite());
        java.takeException();
        EXPECT_FALSE(isImpersonating());
    }
}

TEST_F(AccessCheckTest, ActsAsItselfWhenMemoryRunsOut) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(readable);
    const Thrown noMemory = ioException(refusal(ERROR_NOT_ENOUGH_MEMORY));
    // The path, and then the descriptor.
    for (std::size_t k = 1; k <= 2; ++k) {
        SCOPED_TRACE(k);
        {
            const auto memory = system().failCall("malloc", k, ERROR_INVALID_DATA);
            EXPECT_FALSE(isAccessRead());
            EXPECT_EQ(java.takeException(), noMemory);
            EXPECT_FALSE(isImpersonating());
        }
        {
            const auto memory = system().failCall("malloc", k, ERROR_INVALID_DATA);
            EXPECT_FALSE(isAccessWrite());
            EXPECT_EQ(java.takeException(), noMemory);
            EXPECT_FALSE(isImpersonating());
        }
    }
    // The long form.
    const auto attributes = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);
    const auto memory = system().failCall("malloc", 2, ERROR_INVALID_DATA);
    asked.clear();
    EXPECT_FALSE(isAccessRead());
    EXPECT_EQ(java.takeException(), noMemory);
    EXPECT_FALSE(isImpersonating());
    EXPECT_TRUE(asked.empty());
}

TEST_F(AccessCheckTest, WipesTheCopyOfThePasswordAndNoOther) {
    const auto logon = acceptLogon();
    const auto descriptor = protect(L"O:SYG:SYD:(A;;0x3;;;WD)");

    EXPECT_TRUE(isAccessRead());
    EXPECT_TRUE(isAccessWrite());

    std::size_t passwords = 0;
    for (const StringRelease& release : java.stringReleases()) {
        const bool password = release.string.text() == L"secret";
        EXPECT_EQ(release.wiped, password) << toUtf8(release.string.text());
        passwords += password ? 1 : 0;
    }
    EXPECT_EQ(passwords, 2u);
}

TEST_F(AccessCheckTest, WritingEndsTheCallersImpersonationAlsoBeforeTheCheck) {
    const HANDLE token = impersonationToken();
    for (const char* function : {"GetStringChars", "GetStringUTFChars"}) {
        ASSERT_TRUE(ImpersonateLoggedOnUser(token));
        java.failCall(function);

        EXPECT_FALSE(isAccessWrite());

        EXPECT_EQ(java.takeException(), ioException(refusal(ERROR_NOT_ENOUGH_MEMORY)));
        EXPECT_FALSE(isImpersonating());
    }
    CloseHandle(token);
}

}  // namespace
