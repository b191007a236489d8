// How a listing fails, whole or for one entry.
#include "listing_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Listing = SearchTest;
using RealListing = ListingTest;

constexpr std::uint64_t noHandle = ~0ull;

// The text that a failed listing throws: the bare one of the system, in which "invalid name" is "access
// denied".
struct FailureCode {
    DWORD code;
    DWORD shown;
};

class FailureTest : public SearchTest, public ::testing::WithParamInterface<FailureCode> {
protected:
    Thrown expected() const { return ioException(systemText(GetParam().shown)); }
};

TEST_P(FailureTest, OfTheSearchIsThrown) {
    const auto fail = system().answer("FindFirstFileW", noHandle, GetParam().code);

    list(L"C:\\dir");

    EXPECT_EQ(java.takeException(), expected());
    EXPECT_THAT(entries, IsEmpty());
    EXPECT_EQ(system().count("FindClose"), 0u);
}

TEST_P(FailureTest, BehindTheFirstEntriesIsThrownWhenTheyAreDelivered) {
    found = {foundEntry(L"a"), foundEntry(L"b")};
    endCode = GetParam().code;

    list(L"C:\\dir");

    EXPECT_EQ(java.takeException(), expected());
    EXPECT_THAT(paths(), ElementsAre(L"C:\\dir\\a", L"C:\\dir\\b"));
    EXPECT_EQ(system().count("FindClose"), 1u);
}

TEST_P(FailureTest, OfTheProbeIsThrownForAFolderInLongForm) {
    const auto fail = system().answer("GetFileAttributesExW", FALSE, GetParam().code);

    list(L"\\\\?\\C:\\dir");

    EXPECT_EQ(java.takeException(), expected());
    EXPECT_THAT(entries, IsEmpty());
    EXPECT_EQ(system().count("FindFirstFileW"), 0u);
    EXPECT_EQ(system().count("GetFileAttributesExW"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Codes, FailureTest,
                         ::testing::Values(FailureCode{123, 5}, FailureCode{5, 5}, FailureCode{2, 2},
                                           FailureCode{3, 3}, FailureCode{53, 53}),
                         [](const auto& failure) { return "Code" + std::to_string(failure.param.code); });

TEST_F(Listing, SaysThatThereIsNoTextWhereTheSystemHasNone) {
    const auto fail = system().answer("FindFirstFileW", noHandle, 0x2FFFFFFF);

    list(L"C:\\dir");

    EXPECT_EQ(java.takeException(), ioException(L"Failed to obtain error message"));
}

TEST_F(RealListing, ThrowsForAFolderThatIsNotThere) {
    list(folder() / L"missing");

    EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_PATH_NOT_FOUND)));
}

TEST_F(RealListing, ThrowsForAFile) {
    writeFile(folder() / L"file", "content");
    WIN32_FIND_DATAW data;
    ASSERT_EQ(FindFirstFileW((L"\\\\?\\" + (folder() / L"file\\*.*")).c_str(), &data), INVALID_HANDLE_VALUE);
    const DWORD code = GetLastError();
    const DWORD shown = code == ERROR_INVALID_NAME ? ERROR_ACCESS_DENIED : code;

    list(folder() / L"file");

    EXPECT_EQ(java.takeException(), ioException(systemText(shown)));
    EXPECT_THAT(entries, IsEmpty());
}

TEST_F(RealListing, ThrowsForAnyFolderInLongForm) {
    writeFile(folder() / L"file", "content");

    list(L"\\\\?\\" + folder().path());

    // The probe says "invalid name".
    EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_ACCESS_DENIED)));
    EXPECT_THAT(entries, IsEmpty());
}

TEST_F(Listing, ProbesThePatternAsGivenFirst) {
    found = {foundEntry(L"x")};
    std::vector<std::wstring> probes;
    const auto probe = REPLACE(GetFileAttributesExW, [&](LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID) {
        EXPECT_EQ(level, GetFileExInfoStandard);
        probes.emplace_back(path);
        return FALSE;
    });

    for (const wchar_t* directory : {L"C:/dir", L"C:\\dir\\", L""}) {
        list(directory);
    }

    EXPECT_THAT(probes, ElementsAre(L"C:/dir\\*.*", L"C:\\dir\\*.*", L"\\*.*"));
}

// No real folder has a probe that succeeds.
class SuccessfulProbeTest : public ListingTest {
protected:
    const Replacement probe = REPLACE(GetFileAttributesExW, [](LPCWSTR, GET_FILEEX_INFO_LEVELS, LPVOID data) {
        *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = {FILE_ATTRIBUTE_DIRECTORY, {}, {},
                                                          {0xD53E8000, 0x019DB1DE}, 1,  2};
        return TRUE;
    });
};

