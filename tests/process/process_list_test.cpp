// The list of running processes with their owners.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <memory>

#include "child_program.h"
#include "process_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::wstring tag = L"[WindowsUtil:getProcessInfo]";
constexpr char listClass[] = "java/util/ArrayList";
constexpr char recordClass[] = "com/qarvo/kel/util/WinProcessInfo";
constexpr char addSignature[] = "(Ljava/lang/Object;)Z";

struct Entry {
    DWORD id;
    std::wstring name;
};

class ProcessListTest : public ProcessTest {
protected:
    ProcessListTest() {
        java.defineConstructor(listClass, "()V");
        java.defineMethod(listClass, "add", addSignature, [this](const Arguments& arguments) {
            added.push_back(arguments[0].object());
            if (added.size() == throwAt) {
                throw JavaThrow{java.exception("java/lang/IllegalStateException", L"full")};
            }
            return true;
        });
    }

    // Has the system run these processes and no others, each with the owner and the session of this one.
    void pretend(std::vector<Entry> entries) {
        const auto next = std::make_shared<std::size_t>(0);
        const auto give = [entries = std::move(entries), next](HANDLE, LPPROCESSENTRY32W entry) {
            EXPECT_EQ(entry->dwSize, 568u);
            if (*next == entries.size()) {
                SetLastError(ERROR_NO_MORE_FILES);
                return FALSE;
            }
            entry->th32ProcessID = entries[*next].id;
            wcscpy_s(entry->szExeFile, MAX_PATH, entries[(*next)++].name.c_str());
            return TRUE;
        };
        replacements_.push_back(REPLACE(CreateToolhelp32Snapshot, [](DWORD flags, DWORD process) {
            EXPECT_EQ(flags, 2u);
            EXPECT_EQ(process, 0u);
            return Ledger::fakeHandle();
        }));
        replacements_.push_back(REPLACE(Process32FirstW, give));
        replacements_.push_back(REPLACE(Process32NextW, give));
        replacements_.push_back(REPLACE(OpenProcess, [this](DWORD access, BOOL inherit, DWORD id) {
            EXPECT_EQ(access, 0x400u);
            EXPECT_FALSE(inherit);
            opened.push_back(id);
            return REAL(OpenProcess)(access, inherit, GetCurrentProcessId());
        }));
        replacements_.push_back(REPLACE(OpenProcessToken, [](HANDLE process, DWORD access, PHANDLE token) {
            EXPECT_EQ(access, 8u);
            return REAL(OpenProcessToken)(process, access, token);
        }));
        replacements_.push_back(REPLACE(ProcessIdToSessionId, [](DWORD id, DWORD* session) {
            *session = 1000 + id;
            return TRUE;
        }));
    }

    std::vector<std::wstring> names() const {
        std::vector<std::wstring> found;
        for (const JavaObject& record : added) {
            found.push_back(record.arguments()[0].text());
        }
        return found;
    }

    // Nothing comes of the call: no list, no exception.
    void expectNothing() {
        EXPECT_FALSE(NATIVE(getProcessInfo)(nullptr));
        EXPECT_FALSE(java.isPending());
        EXPECT_THAT(added, IsEmpty());
    }

    std::vector<JavaObject> added;
    std::size_t throwAt = 0;
    std::vector<DWORD> opened;

private:
    std::vector<Replacement> replacements_;
};

std::wstring ownProgramName() {
    const std::wstring path = childProgram();
    return path.substr(path.rfind(L'\\') + 1);
}

std::wstring upperCase(std::wstring text) {
    std::ranges::transform(text, text.begin(), towupper);
    return text;
}

TEST_F(ProcessListTest, FindsTheProcessesOfAProgramInAnyCase) {
    const RunningChild child;

    const JavaObject list = NATIVE(getProcessInfo)(upperCase(ownProgramName()));

    EXPECT_EQ(list.className(), listClass);
    ASSERT_GE(added.size(), 2u);
    const auto found = std::ranges::find_if(
        added, [&](const JavaObject& record) { return record.arguments()[1].number() == child.id; });
    ASSERT_NE(found, added.end());
    DWORD session = 0;
    ProcessIdToSessionId(child.id, &session);
    wchar_t user[256];
    DWORD size = 256;
    GetUserNameW(user, &size);
    EXPECT_EQ(found->className(), recordClass);
    EXPECT_EQ(found->arguments()[0].text(), ownProgramName());
    EXPECT_EQ(found->arguments()[2].number(), session);
    EXPECT_EQ(found->arguments()[3].text(), user);
    EXPECT_NE(found->arguments()[4].text(), L"");
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ProcessListTest, ListsAllWithoutAFilterAndWithAnEmptyOne) {
    NATIVE(getProcessInfo)(nullptr);
    const std::vector<std::wstring> all = names();
    added.clear();
    NATIVE(getProcessInfo)(L"");

    EXPECT_THAT(all, ::testing::Contains(ownProgramName()));
    EXPECT_THAT(all, ::testing::Contains(L"services.exe"));
    EXPECT_THAT(names(), ::testing::Contains(ownProgramName()));
    EXPECT_THAT(names(), ::testing::Contains(L"services.exe"));
}

