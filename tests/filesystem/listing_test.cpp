// What a listing delivers.
#include "guarded_heap.h"
#include "listing_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

using RealListing = ListingTest;
using Listing = SearchTest;

TEST_F(RealListing, DeliversFilesAndFoldersWithSizeAndTime) {
    writeFile(folder() / L"file", "12345");
    writeFile(folder() / L"sub\\inner", "");
    ASSERT_TRUE(NATIVE(setLastModified)(folder() / L"file", -86400000));
    ASSERT_TRUE(NATIVE(setLastModified)(folder() / L"sub", 1234567890123));

    list(folder().path());

    EXPECT_THAT(entries,
                UnorderedElementsAre(
                    Entry{folder() / L"file", false, 5, -86400000,
                          static_cast<jlong>(GetFileAttributesW((folder() / L"file").c_str())), L"", false},
                    Entry{folder() / L"sub", true, 0, 1234567890123,
                          static_cast<jlong>(GetFileAttributesW((folder() / L"sub").c_str())), L"", false}));
}

TEST_F(RealListing, DeliversNothingOfAnEmptyFolder) {
    list(folder().path());

    EXPECT_THAT(entries, IsEmpty());
    EXPECT_EQ(system().count("FindClose"), 1u);
}

TEST_F(RealListing, DeliversLongAndStrangeNames) {
    const std::wstring deep = folder() / (std::wstring(200, L'd') + L"\\" + std::wstring(150, L'e'));
    const std::wstring names[] = {L"\x00E4\x4E2D\xD83D\xDE00", std::wstring(255, L'n'), L".hidden", L"a b"};
    for (const std::wstring& name : names) {
        writeFile(deep + L"\\" + name, "x");
    }

    list(deep);

    EXPECT_THAT(paths(), UnorderedElementsAre(deep + L"\\" + names[0], deep + L"\\" + names[1],
                                              deep + L"\\" + names[2], deep + L"\\" + names[3]));
}

TEST_F(RealListing, GivesTheDescriptorsThatTheSystemGives) {
    writeFile(folder() / L"file", "content");
    const auto text = [this](const std::wstring& path) {
        return NATIVE(getWinSecurityDescriptor)(path, 7, nullptr).text();
    };

    listSecurity(folder().path(), listener());

    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_THAT(entries[0].security, StartsWith(L"O:"));
    EXPECT_EQ(entries[0].security, text(folder() / L"file"));
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Listing, SearchesTheLongFormAndNamesEntriesAsTheCallerNamedTheirFolder) {
    found = {foundEntry(L"x")};

    for (const wchar_t* directory :
         {L"C:/dir/sub", L"C:\\dir\\", L"C:/dir/", L"\\\\server\\share", L"\\\\.\\C:/x", L"rel", L""}) {
        list(directory);
    }

    EXPECT_THAT(patterns, ElementsAre(L"\\\\?\\C:\\dir\\sub\\*.*", L"\\\\?\\C:\\dir\\*.*",
                                      L"\\\\?\\C:\\dir\\*.*", L"\\\\?\\UNC\\server\\share\\*.*",
                                      L"\\\\.\\C:/x\\*.*", L"\\\\?\\rel\\*.*", L"\\\\?\\*.*"));
    EXPECT_THAT(paths(), ElementsAre(L"C:/dir/sub\\x", L"C:\\dir\\x", L"C:/dir/\\x", L"\\\\server\\share\\x",
                                     L"\\\\.\\C:/x\\x", L"rel\\x", L"\\x"));
}

TEST_F(Listing, HasRoomForFoldersAndNamesOfAnyLength) {
    const GuardedHeap heap(system());
    const std::wstring directory = L"C:\\" + std::wstring(32000, L'd');
    const std::wstring name(260, L'n');
    found = {foundEntry(name)};

    list(directory);

    EXPECT_THAT(patterns, ElementsAre(L"\\\\?\\" + directory + L"\\*.*"));
    EXPECT_THAT(paths(), ElementsAre(directory + L"\\" + name));
}

TEST_F(Listing, LeavesOutTheFolderItselfAndTheOneAbove) {
    found = {foundEntry(L".", 0x10), foundEntry(L"..", 0x10), foundEntry(L"..."), foundEntry(L".a"),
             foundEntry(L"..a"),     foundEntry(L". "),       foundEntry(L"a."),  foundEntry(L"..")};

    list(L"C:");

    EXPECT_THAT(paths(), ElementsAre(L"C:\\...", L"C:\\.a", L"C:\\..a", L"C:\\. ", L"C:\\a."));
}