TEST_F(SuccessfulProbeTest, DeliversWhatItFoundWithoutASearch) {
    const auto next = system().answer("FindNextFileW", FALSE, ERROR_NO_MORE_FILES);

    list(L"C:\\dir");
    list(L"\\\\?\\C:\\dir");

    EXPECT_THAT(entries, ElementsAre(Entry{L"C:\\dir\\", true, 0x100000002, 0, 0x10, L"", false},
                                     Entry{L"\\\\?\\C:\\dir\\", true, 0x100000002, 0, 0x10, L"", false}));
    EXPECT_EQ(next.calls().at(0).argument<HANDLE>(0), INVALID_HANDLE_VALUE);
    EXPECT_EQ(system().count("FindFirstFileW"), 0u);
    EXPECT_EQ(system().count("FindClose"), 0u);
}

TEST_F(SuccessfulProbeTest, ThrowsWhenTheSystemSeesNoSearch) {
    list(L"C:\\dir");

    EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_INVALID_HANDLE)));
    EXPECT_THAT(entries, SizeIs(1));
}

// Entries whose descriptors cannot be read.
class UnreadableTest : public SearchTest {
protected:
    UnreadableTest() { found = {foundEntry(L"a"), foundEntry(L"b"), foundEntry(L"c")}; }

    // A listener without the method.
    JavaObject mute() { return java.object("java/lang/Object"); }

    std::wstring event(const std::wstring& name, DWORD code = ERROR_PRIVILEGE_NOT_HELD) const {
        return L"C:\\dir\\" + name + L"|" + systemText(code);
    }

    const Replacement read = system().answer("GetFileSecurityW", FALSE, ERROR_ACCESS_DENIED);
    const Replacement readAgain = system().answer("GetNamedSecurityInfoW", ERROR_ACCESS_DENIED);
    const Replacement convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE,
                                                ERROR_PRIVILEGE_NOT_HELD);
};

TEST_F(UnreadableTest, AreReportedAndDeliveredWithoutADescriptor) {
    listSecurity(L"C:\\dir", listener());

    EXPECT_THAT(events, ElementsAre(event(L"a"), event(L"b"), event(L"c")));
    EXPECT_THAT(entries, ElementsAre(Entry{L"C:\\dir\\a", false, 0, 0, 0x20, L"", false},
                                     Entry{L"C:\\dir\\b", false, 0, 0, 0x20, L"", false},
                                     Entry{L"C:\\dir\\c", false, 0, 0, 0x20, L"", false}));
}

TEST_F(UnreadableTest, AreReportedWithNoErrorWhenTheSecondWayFindsTheDescriptor) {
    const auto find = REPLACE(GetNamedSecurityInfoW, [](LPCWSTR, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID*,
                                                        PSID*, PACL*, PACL*, PSECURITY_DESCRIPTOR* place) {
        *place = ::LocalAlloc(LMEM_FIXED, 20);
        SetLastError(ERROR_ACCESS_DENIED);
        return static_cast<DWORD>(ERROR_SUCCESS);
    });

    listSecurity(L"C:\\dir", listener());

    EXPECT_THAT(events, ElementsAre(event(L"a", 0), event(L"b", 0), event(L"c", 0)));
    EXPECT_EQ(convert.count(), 0u);
}

TEST_F(UnreadableTest, AreReportedWithAFixedTextWhereTheSystemHasNone) {
    const auto fail =
        system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE, 0x2FFFFFFF);
    found = {foundEntry(L"a")};

    listSecurity(L"C:\\dir", listener());

    EXPECT_THAT(events, ElementsAre(L"C:\\dir\\a|Failed to obtain error message"));
}

TEST_F(UnreadableTest, AreDeliveredWithoutAListener) {
    listSecurity(L"C:\\dir", nullptr);

    EXPECT_THAT(entries, SizeIs(3));
}

TEST_F(UnreadableTest, AreAllDeliveredBeforeTheErrorOfAListenerWithoutTheMethod) {
    listSecurity(L"C:\\dir", mute());

    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
    EXPECT_THAT(entries, SizeIs(3));
}

TEST_F(UnreadableTest, RaiseTheFirstErrorOfTheListenerAgain) {
    // The last lookup of the listener's method, behind one for each entry's addFile, fails in another way.
    java.failCall("GetMethodID", 5, "java/lang/ExceptionInInitializerError");

    listSecurity(L"C:\\dir", mute());

    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
    EXPECT_THAT(entries, SizeIs(3));
}

TEST_F(UnreadableTest, RaiseTheErrorOfTheSearchBeforeThatOfTheListener) {
    endCode = ERROR_UNEXP_NET_ERR;

    listSecurity(L"C:\\dir", mute());

    EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_UNEXP_NET_ERR)));
    EXPECT_THAT(entries, SizeIs(3));
}

