// Environment variables and special folders.
#include <windows.h>

#include <shlobj.h>

#include <cstdlib>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

// The C runtime's function, which has overloads in C++.
using GetEnvironment = errno_t(std::size_t*, wchar_t*, std::size_t, const wchar_t*);

class Environment : public WinUtilTest {
protected:
    // A C runtime whose environment has one variable.
    Replacement know(const std::wstring& known, const std::wstring& value) {
        return system().replace<GetEnvironment>(
            "_wgetenv_s", [this, known, value](std::size_t* size, wchar_t* buffer, std::size_t capacity,
                                               const wchar_t* name) {
                capacities.push_back(capacity);
                *size = name == known ? value.size() + 1 : 0;
                if (*size > capacity) {
                    return ERANGE;
                }
                if (*size > 0) {
                    std::wcscpy(buffer, value.c_str());
                }
                return 0;
            });
    }

    JavaObject get(const std::wstring& name) { return NATIVE(getEnv)(name); }

    std::vector<std::size_t> capacities;
};

TEST_F(Environment, HasTheVariablesThatTheProcessBeganWith) {
    ASSERT_NE(_wgetenv(L"SystemRoot"), nullptr);

    EXPECT_EQ(get(L"SystemRoot").text(), _wgetenv(L"SystemRoot"));
    EXPECT_EQ(get(L"systemroot").text(), _wgetenv(L"SystemRoot"));
}

TEST_F(Environment, GivesNullForAVariableThatIsNotSet) {
    EXPECT_FALSE(get(L"WINUTIL_TEST_NOT_SET"));
    EXPECT_FALSE(get(L""));
    EXPECT_FALSE(java.isPending());
}

TEST_F(Environment, GivesNullForANameThatIsTooLongForOne) {
    const auto look = system().watch("_wgetenv_s");

    EXPECT_FALSE(get(std::wstring(32'767, L'n')));
    EXPECT_EQ(look.count(), 0u);

    EXPECT_FALSE(get(std::wstring(32'766, L'n')));
    EXPECT_EQ(look.count(), 1u);
}

TEST_F(Environment, IsAskedForTheSizeFirst) {
    const auto known = know(L"NAME", L"v\u00E4lue");

    EXPECT_EQ(get(L"NAME").text(), L"v\u00E4lue");

    EXPECT_THAT(capacities, ElementsAre(0u, 6u));
}

TEST_F(Environment, HasEmptyAndLongValues) {
    const std::wstring longest(32'767, L'v');
    {
        const auto known = know(L"NAME", L"");
        EXPECT_EQ(get(L"NAME").text(), L"");
    }
    const auto known = know(L"NAME", longest);
    EXPECT_EQ(get(L"NAME").text(), longest);
}

// Not every runtime reports the size with the same result.
TEST_F(Environment, GoesByTheSizeNotByTheResultOfTheFirstLook) {
    const auto look = system().replace<GetEnvironment>(
        "_wgetenv_s", [](std::size_t* size, wchar_t* buffer, std::size_t, const wchar_t*) {
            *size = 2;
            if (buffer == nullptr) {
                return 0;
            }
            std::wcscpy(buffer, L"v");
            return 0;
        });

    EXPECT_EQ(get(L"NAME").text(), L"v");
}

TEST_F(Environment, GivesNullForAVariableThatGrowsBetweenTheLooks) {
    const auto look = system().replace<GetEnvironment>(
        "_wgetenv_s", [](std::size_t* size, wchar_t*, std::size_t capacity, const wchar_t*) {
            *size = capacity + 10;
            return ERANGE;
        });

    EXPECT_FALSE(get(L"NAME"));
}

// Null would say that the variable is not set.
TEST_F(Environment, GivesNoAnswerWithoutMemory) {
    const auto known = know(L"NAME", L"value");
    for (const char* function : {"calloc", "malloc"}) {
        const auto allocate = system().answer(function, 0, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(get(L"NAME"));
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function;
    }
    java.failCall("GetStringChars");
    EXPECT_FALSE(get(L"NAME"));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(Environment, IsChangedForTheSystem) {
    NATIVE(setEnvironmentVariable)(L"WINUTIL_TEST_SET", L"v\u00E4lue \u20AC");

    wchar_t value[16] = {};
    EXPECT_EQ(GetEnvironmentVariableW(L"WINUTIL_TEST_SET", value, 16), 7u);
    EXPECT_STREQ(value, L"v\u00E4lue \u20AC");
    SetEnvironmentVariableW(L"WINUTIL_TEST_SET", nullptr);
}

TEST_F(Environment, LosesAVariableWithoutAValue) {
    SetEnvironmentVariableW(L"WINUTIL_TEST_SET", L"value");

    NATIVE(setEnvironmentVariable)(L"WINUTIL_TEST_SET", nullptr);

    EXPECT_EQ(GetEnvironmentVariableW(L"WINUTIL_TEST_SET", nullptr, 0), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ENVVAR_NOT_FOUND});
}

TEST_F(Environment, IsNotChangedInTheCopyOfTheCRuntime) {
    NATIVE(setEnvironmentVariable)(L"WINUTIL_TEST_SET", L"value");

    EXPECT_FALSE(get(L"WINUTIL_TEST_SET"));

    SetEnvironmentVariableW(L"WINUTIL_TEST_SET", nullptr);
}

TEST_F(Environment, HasNoVariableWithoutAName) {
    NATIVE(setEnvironmentVariable)(L"", L"value");

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"SetEnvironmentVariableW", ERROR_INVALID_PARAMETER)));
}

TEST_F(Environment, RaisesTheCodeOfAChangeThatFails) {
    const auto set = system().answer("SetEnvironmentVariableW", FALSE, ERROR_ENVVAR_NOT_FOUND);

    NATIVE(setEnvironmentVariable)(L"NAME", L"value");

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"SetEnvironmentVariableW", ERROR_ENVVAR_NOT_FOUND)));
}

TEST_F(Environment, RaisesAChangeThatFailsWithoutACode) {
    const auto set = system().answer("SetEnvironmentVariableW", FALSE, NO_ERROR);

    NATIVE(setEnvironmentVariable)(L"NAME", L"value");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetEnvironmentVariableW", NO_ERROR)));
}

TEST_F(Environment, SaysSoWhenTheSystemHasNoTextForTheCode) {
    const auto set = system().answer("SetEnvironmentVariableW", FALSE, 0x7000DEAD);

    NATIVE(setEnvironmentVariable)(L"NAME", L"value");

    EXPECT_EQ(java.takeException(),
              ioException(L"[SetEnvironmentVariableW] (1879105197) Failed to obtain error message"));
}

class ChangeWithoutMemory : public Environment, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(ChangeWithoutMemory, IsRaised) {
    const auto allocate = system().failCall("malloc", GetParam(), ERROR_NOT_ENOUGH_MEMORY);

    NATIVE(setEnvironmentVariable)(L"NAME", L"value");

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"SetEnvironmentVariableW", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("SetEnvironmentVariableW"), 0u);
}

TEST_P(ChangeWithoutMemory, OfJavaIsRaisedAlike) {
    java.failCall("GetStringChars", GetParam());

    NATIVE(setEnvironmentVariable)(L"NAME", L"value");

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"SetEnvironmentVariableW", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("SetEnvironmentVariableW"), 0u);
}

