// Short names made long, and variables in paths.
#include <functional>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

// What a call that fills a buffer does: the result, after it wrote what it wants to.
using Fill = std::function<DWORD(wchar_t* buffer, DWORD capacity)>;

// Writes a text and its terminator, and answers with its length.
Fill writes(const std::wstring& text) {
    return [text](wchar_t* buffer, DWORD capacity) {
        EXPECT_LT(text.size(), capacity);
        text.copy(buffer, text.size());
        buffer[text.size()] = L'\0';
        return static_cast<DWORD>(text.size());
    };
}

Fill answers(DWORD result) {
    return [result](wchar_t*, DWORD) { return result; };
}

std::wstring letters(std::size_t count) {
    return std::wstring(count, L'y');
}

class LongPathNameTest : public WinUtilTest {
protected:
    // The calls do, one after the other, what the fills say.
    Replacement script(std::vector<Fill> fills) {
        return REPLACE(GetLongPathNameW, [this, fills](LPCWSTR path, LPWSTR buffer, DWORD capacity) {
            EXPECT_STREQ(path, L"C:\\SHORT~1");
            capacities.push_back(capacity);
            return fills.at(capacities.size() - 1)(buffer, capacity);
        });
    }

    JavaObject ask() { return NATIVE(getLongPathName)(given); }

    JavaObject given = java.string(L"C:\\SHORT~1");
    std::vector<DWORD> capacities;
};

TEST_F(LongPathNameTest, GivesWhatTheSystemWrites) {
    const auto scripted = script({writes(L"C:\\Short name")});

    EXPECT_EQ(ask().text(), L"C:\\Short name");

    EXPECT_THAT(capacities, ElementsAre(512u));
}

TEST_F(LongPathNameTest, IsThePathItselfWhereTheSystemFails) {
    const auto scripted = script({answers(0)});

    EXPECT_EQ(ask(), given);

    EXPECT_THAT(capacities, ElementsAre(512u));
}

TEST_F(LongPathNameTest, TakesTheBufferForAnyAnswerUpToItsSize) {
    const auto scripted = script({writes(letters(511)), [](wchar_t* buffer, DWORD capacity) {
                                      writes(letters(511))(buffer, capacity);
                                      return 512ul;
                                  }});

    EXPECT_EQ(ask().text(), letters(511));
    EXPECT_EQ(ask().text(), letters(511));

    EXPECT_THAT(capacities, ElementsAre(512u, 512u));
}

TEST_F(LongPathNameTest, AsksAgainWithTheSizeThatTheSystemWants) {
    const auto scripted =
        script({answers(513), writes(letters(512)), answers(32767), writes(letters(32766))});

    EXPECT_EQ(ask().text(), letters(512));
    EXPECT_EQ(ask().text(), letters(32766));

    EXPECT_THAT(capacities, ElementsAre(512u, 513u, 512u, 32767u));
}

TEST_F(LongPathNameTest, GivesAsManyCharactersAsTheSecondCallCounts) {
    const auto scripted = script({answers(600),
                                  [](wchar_t* buffer, DWORD capacity) {
                                      std::fill_n(buffer, capacity, L'z');
                                      return capacity;
                                  },
                                  answers(600), writes(L"C:\\shrunk")});

    EXPECT_EQ(ask().text(), std::wstring(600, L'z'));
    EXPECT_EQ(ask().text(), L"C:\\shrunk");
}

TEST_F(LongPathNameTest, IsThePathItselfWhenTheSecondCallFailsOrWantsMore) {
    const auto scripted = script({answers(600), answers(0), answers(600), answers(601)});

    EXPECT_EQ(ask(), given);
    EXPECT_EQ(ask(), given);

    EXPECT_THAT(capacities, ElementsAre(512u, 600u, 512u, 600u));
}

TEST_F(LongPathNameTest, IsThePathItselfWithoutMemory) {
    const auto scripted = script({answers(600)});
    for (std::size_t k = 1; k <= 2; ++k) {
        const auto fail = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_EQ(ask(), given) << "allocation " << k;
    }

    EXPECT_EQ(capacities.size(), 1u);
}