TEST_F(UnreadableTest, EndTheListingWhenTheListenerThrows) {
    const Exception thrown = java.exception("java/lang/IllegalStateException", L"enough");
    std::size_t calls = 0;
    const JavaObject receiver = java.collector(
        "fireFileErrorEvent", "(Ljava/lang/String;Ljava/lang/String;)V", [&](const Arguments&) {
            if (++calls == 2) {
                throw JavaThrow{thrown};
            }
        });

    listSecurity(L"C:\\dir", receiver);

    EXPECT_EQ(java.takeExceptionObject(), thrown);
    EXPECT_EQ(calls, 2u);
    EXPECT_THAT(paths(), ElementsAre(L"C:\\dir\\a"));
    EXPECT_EQ(system().count("FindClose"), 1u);
}

TEST_F(UnreadableTest, AreReportedToTheListenerOfACollectorWithoutItsMethod) {
    NATIVE(listWinFiles)(java.object("java/lang/Object"), L"C:\\dir", JNI_TRUE, JNI_TRUE, listener(),
                         JNI_TRUE);

    EXPECT_THAT(events, SizeIs(3));
    EXPECT_THAT(entries, IsEmpty());
}

TEST_F(UnreadableTest, EndTheListingWhenTheJvmHasNoMemoryForTheReport) {
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("NewString", k);

        listSecurity(L"C:\\dir", listener());

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
        EXPECT_THAT(entries, IsEmpty());
        EXPECT_THAT(events, IsEmpty());
    }
}

TEST_F(UnreadableTest, AreThoseThatThereIsNoMemoryToAskFor) {
    const auto fail = REPLACE(GetFileAttributesExW, [](LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID) {
        EXPECT_NE(path, nullptr);
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    });
    // Behind the reports, both patterns and the path: the long form of the first entry.
    const auto noMemory = system().failCall("malloc", 5, ERROR_INVALID_DATA);

    listSecurity(L"C:\\dir", listener());

    EXPECT_THAT(events, ElementsAre(event(L"a", ERROR_NOT_ENOUGH_MEMORY), event(L"b"), event(L"c")));
    EXPECT_EQ(read.count(), 2u);
    EXPECT_THAT(entries, SizeIs(3));
    EXPECT_EQ(entries.at(0).security, L"");
}

TEST_F(Listing, EndsWhenTheCollectorThrows) {
    found = {foundEntry(L"a"), foundEntry(L"b"), foundEntry(L"c")};
    const Exception thrown = java.exception("java/lang/IllegalStateException", L"enough");
    std::size_t calls = 0;
    const JavaObject receiver =
        java.collector("addFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V", [&](const Arguments&) {
            if (++calls == 2) {
                throw JavaThrow{thrown};
            }
        });

    NATIVE(listWinFiles)(receiver, L"C:\\dir", JNI_FALSE, JNI_TRUE, nullptr, JNI_FALSE);

    EXPECT_EQ(java.takeExceptionObject(), thrown);
    EXPECT_EQ(calls, 2u);
    EXPECT_EQ(system().count("FindNextFileW"), 1u);
    EXPECT_EQ(system().count("FindClose"), 1u);
}

TEST_F(Listing, EndsWithAnOutOfMemoryErrorWhenTheJvmHasNoMemory) {
    found = {foundEntry(L"a"), foundEntry(L"b")};
    const std::pair<const char*, std::size_t> steps[] = {
        {"GetStringChars", 0}, {"NewString", 0}, {"NewString", 0}, {"NewString", 1}};
    std::size_t k = 0;
    for (const auto& [function, delivered] : steps) {
        entries.clear();
        k = std::string_view(function) == "NewString" ? k + 1 : 0;
        java.failCall(function, std::max<std::size_t>(k, 1));

        list(L"C:\\dir");

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function << k;
        EXPECT_EQ(entries.size(), delivered) << function << k;
    }
}

TEST_F(Listing, ThrowsWithoutMemoryForItsPaths) {
    found = {foundEntry(L"a"), foundEntry(L"b")};
    // The first allocation is that of the reports.
    for (std::size_t k = 2; k <= 4; ++k) {
        const auto fail = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        list(L"C:\\dir");

        EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_NOT_ENOUGH_MEMORY))) << k;
        EXPECT_THAT(entries, IsEmpty()) << k;
    }
}

TEST_F(UnreadableTest, AreNotLookedForWithoutMemoryForTheReports) {
    const auto fail = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    listSecurity(L"C:\\dir", listener());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(patterns, IsEmpty());
    EXPECT_THAT(entries, IsEmpty());
    EXPECT_THAT(events, IsEmpty());
}

}  // namespace