TEST_F(ProcessListTest, GivesWhatTheSystemSaysOfEachAndKeepsNothing) {
    pretend({{7, L"a.exe"}, {0xFFFFFFF0, L"\u00e4.exe"}});

    EXPECT_TRUE(NATIVE(getProcessInfo)(nullptr));

    EXPECT_THAT(names(), ElementsAre(L"a.exe", L"\u00e4.exe"));
    EXPECT_EQ(added[0].arguments()[1].number(), 7);
    EXPECT_EQ(added[0].arguments()[2].number(), 1007);
    EXPECT_EQ(added[1].arguments()[1].number(), 0xFFFFFFF0);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ProcessListTest, OpensOnlyTheProcessesThatTheFilterNames) {
    pretend({{1, L"a.exe"}, {2, L"B.exe"}, {3, L"bb.exe"}, {4, L"b.EXE"}});

    NATIVE(getProcessInfo)(L"b.exe");

    EXPECT_THAT(names(), ElementsAre(L"B.exe", L"b.EXE"));
    EXPECT_THAT(opened, ElementsAre(2, 4));
}

TEST_F(ProcessListTest, GivesAnEmptyListWhenNoProcessIsNamedSo) {
    pretend({{1, L"a.exe"}});

    EXPECT_TRUE(NATIVE(getProcessInfo)(L"b.exe"));

    EXPECT_THAT(added, IsEmpty());
}

TEST_F(ProcessListTest, KeepsTheReferencesFlatHoweverManyProcessesRun) {
    pretend(std::vector<Entry>(500, {1, L"a.exe"}));

    NATIVE(getProcessInfo)(nullptr);

    EXPECT_EQ(added.size(), 500u);
    EXPECT_LE(java.peakReferences(), 8u);
}

struct OwnerStep {
    const char* function;
    std::size_t call;
    DWORD code;
    std::uint64_t result;
};

// Each of two processes fails at the step, one after the other: the one behind is listed.
class ProcessOwnerTest : public ProcessListTest, public ::testing::WithParamInterface<OwnerStep> {};

TEST_P(ProcessOwnerTest, LeavesAProcessOutOfWhichAStepFails) {
    pretend({{1, L"a.exe"}, {2, L"b.exe"}});
    const OwnerStep step = GetParam();
    const auto failing = system().failCall(step.function, step.call, step.code, step.result);

    EXPECT_TRUE(NATIVE(getProcessInfo)(nullptr));

    EXPECT_THAT(names(), ElementsAre(L"b.exe"));
    EXPECT_FALSE(java.isPending());
    EXPECT_TRUE(ledger().isEmpty());
}