TEST_F(LongPathNameTest, LeavesTheJvmsErrorWhenItHasNoMemoryForTheResult) {
    const auto scripted = script({writes(L"x")});
    java.failCall("NewString");

    EXPECT_FALSE(ask());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(LongPathNameTest, KeepsTheNameOfARealFileAndOfAMissingOne) {
    writeFile(folder() / L"Real name.txt", "content");
    const JavaObject missing = java.string(folder() / L"missing");

    EXPECT_EQ(NATIVE(getLongPathName)(folder() / L"Real name.txt").text(), folder() / L"Real name.txt");
    EXPECT_EQ(NATIVE(getLongPathName)(missing), missing);
    EXPECT_EQ(NATIVE(getLongPathName)(L"").text(), L"");
}

TEST_F(LongPathNameTest, GivesTheLongFormOfARealShortName) {
    const std::wstring path = folder() / L"A name that is long.text";
    writeFile(path, "content");
    wchar_t shortName[MAX_PATH];
    ASSERT_GT(GetShortPathNameW(path.c_str(), shortName, MAX_PATH), 0u);
    ASSERT_NE(path, shortName);
    wchar_t longName[MAX_PATH];
    ASSERT_GT(GetLongPathNameW(shortName, longName, MAX_PATH), 0u);

    const std::wstring result = NATIVE(getLongPathName)(shortName).text();

    EXPECT_EQ(result, longName);
    EXPECT_TRUE(result.ends_with(L"\\A name that is long.text"));
}

class VariablesTest : public WinUtilTest {
protected:
    Replacement script(std::vector<Fill> fills) {
        return REPLACE(ExpandEnvironmentStringsW, [this, fills](LPCWSTR text, LPWSTR buffer, DWORD capacity) {
            EXPECT_STREQ(text, L"%x%");
            capacities.push_back(capacity);
            return fills.at(capacities.size() - 1)(buffer, capacity);
        });
    }

    static Fill fails(DWORD code) {
        return [code](wchar_t*, DWORD) {
            SetLastError(code);
            return 0ul;
        };
    }

    // Writes a text; the answer counts the terminator.
    static Fill expandsTo(const std::wstring& text) {
        return [text](wchar_t* buffer, DWORD capacity) { return writes(text)(buffer, capacity) + 1; };
    }

    JavaObject ask() { return NATIVE(CovertEnvPathToFilePath)(L"%x%"); }

    static Thrown thrown(DWORD code) {
        return {"java/lang/RuntimeException", errorMessage(L"CovertEnvPathToFilePath", code)};
    }

    std::vector<DWORD> capacities;
};

TEST_F(VariablesTest, AreReplacedByTheirValues) {
    SetEnvironmentVariableW(L"WINUTIL_TEST", L"C:\\data \x00E4\xD83D\xDE00");

    EXPECT_EQ(NATIVE(CovertEnvPathToFilePath)(L"%WINUTIL_TEST%\\x;%winutil_test%").text(),
              L"C:\\data \x00E4\xD83D\xDE00\\x;C:\\data \x00E4\xD83D\xDE00");

    SetEnvironmentVariableW(L"WINUTIL_TEST", nullptr);
}

TEST_F(VariablesTest, StayAsWrittenWhenTheyAreUndefined) {
    EXPECT_EQ(NATIVE(CovertEnvPathToFilePath)(L"%no such variable%\\x").text(), L"%no such variable%\\x");
    EXPECT_EQ(NATIVE(CovertEnvPathToFilePath)(L"C:/plain 100%").text(), L"C:/plain 100%");
    EXPECT_EQ(NATIVE(CovertEnvPathToFilePath)(L"").text(), L"");
}

TEST_F(VariablesTest, MayHaveLongValues) {
    const std::wstring value = letters(5000);
    SetEnvironmentVariableW(L"WINUTIL_TEST", value.c_str());

    EXPECT_EQ(NATIVE(CovertEnvPathToFilePath)(L"%WINUTIL_TEST%%WINUTIL_TEST%").text(), value + value);

    SetEnvironmentVariableW(L"WINUTIL_TEST", nullptr);
}

TEST_F(VariablesTest, FitTheFirstBufferUpToItsSize) {
    const auto scripted = script({expandsTo(letters(4095))});

    EXPECT_EQ(ask().text(), letters(4095));

    EXPECT_THAT(capacities, ElementsAre(4096u));
}

TEST_F(VariablesTest, AreExpandedAgainAtTheSizeThatTheSystemWants) {
    const auto scripted = script({answers(4097), expandsTo(letters(4096))});

    EXPECT_EQ(ask().text(), letters(4096));

    EXPECT_THAT(capacities, ElementsAre(4096u, 4097u));
}

TEST_F(VariablesTest, MayShrinkBetweenTheTwoCalls) {
    const auto scripted = script({answers(5000), expandsTo(L"short now")});

    EXPECT_EQ(ask().text(), L"short now");
}

TEST_F(VariablesTest, ThrowWhenTheyGrowBetweenTheTwoCalls) {
    const auto scripted = script({answers(5000), answers(5001)});

    EXPECT_FALSE(ask());

    EXPECT_EQ(java.takeException(), thrown(ERROR_INSUFFICIENT_BUFFER));
}

TEST_F(VariablesTest, ThrowWithTheCodeOfTheCallThatFails) {
    const auto scripted = script({fails(ERROR_INVALID_DATA), answers(5000), fails(ERROR_ACCESS_DENIED)});

    EXPECT_FALSE(ask());
    EXPECT_EQ(java.takeException(), thrown(ERROR_INVALID_DATA));

    EXPECT_FALSE(ask());
    EXPECT_EQ(java.takeException(), thrown(ERROR_ACCESS_DENIED));
}

TEST_F(VariablesTest, ThrowWithoutMemory) {
    const auto scripted = script({answers(5000)});
    for (std::size_t k = 1; k <= 2; ++k) {
        const auto fail = system().failCall("malloc", k, ERROR_INVALID_DATA);

        EXPECT_FALSE(ask()) << "allocation " << k;

        EXPECT_EQ(java.takeException(), thrown(ERROR_NOT_ENOUGH_MEMORY));
    }
}

TEST_F(VariablesTest, LeaveTheJvmsErrorWhenItHasNoMemoryForTheResult) {
    java.failCall("NewString");

    EXPECT_FALSE(NATIVE(CovertEnvPathToFilePath)(L"x"));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

}  // namespace
