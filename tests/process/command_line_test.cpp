// The command line of another process, whose memory says what it likes.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <winternl.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>

#include "process_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::wstring tag = L"[WindowsUtil:getProcessCommandLineArguments]";

using QueryInformation = NTSTATUS(HANDLE, int, PVOID, ULONG, PULONG);

// One read of the other process' memory.
struct Read {
    std::uintptr_t address;
    std::size_t size;
    bool operator==(const Read&) const = default;
};
void PrintTo(const Read& read, std::ostream* stream) {
    *stream << read.size << " bytes at " << std::hex << read.address;
}

// A process that has its blocks at these places.
constexpr std::uintptr_t blockAddress = 0x10000;
constexpr std::uintptr_t parametersAddress = 0x20000;
constexpr std::uintptr_t imageAddress = 0x30000;
constexpr std::uintptr_t commandAddress = 0x40000;

// Leaves letters where the stack of the next call will be: nothing on it is zero by chance.
void fillStack() {
    volatile char area[0x10000];
    for (volatile char& byte : area) {
        byte = 'Z';
    }
}

class CommandLineTest : public ProcessTest {
protected:
    // Has every process be one with these texts; their lengths are in bytes, and what lies behind the texts
    // is full of letters.
    void pretend(const std::wstring& image, std::size_t imageLength, const std::wstring& command,
                 std::size_t commandLength) {
        parameters_.ImagePathName = {static_cast<USHORT>(imageLength), 0xFFFF,
                                     reinterpret_cast<PWSTR>(imageAddress)};
        parameters_.CommandLine = {static_cast<USHORT>(commandLength), 0xFFFF,
                                   reinterpret_cast<PWSTR>(commandAddress)};
        block_.ProcessParameters = reinterpret_cast<PRTL_USER_PROCESS_PARAMETERS>(parametersAddress);
        memory_[blockAddress].assign(reinterpret_cast<const char*>(&block_), sizeof(block_));
        memory_[parametersAddress].assign(reinterpret_cast<const char*>(&parameters_), sizeof(parameters_));
        memory_[imageAddress] = endless(image);
        memory_[commandAddress] = endless(command);
        pretendToBeThere();
    }

    void pretend(const std::wstring& image, const std::wstring& command) {
        pretend(image, image.size() * 2, command, command.size() * 2);
    }

    std::vector<std::size_t> sizes() const {
        std::vector<std::size_t> found;
        for (const Read& read : reads) {
            found.push_back(read.size);
        }
        return found;
    }

    JavaObject ask(bool verbose = false) {
        void (*const volatile fill)() = fillStack;
        fill();
        return NATIVE(getProcessCommandLineArguments)(1234, verbose);
    }

    std::vector<Read> reads;

private:
    static std::string endless(const std::wstring& text) {
        std::wstring whole = text + std::wstring(0x10000, L'Z');
        return {reinterpret_cast<const char*>(whole.data()), whole.size() * 2};
    }

    void pretendToBeThere() {
        replacements_.push_back(REPLACE(OpenProcess, [](DWORD access, BOOL inherit, DWORD id) {
            EXPECT_EQ(access, 0x410u);
            EXPECT_FALSE(inherit);
            EXPECT_EQ(id, 1234u);
            return Ledger::fakeHandle();
        }));
        replacements_.push_back(system().replace<QueryInformation>(
            "NtQueryInformationProcess", [](HANDLE, int kind, PVOID information, ULONG size, PULONG) {
                EXPECT_EQ(kind, 0);
                EXPECT_EQ(size, sizeof(PROCESS_BASIC_INFORMATION));
                static_cast<PROCESS_BASIC_INFORMATION*>(information)->PebBaseAddress =
                    reinterpret_cast<PPEB>(blockAddress);
                return NTSTATUS{0};
            }));
        replacements_.push_back(
            REPLACE(ReadProcessMemory, [this](HANDLE, LPCVOID address, LPVOID buffer, SIZE_T size, SIZE_T*) {
                reads.push_back({reinterpret_cast<std::uintptr_t>(address), size});
                const auto found = memory_.find(reads.back().address);
                if (found == memory_.end() || found->second.size() < size) {
                    SetLastError(ERROR_PARTIAL_COPY);
                    return FALSE;
                }
                std::memcpy(buffer, found->second.data(), size);
                return TRUE;
            }));
    }

    PEB block_ = {};
    RTL_USER_PROCESS_PARAMETERS parameters_ = {};
    std::map<std::uintptr_t, std::string> memory_;
    std::vector<Replacement> replacements_;
};