// The size of a token's user is asked for with a call that is to fail, and for one reason only.
INSTANTIATE_TEST_SUITE_P(Steps, ProcessOwnerTest,
                         ::testing::Values(OwnerStep{"OpenProcess", 1, ERROR_ACCESS_DENIED, 0},
                                           OwnerStep{"OpenProcessToken", 1, ERROR_ACCESS_DENIED, 0},
                                           OwnerStep{"GetTokenInformation", 1, ERROR_ACCESS_DENIED, 0},
                                           OwnerStep{"GetTokenInformation", 1, ERROR_SUCCESS, 1},
                                           OwnerStep{"GetTokenInformation", 2, ERROR_ACCESS_DENIED, 0},
                                           OwnerStep{"HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY, 0},
                                           OwnerStep{"LookupAccountSidW", 1, ERROR_NONE_MAPPED, 0},
                                           OwnerStep{"ProcessIdToSessionId", 1, ERROR_INVALID_PARAMETER, 0}));

TEST_F(ProcessListTest, AsksForTheAccountWithRoomForTheLongestNames) {
    pretend({{1, L"a.exe"}});
    const std::wstring longName(1023, L'n');
    const std::wstring longDomain(1023, L'd');
    const auto lookup = REPLACE(LookupAccountSidW, [&](LPCWSTR machine, PSID, LPWSTR name, LPDWORD nameSize,
                                                       LPWSTR domain, LPDWORD domainSize, PSID_NAME_USE) {
        EXPECT_EQ(machine, nullptr);
        EXPECT_EQ(*nameSize, 1024u);
        EXPECT_EQ(*domainSize, 1024u);
        wcscpy_s(name, *nameSize, longName.c_str());
        wcscpy_s(domain, *domainSize, longDomain.c_str());
        return TRUE;
    });

    NATIVE(getProcessInfo)(nullptr);

    ASSERT_EQ(added.size(), 1u);
    EXPECT_EQ(added[0].arguments()[3].text(), longName);
    EXPECT_EQ(added[0].arguments()[4].text(), longDomain);
}

TEST_F(ProcessListTest, TellsWhyThereIsNoSnapshot) {
    const auto snapshot = system().answer("CreateToolhelp32Snapshot", ~0ull, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(getProcessInfo)(nullptr));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(tag + L" Failed to CreateToolhelp32Snapshot", ERROR_ACCESS_DENIED)));
}

TEST_F(ProcessListTest, TellsWhyThereIsNoFirstProcessAndClosesTheSnapshot) {
    const auto first = system().answer("Process32FirstW", FALSE, ERROR_NO_MORE_FILES);

    EXPECT_FALSE(NATIVE(getProcessInfo)(nullptr));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(tag + L" Failed to Process32First", ERROR_NO_MORE_FILES)));
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ProcessListTest, TellsThatTheRecordIsMissingInPlaceOfTheJvmsError) {
    java.removeClass(recordClass);

    EXPECT_FALSE(NATIVE(getProcessInfo)(nullptr));

    EXPECT_EQ(java.takeException(),
              ioException(tag + L" Failed to FindClass for com/qarvo/kel/util/WinProcessInfo"));
    EXPECT_EQ(system().count("CreateToolhelp32Snapshot"), 0u);
}

TEST_F(ProcessListTest, IsNothingWithoutTheRecordsConstructor) {
    java.removeMethod(recordClass, "<init>", "(Ljava/lang/String;JJLjava/lang/String;Ljava/lang/String;)V");

    expectNothing();
}

TEST_F(ProcessListTest, IsNothingWithoutTheListOrItsMethods) {
    java.removeMethod(listClass, "<init>", "()V");
    expectNothing();
    java.removeMethod(listClass, "add", addSignature);
    expectNothing();
    java.removeClass(listClass);
    expectNothing();
}

TEST_F(ProcessListTest, StopsAtTheExceptionThatTheListThrows) {
    pretend({{1, L"a.exe"}, {2, L"b.exe"}, {3, L"c.exe"}});
    throwAt = 2;

    EXPECT_FALSE(NATIVE(getProcessInfo)(nullptr));

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"full"}));
    EXPECT_THAT(opened, ElementsAre(1, 2));
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ProcessListTest, StopsWhenTheJvmHasNoMemory) {
    pretend({{1, L"a.exe"}});
    // The list and the record; the three texts.
    for (const auto& [function, calls] : {std::pair("NewObject", 2u), std::pair("NewString", 3u)}) {
        for (std::size_t k = 1; k <= calls; ++k) {
            pretend({{1, L"a.exe"}});
            java.failCall(function, k);

            EXPECT_FALSE(NATIVE(getProcessInfo)(nullptr));

            EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function << k;
            EXPECT_THAT(added, IsEmpty());
        }
    }
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ProcessListTest, ListsNothingWithoutMemoryForTheFilter) {
    pretend({{1, L"a.exe"}});
    const Thrown outOfMemory = ioException(stepMessage(tag, ERROR_NOT_ENOUGH_MEMORY));
    java.failCall("GetStringChars");

    EXPECT_FALSE(NATIVE(getProcessInfo)(L"a.exe"));

    EXPECT_EQ(java.takeException(), outOfMemory);
    const auto allocation = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(NATIVE(getProcessInfo)(L"a.exe"));

    EXPECT_EQ(java.takeException(), outOfMemory);
    EXPECT_EQ(system().count("CreateToolhelp32Snapshot"), 0u);
}

}  // namespace