TEST_F(Listing, GivesSizesBeyondFourGibibytes) {
    found = {foundEntry(L"a", 0, 0x1FFFFFFFF), foundEntry(L"b", 0, 0x80000000), foundEntry(L"c", 0, ~0ull)};

    list(L"C:");

    ASSERT_THAT(entries, SizeIs(3));
    EXPECT_EQ(entries[0].size, 0x1FFFFFFFF);
    EXPECT_EQ(entries[1].size, 0x80000000);
    EXPECT_EQ(entries[2].size, -1);
}

TEST_F(Listing, GivesTimesInMillisecondsCutTowardsZero) {
    found = {foundEntry(L"a", 0, 0, unixEpoch),
             foundEntry(L"b", 0, 0, unixEpoch - 9999),
             foundEntry(L"c", 0, 0, unixEpoch - 10001),
             foundEntry(L"d", 0, 0, unixEpoch + 9999),
             foundEntry(L"e", 0, 0, 0),
             foundEntry(L"f", 0, 0, static_cast<std::uint64_t>(-19999))};

    list(L"C:");

    std::vector<jlong> times;
    for (const Entry& entry : entries) {
        times.push_back(entry.lastModified);
    }
    EXPECT_THAT(times, ElementsAre(0, -1, -2, 0, -11644473600000, -11644473600001));
}

TEST_F(Listing, GivesTheAttributeWordAndWithItTheReparsePoint) {
    found = {foundEntry(L"junction", 0x410), foundEntry(L"link", 0x420), foundEntry(L"file", 0x80000021)};

    list(L"C:");

    EXPECT_THAT(entries,
                ElementsAre(Entry{L"C:\\junction", true, 0, 0, 0x410, L"", true},
                            Entry{L"C:\\link", false, 0, 0, 0x420, L"", true},
                            Entry{L"C:\\file", false, 0, 0, static_cast<jint>(0x80000021), L"", false}));
}

TEST_F(Listing, GivesNeitherAttributesNorReparsePointsUnlessAskedTo) {
    found = {foundEntry(L"junction", 0x410), foundEntry(L"file", 0x420)};

    NATIVE(listWinFiles)(collector(), L"C:", JNI_FALSE, JNI_FALSE, nullptr, JNI_FALSE);

    EXPECT_THAT(entries, ElementsAre(Entry{L"C:\\junction", true, 0, 0, 0, L"", false},
                                     Entry{L"C:\\file", false, 0, 0, 0, L"", false}));
}

TEST_F(Listing, TakesAnyNonZeroBooleanForTrue) {
    found = {foundEntry(L"file", 0x420)};
    constexpr jboolean odd = 0x80;

    NATIVE(listWinFiles)(collector(), L"C:", odd, odd, nullptr, JNI_FALSE);

    EXPECT_THAT(entries, ElementsAre(Entry{L"C:\\file", false, 0, 0, 0x420, L"", true}));
}

TEST_F(Listing, AsksOnlyForWhatItIsToDeliver) {
    found = {foundEntry(L"file"), foundEntry(L"sub", FILE_ATTRIBUTE_DIRECTORY)};

    list(L"C:");

    // The probe alone.
    EXPECT_EQ(system().count("GetFileAttributesExW"), 1u);
    EXPECT_EQ(system().count("GetFileSecurityW"), 0u);
    EXPECT_EQ(system().count("GetVolumePathNameW"), 0u);
}

TEST_F(Listing, KeepsTheNumberOfReferencesFlat) {
    allowTime(std::chrono::seconds(300));
    constexpr std::size_t count = 100'000;
    found.assign(count, foundEntry(L"file"));
    std::size_t delivered = 0;
    const JavaObject counter = java.collector("addFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V",
                                              [&](const Arguments&) { ++delivered; });

    NATIVE(listWinFiles)(counter, L"C:\\dir", JNI_FALSE, JNI_TRUE, nullptr, JNI_FALSE);

    EXPECT_EQ(delivered, count);
    EXPECT_LE(java.peakReferences(), 4u);
    EXPECT_EQ(java.count("GetMethodID"), count);
}

TEST_F(Listing, KeepsTheNumberOfReferencesFlatWhenEveryEntryIsReported) {
    constexpr std::size_t count = 2000;
    found.assign(count, foundEntry(L"file"));

    listSecurity(L"C:\\no such folder", listener());

    EXPECT_EQ(entries.size(), count);
    EXPECT_EQ(events.size(), count);
    EXPECT_LE(java.peakReferences(), 4u);
}

TEST_F(Listing, PassesOverACollectorWithoutItsMethod) {
    found = {foundEntry(L"a"), foundEntry(L"b")};

    NATIVE(listWinFiles)(java.object("java/lang/Object"), L"C:", JNI_FALSE, JNI_TRUE, nullptr, JNI_FALSE);

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(java.count("GetMethodID"), 2u);
    EXPECT_EQ(system().count("FindNextFileW"), 2u);
}