TEST_F(CommandLineTest, IsThatOfARunningProcess) {
    const RunningChild child(L"wait for \u00e4\u20ac\U0001F600 \"and  so on\"");

    const JavaObject found = NATIVE(getProcessCommandLineArguments)(jlong{child.id}, false);

    EXPECT_EQ(found.text(), child.commandLine);
    EXPECT_THAT(printed(), IsEmpty());
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(CommandLineTest, IsCutAt2048CharactersForARunningProcess) {
    const RunningChild child(L"wait " + std::wstring(6000, L'x'));

    const JavaObject found = NATIVE(getProcessCommandLineArguments)(jlong{child.id}, true);

    EXPECT_EQ(found.text(), child.commandLine.substr(0, 2048));
    EXPECT_TRUE(printed().back().ends_with(L"command line arguments=" + found.text() + L"\n"));
}

TEST_F(CommandLineTest, TellsThatThereIsNoSuchProcess) {
    EXPECT_FALSE(NATIVE(getProcessCommandLineArguments)(0x7FFFFFF0, false));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process(2147483632)\n", ERROR_INVALID_PARAMETER)));
}

TEST_F(CommandLineTest, TakesAnIdBeyond32BitsForNoProcess) {
    EXPECT_FALSE(NATIVE(getProcessCommandLineArguments)(0x1'0000'04D2, true));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process(4294968530)\n", ERROR_INVALID_PARAMETER)));
    EXPECT_THAT(printed(), ElementsAre(tag + L" Open process (4294968530)\n",
                                       tag + L" Failed to open process(4294968530)\n\n"));

    EXPECT_FALSE(NATIVE(getProcessCommandLineArguments)(-1, false));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process(-1)\n", ERROR_INVALID_PARAMETER)));
    EXPECT_EQ(system().count("OpenProcess"), 0u);
}

TEST_F(CommandLineTest, ReadsTheBlocksThatLeadToItAndPrintsNothingUnasked) {
    pretend(L"C:\\a.exe", L"a.exe /b");

    EXPECT_EQ(ask().text(), L"a.exe /b");

    EXPECT_THAT(reads, ElementsAre(Read{blockAddress, 712}, Read{parametersAddress, 128},
                                   Read{imageAddress, 16}, Read{commandAddress, 16}));
    EXPECT_THAT(printed(), IsEmpty());
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(CommandLineTest, PrintsItsStepsWhenAsked) {
    pretend(L"C:\\a.exe", L"a.exe %s %n");

    ask(true);

    EXPECT_THAT(
        printed(),
        ElementsAre(tag + L" Open process (1234)\n", tag + L" Get command line arguments of process (1234)\n",
                    tag + L" Get Process Basic Information\n", tag + L" Get PEB\n",
                    tag + L" Get User Process Parameters\n", tag + L" Get Process Image Path\n",
                    tag + L" Get Process Command Line Arguments\n",
                    tag + L" Process (1234) exec path=C:\\a.exe, command line arguments=a.exe %s "
                          L"%n\n"));
}

TEST_F(CommandLineTest, ReadsNoTextThatIsEmpty) {
    pretend(L"", 0, L"", 0);

    EXPECT_EQ(ask(true).text(), L"");

    EXPECT_THAT(sizes(), ElementsAre(712, 128));
    EXPECT_EQ(printed().back(), tag + L" Process (1234) exec path=, command line arguments=\n");
}

TEST_F(CommandLineTest, ReadsNoMoreThanTheBufferHolds) {
    const std::wstring longText(0x8000, L'c');
    pretend(std::wstring(0x8000, L'i'), 0xFFFF, longText, 0xFFFE);

    EXPECT_EQ(ask(true).text(), std::wstring(2048, L'c'));

    EXPECT_THAT(sizes(), ElementsAre(712, 128, 4096, 4096));
    EXPECT_EQ(printed().back(), tag + L" Process (1234) exec path=" + std::wstring(2048, L'i') +
                                    L", command line arguments=" + std::wstring(2048, L'c') + L"\n");
}

struct Lengths {
    std::size_t given;
    std::size_t read;
};

class CommandLineLength : public CommandLineTest, public ::testing::WithParamInterface<Lengths> {};

TEST_P(CommandLineLength, IsCappedAtTheBuffer) {
    pretend(L"", 0, std::wstring(0x4000, L'c'), GetParam().given);

    const std::wstring found = ask().text();

    EXPECT_EQ(reads.back(), (Read{commandAddress, GetParam().read}));
    EXPECT_EQ(found, std::wstring((GetParam().read + 1) / 2, L'c'));
}

// Of an odd length half a character is left, which the zeros of the buffer complete.
INSTANTIATE_TEST_SUITE_P(Lengths, CommandLineLength,
                         ::testing::Values(Lengths{1, 1}, Lengths{2, 2}, Lengths{7, 7}, Lengths{4094, 4094},
                                           Lengths{4095, 4095}, Lengths{4096, 4096}, Lengths{4097, 4096},
                                           Lengths{4098, 4096}, Lengths{65535, 4096}));

TEST_F(CommandLineTest, EndsAtAZeroWithinIt) {
    pretend(L"", 0, std::wstring(L"ab\0cd", 5), 10);

    EXPECT_EQ(ask().text(), L"ab");
}

TEST_F(CommandLineTest, TellsTheStatusOfTheQuery) {
    pretend(L"i", L"c");
    const auto query = system().answer("NtQueryInformationProcess", 0xC0000022);

    EXPECT_FALSE(ask(true));

    const std::wstring text = L"\"NTQueryInformationProcess\" returns error with NTStatus: c0000022\n";
    EXPECT_EQ(java.takeException(), ioException(text));
    EXPECT_EQ(printed().back(), tag + L" " + text + L"\n");
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(CommandLineTest, GoesOnAfterAStatusThatIsNoFailure) {
    pretend(L"i", L"c");
    const auto query = system().replace<QueryInformation>(
        "NtQueryInformationProcess", [](HANDLE, int, PVOID information, ULONG, PULONG) {
            static_cast<PROCESS_BASIC_INFORMATION*>(information)->PebBaseAddress =
                reinterpret_cast<PPEB>(blockAddress);
            return static_cast<NTSTATUS>(0x40000000);
        });

    EXPECT_EQ(ask().text(), L"c");
}

struct ReadStep {
    std::size_t call;
    const wchar_t* text;
};

// The process has ended at one of the reads.
class CommandLineStep : public CommandLineTest, public ::testing::WithParamInterface<ReadStep> {};

TEST_P(CommandLineStep, TellsWhichReadFailedAndClosesTheProcess) {
    pretend(L"i", L"c");
    const auto read = system().failCall("ReadProcessMemory", GetParam().call, ERROR_PARTIAL_COPY);

    EXPECT_FALSE(ask(true));

    EXPECT_EQ(java.takeException(), ioException(stepMessage(GetParam().text, ERROR_PARTIAL_COPY)));
    EXPECT_EQ(printed().back(), tag + L" " + GetParam().text + L"\n");
    EXPECT_EQ(reads.size(), GetParam().call - 1);
    EXPECT_TRUE(ledger().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Reads, CommandLineStep,
                         ::testing::Values(ReadStep{1, L"Failed to get PEB\n"},
                                           ReadStep{2, L"Failed to get RTL_USER_PROCESS_PARAMETERS\n"},
                                           ReadStep{3, L"Failed to get process image path\n"},
                                           ReadStep{4, L"Failed to get process command line arguments\n"}));

TEST_F(CommandLineTest, PrintsWhyAProcessCannotBeOpenedAndRaisesIt) {
    const auto open = system().answer("OpenProcess", 0, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(ask(true));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process(1234)\n", ERROR_ACCESS_DENIED)));
    EXPECT_THAT(printed(),
                ElementsAre(tag + L" Open process (1234)\n", tag + L" Failed to open process(1234)\n\n"));
}

TEST_F(CommandLineTest, OnlyReportsTheFailureWhereTheSystemHasNoQuery) {
    FreshLibrary fresh(folder(), L"without-query.dll");
    const auto hidden = fresh.system().hide({"NtQueryInformationProcess"});
    fresh.ledger().allowUnknown("FreeLibrary");
    ASSERT_TRUE(fresh.load());
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_getProcessCommandLineArguments);
    const char name[] = "Java_com_qarvo_kel_util_WindowsUtil_getProcessCommandLineArguments";
    const NativeMethod<Function> method(java, name, fresh.exported<Function>(name));

    EXPECT_FALSE(method(jlong{GetCurrentProcessId()}, false));

    EXPECT_EQ(java.takeException(),
              ioException(L"\"NTQueryInformationProcess\" returns error with NTStatus: c000007a\n"));
    EXPECT_EQ(fresh.system().count("OpenProcess"), 0u);
}

TEST_F(CommandLineTest, IsNothingWithoutMemoryForTheString) {
    pretend(L"i", L"c");
    java.failCall("NewString");

    EXPECT_FALSE(ask());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_TRUE(ledger().isEmpty());
}

}  // namespace
