// What a verbose method prints, as it arrives where the standard output leads.
#include <windows.h>

#include "c_run_time.h"
#include "process_fixture.h"

namespace {

using namespace testbed;

class VerboseLines : public WinUtilTest {
protected:
    // The last line that the method prints of a process with such a command line, its line end included.
    std::string lastLine(const std::wstring& job, UINT codePage) {
        const RunningChild child(job);
        const Replacement console = system().answer("GetConsoleOutputCP", codePage);
        const std::wstring file = folder() / L"output.txt";
        {
            const RedirectedOutput output(system(), file);
            NATIVE(getProcessCommandLineArguments)(jlong{child.id}, true);
        }
        const std::string printed = readFile(file);
        return printed.substr(printed.rfind("\r\n", printed.size() - 3) + 2);
    }
};

TEST_F(VerboseLines, ArriveWholeWithWhatTheirCodePageLacks) {
    const std::string line = lastLine(L"wait for \u00e4\u20ac\u4e2d\U0001F600 and so on", 1252);

    const std::string text = "wait for \xE4\x80\\u4E2D\\uD83D\\uDE00 and so on\r\n";
    EXPECT_TRUE(line.ends_with(text)) << line;
}

TEST_F(VerboseLines, ArriveInUtf8WhereThatIsTheCodePage) {
    const std::string line = lastLine(L"wait for \u00e4\u20ac\u4e2d\U0001F600 and so on", CP_UTF8);

    const std::string text = toUtf8(L"wait for \u00e4\u20ac\u4e2d\U0001F600 and so on\r\n");
    EXPECT_TRUE(line.ends_with(text)) << line;
}

}  // namespace