// Which entries have their descriptor read: the volume decides for folders, the caller for files.
struct Decision {
    const char* name;
    const wchar_t* fileSystem;  // null where the system does not tell
    bool securityOnFiles;
    bool onFolder;
    bool onFile;
};

class SecurityDecisionTest : public SearchTest, public ::testing::WithParamInterface<Decision> {};

TEST_P(SecurityDecisionTest, DependsOnKindAndVolume) {
    found = {foundEntry(L"folder", FILE_ATTRIBUTE_ARCHIVE), foundEntry(L"file", FILE_ATTRIBUTE_DIRECTORY)};
    // What the path is counts, not what the search said.
    const auto query = REPLACE(GetFileAttributesExW, [](LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID data) {
        const std::wstring_view name(path);
        *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = {
            static_cast<DWORD>(name.ends_with(L"folder") ? FILE_ATTRIBUTE_DIRECTORY : 0), {}, {}, {}, 0, 0};
        return static_cast<BOOL>(!name.ends_with(L"*.*"));
    });
    const auto volumePath = REPLACE(GetVolumePathNameW, [](LPCWSTR path, LPWSTR volume, DWORD capacity) {
        EXPECT_STREQ(path, L"C:\\dir\\folder");
        EXPECT_EQ(capacity, 512u);
        wcscpy_s(volume, capacity, L"V:\\");
        return TRUE;
    });
    const auto information =
        REPLACE(GetVolumeInformationW, [](LPCWSTR volume, LPWSTR name, DWORD nameSize, LPDWORD serial,
                                          LPDWORD component, LPDWORD flags, LPWSTR fileSystem, DWORD size) {
            EXPECT_STREQ(volume, L"V:\\");
            EXPECT_EQ(name, nullptr);
            EXPECT_EQ(nameSize, 0u);
            EXPECT_TRUE(serial == nullptr && component == nullptr && flags == nullptr);
            EXPECT_EQ(size, 260u);
            if (GetParam().fileSystem == nullptr) {
                return FALSE;
            }
            wcscpy_s(fileSystem, size, GetParam().fileSystem);
            return TRUE;
        });
    std::vector<std::wstring> read;
    const auto security = REPLACE(GetFileSecurityW, [&](LPCWSTR path, SECURITY_INFORMATION,
                                                        PSECURITY_DESCRIPTOR descriptor, DWORD, LPDWORD) {
        read.emplace_back(path);
        return InitializeSecurityDescriptor(descriptor, SECURITY_DESCRIPTOR_REVISION);
    });
    const auto convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE, 87);
    std::vector<std::wstring> expected;
    if (GetParam().onFolder) {
        expected.emplace_back(L"C:\\dir\\folder");
    }
    if (GetParam().onFile) {
        expected.emplace_back(L"C:\\dir\\file");
    }

    NATIVE(listWinFiles)(collector(), L"C:\\dir", JNI_TRUE, JNI_TRUE, listener(), GetParam().securityOnFiles);

    EXPECT_EQ(read, expected);
    EXPECT_EQ(entries.size(), 2u);
    EXPECT_EQ(events.size(), expected.size());
}

INSTANTIATE_TEST_SUITE_P(Decisions, SecurityDecisionTest,
                         ::testing::Values(Decision{"NtfsWithFiles", L"NTFS", true, true, true},
                                           Decision{"NtfsWithoutFiles", L"NTFS", false, true, false},
                                           Decision{"FatWithFiles", L"FAT32", true, false, true},
                                           Decision{"FatWithoutFiles", L"FAT32", false, false, false},
                                           Decision{"NtfsSomewhereInTheName", L"A-NTFS-B", false, true,
                                                    false},
                                           Decision{"OtherLetters", L"ntfs", false, false, false},
                                           Decision{"NoName", L"", false, false, false},
                                           Decision{"Untold", nullptr, true, false, true}),
                         [](const auto& decision) { return decision.param.name; });

TEST_F(Listing, ReadsNoDescriptorOfAFolderWhoseVolumeIsNotKnown) {
    writeFile(folder() / L"sub\\x", "");
    found = {foundEntry(L"sub", FILE_ATTRIBUTE_DIRECTORY)};
    const auto fail = system().answer("GetVolumePathNameW", FALSE, ERROR_INVALID_NAME);

    listSecurity(folder().path(), listener());

    EXPECT_EQ(entries.at(0).security, L"");
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(system().count("GetVolumeInformationW"), 0u);
}

}  // namespace
