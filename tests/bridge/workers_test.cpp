// The bridge's workers themselves, for what no native method asks of them.
#include "winutil_fixture.h"

#include "bridge/arguments.h"
#include "bridge/errors.h"
#include "bridge/ex_callback.h"
#include "bridge/java_strings.h"
#include "bridge/java_times.h"
#include "bridge/paths.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

class WorkersTest : public WinUtilTest {
protected:
    // Runs something as a native method would: what it leaves fails the test.
    template <class Body>
    void asNative(Body body) {
        java.enterNative("a worker");
        body();
        java.leaveNative(nullptr);
    }

    static std::wstring longForm(const std::wstring& path) { return winutil::toLongPath(path.c_str()).get(); }
};

TEST_F(WorkersTest, LongFormsHaveRoomForAnyPath) {
    const std::wstring path = std::wstring(40000, L'a') + L'/' + std::wstring(40000, L'b');

    EXPECT_EQ(longForm(L"C:/" + path),
              L"\\\\?\\C:\\" + std::wstring(40000, L'a') + L'\\' + std::wstring(40000, L'b'));
    EXPECT_EQ(longForm(L"\\\\?\\" + path), L"\\\\?\\" + path);
}

TEST_F(WorkersTest, LongFormsHaveTheRoomThatIsAskedForBehindThem) {
    for (const wchar_t* path : {L"C:/x", L"\\\\s\\x", L"\\\\?\\C:\\x", L"\\\\.\\x"}) {
        const winutil::WideString text = winutil::toLongPath(path, 100);
        const std::size_t length = std::wcslen(text.get());
        std::wmemset(text.get() + length, L'y', 100);
        text.get()[length + 100] = L'\0';

        EXPECT_EQ(std::wstring(text.get()).substr(length), std::wstring(100, L'y'));
    }
}

struct Time {
    std::int64_t units;
    std::int64_t milliseconds;
};

class TimeTest : public ::testing::TestWithParam<Time> {};

TEST_P(TimeTest, IsCutTowardsZeroBeforeTheEpochsAreMoved) {
    const auto bits = static_cast<std::uint64_t>(GetParam().units);
    const FILETIME time = {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};

    EXPECT_EQ(winutil::toJavaTime(time), GetParam().milliseconds);
}

INSTANTIATE_TEST_SUITE_P(Times, TimeTest,
                         ::testing::Values(Time{116444736000000000, 0}, Time{116444735999990001, -1},
                                           Time{116444735999990000, -1}, Time{116444735999989999, -2},
                                           Time{116444736000009999, 0}, Time{116444736000010000, 1},
                                           Time{0, -11644473600000}, Time{-9999, -11644473600000},
                                           Time{-10000, -11644473600001},
                                           Time{INT64_MAX, 922337203685477 - 11644473600000},
                                           Time{INT64_MIN, -922337203685477 - 11644473600000}));

TEST_F(WorkersTest, JavaTimesBecomeSystemTimesWithoutARangeCheck) {
    const auto units = [](std::int64_t milliseconds) {
        const FILETIME time = winutil::fromJavaTime(milliseconds);
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };

    EXPECT_EQ(units(0), 116444736000000000u);
    EXPECT_EQ(units(-1), 116444735999990000u);
    EXPECT_EQ(units(1234567890123), 128790414901230000u);
    EXPECT_EQ(units(-11644473600001), static_cast<std::uint64_t>(-10000));
    EXPECT_EQ(units(INT64_MAX), (static_cast<std::uint64_t>(INT64_MAX) + 11644473600000u) * 10000u);
}

TEST_F(WorkersTest, NothingIsThrownWithoutAnEnvironment) {
    winutil::throwIOException(nullptr, L"x");
    winutil::throwFileNotFoundException(nullptr, L"x");
    winutil::throwSharingViolationException(nullptr, L"x");
    winutil::throwDiskFullException(nullptr, L"x");
    winutil::throwSecurityException(nullptr, L"x");
    winutil::throwRuntimeException(nullptr, L"x");
    winutil::throwAccountRestrictionException(nullptr, L"x");

    EXPECT_FALSE(java.isPending());
}

