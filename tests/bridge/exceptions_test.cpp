// Failures of the system as messages and as Java exceptions.
#include <cstring>

#include "system_text.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;

// One way to each exception of the library.
struct Raised {
    const char* name;
    const char* className;
    const char* call;  // that fails
    DWORD code;
};

class ExceptionTest : public WinUtilTest {
protected:
    // Lets a system call fail and calls a native method that throws for it.
    void raise(const Raised& raised) {
        const bool isOpen = std::string_view(raised.call) == "CreateFileW";
        const std::uint64_t failure = isOpen ? ~0ull : 0;
        const auto fail = system().answer(raised.call, failure, raised.code);
        const auto sleep = system().answer("Sleep", 0);
        if (isOpen) {
            NATIVE(openFile)(L"C:\\x");
        } else if (std::string_view(raised.call) == "CreateDirectoryW") {
            NATIVE(mkdir)(L"C:\\x");
        } else {
            NATIVE(CovertEnvPathToFilePath)(L"C:\\x");
        }
    }

    static std::wstring message(const Raised& raised) {
        const std::string_view call = raised.call;
        return call == "CreateFileW"        ? errorMessage(L"openFile", raised.code)
               : call == "CreateDirectoryW" ? errorMessage(L"createDir", raised.code) + L", 'C:\\x'"
                                            : errorMessage(L"CovertEnvPathToFilePath", raised.code);
    }
};

class EachExceptionTest : public ExceptionTest, public ::testing::WithParamInterface<Raised> {};

TEST_P(EachExceptionTest, IsThrownWithItsMessage) {
    raise(GetParam());

    EXPECT_EQ(java.takeException(), (Thrown{GetParam().className, message(GetParam())}));
    EXPECT_EQ(java.count("Throw"), 1u);
}

TEST_P(EachExceptionTest, LeavesTheJvmsErrorWhereItsClassIsMissing) {
    java.removeClass(GetParam().className);

    raise(GetParam());

    EXPECT_EQ(java.takeException().className, "java/lang/NoClassDefFoundError");
    EXPECT_EQ(java.count("GetMethodID"), 0u);
    EXPECT_EQ(java.count("Throw"), 0u);
}

TEST_P(EachExceptionTest, LeavesTheJvmsErrorWhereItsConstructorIsMissing) {
    java.removeMethod(GetParam().className, "<init>", "(Ljava/lang/String;)V");

    raise(GetParam());

    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
    EXPECT_EQ(java.count("NewObject"), 0u);
    EXPECT_EQ(java.count("Throw"), 0u);
}

