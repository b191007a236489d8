// Security descriptors read as text.
#include "descriptors.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class DescriptorTextTest : public WinUtilTest {
protected:
    DescriptorTextTest() { writeFile(folder() / L"file", "content"); }

    JavaObject listener() {
        return java.collector("fireFileErrorEvent", "(Ljava/lang/String;Ljava/lang/String;)V",
                              [this](const Arguments& arguments) {
                                  events.push_back(arguments[0].text() + L": " + arguments[1].text());
                              });
    }

    std::vector<std::wstring> events;
};

TEST_F(DescriptorTextTest, GivesTheTextThatTheSystemGives) {
    const std::wstring path = folder() / L"file";
    std::vector<std::byte> descriptor(4096);
    DWORD needed = 0;
    ASSERT_TRUE(GetFileSecurityW(path.c_str(), 7, descriptor.data(), 4096, &needed));

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(path, 7, listener()).text(), textOf(descriptor.data(), 7));
    EXPECT_THAT(NATIVE(getWinSecurityDescriptor)(path, 4, nullptr).text(), StartsWith(L"D:"));
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(DescriptorTextTest, LeavesTheChoiceOfPartsToTheCaller) {
    const auto read = system().watch("GetFileSecurityW");

    NATIVE(getWinSecurityDescriptor)(folder() / L"file", 15, nullptr);

    EXPECT_EQ(read.calls().at(0).argument<DWORD>(1), 15u);
}

TEST_F(DescriptorTextTest, ReadsByTheLongFormWhenTheAttributesCannotBeRead) {
    const auto attributes = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);
    std::vector<std::wstring> paths;
    const auto read =
        REPLACE(GetFileSecurityW, [&](LPCWSTR path, SECURITY_INFORMATION parts,
                                      PSECURITY_DESCRIPTOR descriptor, DWORD size, LPDWORD needed) {
            paths.emplace_back(path);
            return REAL(GetFileSecurityW)(path, parts, descriptor, size, needed);
        });

    const JavaObject text = NATIVE(getWinSecurityDescriptor)(folder() / L"file", 7, nullptr);

    EXPECT_THAT(text.text(), StartsWith(L"O:"));
    EXPECT_THAT(paths, ElementsAre(L"\\\\?\\" + (folder() / L"file")));
}

TEST_F(DescriptorTextTest, TellsTheListenerWhatCannotBeReadAndGivesAnEmptyText) {
    const std::wstring path = folder() / L"missing";
    const auto named = system().answer("GetNamedSecurityInfoW", ERROR_FILE_NOT_FOUND);
    const auto convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE,
                                         ERROR_INVALID_SECURITY_DESCR);

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(path, 7, listener()).text(), L"");

    EXPECT_THAT(events, ElementsAre(path + L": " + systemText(ERROR_INVALID_SECURITY_DESCR)));
}

TEST_F(DescriptorTextTest, ReadsNothingOnASystemOlderThanVersion5) {
    const auto version = REPLACE(GetVersionExA, [](LPOSVERSIONINFOA info) {
        EXPECT_EQ(info->dwOSVersionInfoSize, 148u);
        info->dwMajorVersion = 4;
        SetLastError(ERROR_OLD_WIN_VERSION);
        return TRUE;
    });

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(folder() / L"file", 7, listener()).text(), L"");

    EXPECT_THAT(events, ElementsAre((folder() / L"file") + L": " + systemText(ERROR_OLD_WIN_VERSION)));
    EXPECT_EQ(system().count("GetFileSecurityW"), 0u);
}

TEST_F(DescriptorTextTest, ReadsNothingWhenTheVersionCannotBeTold) {
    const auto version = system().answer("GetVersionExA", FALSE, ERROR_INVALID_PARAMETER);

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(folder() / L"file", 7, listener()).text(), L"");

    EXPECT_THAT(events, ElementsAre((folder() / L"file") + L": " + systemText(ERROR_INVALID_PARAMETER)));
}

TEST_F(DescriptorTextTest, GivesAnEmptyTextWithoutAListener) {
    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(folder() / L"missing", 7, nullptr).text(), L"");
}

TEST_F(DescriptorTextTest, GivesNoneWithoutMemoryForTheReportsOrThePath) {
    for (const std::size_t k : {1, 2}) {
        const auto memory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(NATIVE(getWinSecurityDescriptor)(folder() / L"file", 7, listener()));
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
    }
    java.failCall("GetStringChars", 1);
    EXPECT_FALSE(NATIVE(getWinSecurityDescriptor)(folder() / L"file", 7, listener()));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(system().count("GetFileSecurityW"), 0u);
}

TEST_F(DescriptorTextTest, TellsTheListenerThatThereIsNoMemoryForTheLongForm) {
    const auto attributes = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);
    const auto memory = system().failCall("malloc", 3, ERROR_INVALID_DATA);

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(L"C:\\x", 7, listener()).text(), L"");

    EXPECT_THAT(events, ElementsAre(L"C:\\x: " + systemText(ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("GetFileSecurityW") + system().count("GetNamedSecurityInfoW"), 0u);
}

TEST_F(DescriptorTextTest, GivesAnEmptyTextAndTheErrorOfAListenerWithoutTheMethod) {
    const JavaObject mute = java.object("java/lang/Object");

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(folder() / L"missing", 7, mute).text(), L"");

    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
}

TEST_F(DescriptorTextTest, PassesTheListenersOwnExceptionOn) {
    const JavaObject listener = java.collector(
        "fireFileErrorEvent", "(Ljava/lang/String;Ljava/lang/String;)V", [this](const Arguments&) {
            throw JavaThrow{java.exception("java/lang/RuntimeException", L"enough")};
        });

    NATIVE(getWinSecurityDescriptor)(folder() / L"missing", 7, listener);

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/RuntimeException", L"enough"}));
}

TEST_F(DescriptorTextTest, TellsTheListenerNothingWhenTheJvmHasNoMemoryForTheResult) {
    java.failCall("NewString");

    EXPECT_FALSE(NATIVE(getWinSecurityDescriptor)(folder() / L"missing", 7, listener()));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(events, IsEmpty());
}

}  // namespace