TEST_F(WorkersTest, ExceptionsCarryTextsOfAnyLength) {
    const std::wstring text = std::wstring(20000, L'x') + L"\xD83D\xDE00";

    asNative([&] { winutil::throwAccountRestrictionException(java.env(), text.c_str()); });

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/kel/util/UtilException$AccountRestrictionException", text}));

    asNative([&] { winutil::throwIOException(java.env(), L""); });
    EXPECT_EQ(java.takeException(), ioException(L""));
}

TEST_F(WorkersTest, MessagesMayHaveATextInFront) {
    wchar_t buffer[4096];

    winutil::formatWin32Error(L"", L"Tag", 5, buffer, std::size(buffer));
    EXPECT_EQ(buffer, L" Tag (5) " + systemText(5));

    winutil::formatWin32Error(L"Path x", L"Tag", 5, buffer, std::size(buffer));
    EXPECT_EQ(buffer, L"Path x Tag (5) " + systemText(5));
    // Room for the fixed text alone.
    DWORD wordy = 1;
    while (wordy < 20000 && systemText(wordy).size() <= std::size(winutil::noSystemText)) {
        ++wordy;
    }
    ASSERT_LT(wordy, 20000u);
    const std::wstring fixed = L"Path x Tag (" + std::to_wstring(wordy) + L") Failed to obtain error message";
    winutil::formatWin32Error(L"Path x", L"Tag", wordy, buffer, fixed.size() + 1);
    EXPECT_EQ(buffer, fixed);

    winutil::formatWin32Error(L"Path x", L"Tag", 0xEFFFFFFF, buffer, std::size(buffer));
    EXPECT_STREQ(buffer, L"Path x Tag (-268435457) Failed to obtain error message");
}

TEST_F(WorkersTest, AnsiTextsBecomeWideOnes) {
    wchar_t wide[8] = L"before";

    winutil::ansiToWide(nullptr, "x", 8);
    winutil::ansiToWide(wide, nullptr, 8);
    EXPECT_STREQ(wide, L"before");

    winutil::ansiToWide(wide, "after", 8);
    EXPECT_STREQ(wide, L"after");

    winutil::ansiToWide(wide, "", 8);
    EXPECT_STREQ(wide, L"");
}

class ArgumentsTest : public WorkersTest {
protected:
    jstring given(const JavaObject& text) { return static_cast<jstring>(java.reference(text)); }
};

TEST_F(ArgumentsTest, ArePassedInTheirOrderAndGivenBack) {
    asNative([this] {
        const winutil::Arguments arguments(java.env(), winutil::wide(given(java.string(L"one"))),
                                           winutil::narrow(given(java.string(L"two"))),
                                           winutil::inPlace(given(java.string(L"three"))));

        ASSERT_TRUE(arguments);
        arguments.pass([](const wchar_t* one, const char* two, wchar_t* three) {
            EXPECT_STREQ(one, L"one");
            EXPECT_STREQ(two, "two");
            EXPECT_STREQ(three, L"three");
            return 0;
        });
        EXPECT_STREQ(arguments.get<1>(), "two");
    });
}

TEST_F(ArgumentsTest, OfNullAreNoLackOfMemory) {
    asNative([this] {
        const winutil::Arguments arguments(java.env(), winutil::wide(nullptr), winutil::wideOrEmpty(nullptr),
                                           winutil::inPlace(nullptr), winutil::narrow(nullptr));

        ASSERT_TRUE(arguments);
        EXPECT_EQ(arguments.get<0>(), nullptr);
        EXPECT_STREQ(arguments.get<1>(), L"");
        EXPECT_EQ(arguments.get<2>(), nullptr);
        EXPECT_EQ(arguments.get<3>(), nullptr);
    });
}