TEST_P(EachExceptionTest, LeavesTheJvmsErrorWhereItHasNoMemory) {
    for (const char* function : {"NewString", "FindClass", "GetMethodID", "NewObject"}) {
        java.failCall(function);

        raise(GetParam());

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Classes, EachExceptionTest,
    ::testing::Values(Raised{"IO", "java/io/IOException", "CreateFileW", 5},
                      Raised{"FileNotFound", "java/io/FileNotFoundException", "CreateFileW", 2},
                      Raised{"SharingViolation", "com/qarvo/dov/io/SharingViolationException", "CreateFileW",
                             32},
                      Raised{"DiskFull", "com/qarvo/dov/io/DiskFullException", "CreateDirectoryW", 112},
                      Raised{"Security", "java/lang/SecurityException", "CreateDirectoryW", 5},
                      Raised{"Runtime", "java/lang/RuntimeException", "ExpandEnvironmentStringsW", 5}),
    [](const auto& raised) { return raised.param.name; });

// The exception of a file that cannot be opened depends on the code.
struct OpenError {
    DWORD code;
    const char* className;
};

class OpenErrorTest : public WinUtilTest, public ::testing::WithParamInterface<OpenError> {};

TEST_P(OpenErrorTest, HasTheClassThatBelongsToItsCode) {
    const auto fail = system().answer("CreateFileW", ~0ull, GetParam().code);
    const auto sleep = system().answer("Sleep", 0);

    EXPECT_EQ(NATIVE(openFile)(L"C:\\x"), 0);

    EXPECT_EQ(java.takeException(),
              (Thrown{GetParam().className, errorMessage(L"openFile", GetParam().code)}));
}

INSTANTIATE_TEST_SUITE_P(
    Codes, OpenErrorTest,
    ::testing::Values(OpenError{0, "java/io/IOException"}, OpenError{1, "java/io/IOException"},
                      OpenError{2, "java/io/FileNotFoundException"},
                      OpenError{3, "java/io/FileNotFoundException"}, OpenError{4, "java/io/IOException"},
                      OpenError{5, "java/io/IOException"},
                      OpenError{32, "com/qarvo/dov/io/SharingViolationException"},
                      OpenError{33, "java/io/IOException"},
                      OpenError{112, "com/qarvo/dov/io/DiskFullException"},
                      OpenError{123, "java/io/IOException"}, OpenError{1920, "java/io/FileNotFoundException"},
                      OpenError{1921, "java/io/IOException"}, OpenError{0x80070020, "java/io/IOException"}),
    [](const auto& error) { return "Code" + std::to_string(error.param.code); });

class MessageTest : public WinUtilTest {
protected:
    // The message of a call that fails with a code.
    std::wstring messageOf(DWORD code) {
        const auto fail = system().answer("ExpandEnvironmentStringsW", 0, code);
        NATIVE(CovertEnvPathToFilePath)(L"x");
        return java.takeException().message;
    }
};

TEST_F(MessageTest, HasTagCodeAndTheTextOfTheSystemWithItsLineEnd) {
    const std::wstring message = messageOf(ERROR_ACCESS_DENIED);

    EXPECT_EQ(message, L"[CovertEnvPathToFilePath] (5) " + systemText(ERROR_ACCESS_DENIED));
    EXPECT_TRUE(message.ends_with(L"\r\n"));
}

TEST_F(MessageTest, AsksForTheTextInTheUsersLanguage) {
    const auto ask = system().watch("FormatMessageW");

    messageOf(ERROR_ACCESS_DENIED);

    ASSERT_EQ(ask.count(), 1u);
    const RecordedCall call = ask.calls()[0];
    EXPECT_EQ(call.argument<DWORD>(0), 0x1300u);
    EXPECT_EQ(call.argument<const void*>(1), nullptr);
    EXPECT_EQ(call.argument<DWORD>(2), 5u);
    EXPECT_EQ(call.argument<DWORD>(3), 0x400u);
    EXPECT_EQ(call.argument<DWORD>(5), 0u);
    EXPECT_EQ(call.argument<const void*>(6), nullptr);
}

TEST_F(MessageTest, ShowsTheCodeAsASignedNumber) {
    constexpr DWORD codeWithoutText = 0xEFFFFFFF;
    ASSERT_EQ(systemText(codeWithoutText), L"");

    EXPECT_EQ(messageOf(codeWithoutText),
              L"[CovertEnvPathToFilePath] (-268435457) Failed to obtain error message");
    EXPECT_EQ(messageOf(0), errorMessage(L"CovertEnvPathToFilePath", 0));
}

TEST_F(MessageTest, TakesATextThatLooksLikeAFormatAsItIs) {
    const auto text = setSystemText(system(), L"%s %1 100%n");

    EXPECT_EQ(messageOf(5), L"[CovertEnvPathToFilePath] (5) %s %1 100%n");
}

TEST_F(MessageTest, IsNeverCutShort) {
    const std::wstring start = L"[CovertEnvPathToFilePath] (5) ";
    {
        const std::wstring fits(4095 - start.size(), L'x');
        const auto text = setSystemText(system(), fits);
        EXPECT_EQ(messageOf(5), start + fits);
    }
    for (const std::size_t excess : {1u, 2u, 5000u}) {
        const auto text = setSystemText(system(), std::wstring(4095 - start.size() + excess, L'x'));
        EXPECT_EQ(messageOf(5), start + L"Failed to obtain error message");
    }
}

}  // namespace