INSTANTIATE_TEST_SUITE_P(ForOneText, ChangeWithoutMemory, ::testing::Values(1, 2));

using SpecialFolder = WinUtilTest;

TEST_F(SpecialFolder, IsWhereTheSystemSays) {
    for (const int folder : {CSIDL_WINDOWS, CSIDL_SYSTEM, CSIDL_APPDATA, CSIDL_PROGRAM_FILES}) {
        wchar_t expected[MAX_PATH] = {};
        ASSERT_EQ(SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, expected), S_OK);

        EXPECT_EQ(NATIVE(getSHfolderPath)(folder).text(), expected);
    }
}

TEST_F(SpecialFolder, IsNullForANumberThatIsNone) {
    EXPECT_FALSE(NATIVE(getSHfolderPath)(0x7F));
    EXPECT_FALSE(java.isPending());
}

TEST_F(SpecialFolder, IsAskedForAsItIsToday) {
    const auto look =
        REPLACE(SHGetFolderPathW, [](HWND window, int folder, HANDLE token, DWORD flags, LPWSTR path) {
            EXPECT_EQ(window, nullptr);
            EXPECT_EQ(folder, 26);
            EXPECT_EQ(token, nullptr);
            EXPECT_EQ(flags, DWORD{SHGFP_TYPE_CURRENT});
            EXPECT_EQ(std::wstring(path, 512), std::wstring(512, L'\0'));
            std::wcscpy(path, L"C:\\data");
            return S_OK;
        });

    EXPECT_EQ(NATIVE(getSHfolderPath)(26).text(), L"C:\\data");
}

class FolderResult : public WinUtilTest, public ::testing::WithParamInterface<HRESULT> {};

TEST_P(FolderResult, OtherThanOkGivesNull) {
    const auto look = REPLACE(SHGetFolderPathW, [](HWND, int, HANDLE, DWORD, LPWSTR path) {
        std::wcscpy(path, L"C:\\not there");
        return GetParam();
    });

    EXPECT_FALSE(NATIVE(getSHfolderPath)(26));
}

INSTANTIATE_TEST_SUITE_P(Results, FolderResult, ::testing::Values(S_FALSE, E_FAIL, E_INVALIDARG));

}  // namespace