TEST_F(ArgumentsTest, AreNotTakenBehindOneThatThereIsNoMemoryFor) {
    const JavaObject text = java.string(L"x");
    java.failCall("GetStringChars", 2);
    asNative([&] {
        const winutil::Arguments arguments(java.env(), winutil::wide(given(text)), winutil::wide(given(text)),
                                           winutil::narrow(given(text)));

        EXPECT_FALSE(arguments);
    });

    EXPECT_EQ(java.count("GetStringChars"), 2u);
    EXPECT_EQ(java.count("GetStringUTFChars"), 0u);
}

TEST_F(ArgumentsTest, ThatAreSecretAreWipedInTheCopiesOfTheJvm) {
    asNative([this] {
        const winutil::Arguments arguments(java.env(), winutil::wide(given(java.string(L"open"))),
                                           winutil::wideSecret(given(java.string(L"secret"))),
                                           winutil::inPlaceSecret(given(java.string(L"secret"))),
                                           winutil::narrowSecret(given(java.string(L"secret"))));
        EXPECT_TRUE(arguments);
    });

    std::size_t secrets = 0;
    for (const auto& [string, wiped] : java.stringReleases()) {
        EXPECT_EQ(wiped, string.text() == L"secret");
        secrets += wiped ? 1 : 0;
    }
    EXPECT_EQ(secrets, 3u);
}

class CallbackTest : public WorkersTest {
protected:
    JavaObject listener() {
        return java.collector("fireFileErrorEvent", "(Ljava/lang/String;Ljava/lang/String;)V",
                              [this](const Arguments& arguments) {
                                  events.push_back(arguments[0].text() + L"|" + arguments[1].text());
                              });
    }

    // Fires one event at a listener; whether the listener could be told.
    bool fire(const JavaObject& receiver) {
        bool told = false;
        asNative([&] {
            winutil::CExCallback callback(java.env(), nullptr, java.reference(receiver));
            told = callback.fireFileErrorEvent(L"C:\\x", L"denied\r\n");
        });
        return told;
    }

    std::vector<std::wstring> events;
};

TEST_F(CallbackTest, TellsTheListenerPathAndMessage) {
    EXPECT_TRUE(fire(listener()));

    EXPECT_THAT(events, ElementsAre(L"C:\\x|denied\r\n"));
}

TEST_F(CallbackTest, DoesNothingWithoutListenerOrEnvironment) {
    EXPECT_TRUE(fire(nullptr));
    winutil::CExCallback callback(nullptr, nullptr, java.reference(listener()));
    EXPECT_TRUE(callback.fireFileErrorEvent(L"x", L"y"));

    EXPECT_EQ(java.count("GetObjectClass"), 0u);
    EXPECT_TRUE(events.empty());
}

TEST_F(CallbackTest, LeavesTheErrorOfAListenerWithoutTheMethod) {
    EXPECT_FALSE(fire(java.object("java/lang/Object")));

    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
    EXPECT_EQ(java.count("NewString"), 0u);
    EXPECT_EQ(java.count("ExceptionClear"), 0u);
}

TEST_F(CallbackTest, LeavesWhatTheListenerThrows) {
    const Exception thrown = java.exception("java/lang/IllegalStateException", L"enough");
    const JavaObject receiver =
        java.collector("fireFileErrorEvent", "(Ljava/lang/String;Ljava/lang/String;)V",
                       [&](const Arguments&) { throw JavaThrow{thrown}; });

    EXPECT_TRUE(fire(receiver));

    EXPECT_EQ(java.takeExceptionObject(), thrown);
}

TEST_F(CallbackTest, CallsNobodyWhenTheJvmHasNoMemoryForTheTexts) {
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("NewString", k);

        EXPECT_TRUE(fire(listener()));

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    }
    EXPECT_TRUE(events.empty());
}

}  // namespace
