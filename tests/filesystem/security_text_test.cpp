// Security descriptors of records as text: how they are read, and what becomes of those that cannot be.
#include <cstddef>
#include <span>

#include "guarded_heap.h"
#include "listing_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// The bytes of a descriptor with so many entries, each for another account.
std::vector<std::byte> descriptorWith(std::size_t entries) {
    std::wstring text = L"O:BAG:SYD:";
    for (std::size_t i = 0; i < entries; ++i) {
        text += L"(A;;FA;;;S-1-5-21-1-2-3-" + std::to_wstring(1000 + i) + L")";
    }
    PSECURITY_DESCRIPTOR made = nullptr;
    ULONG size = 0;
    EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), 1, &made, &size));
    const auto* bytes = static_cast<const std::byte*>(made);
    std::vector<std::byte> result(bytes, bytes + size);
    ::LocalFree(made);
    return result;
}

// What the system says to it.
std::wstring textOf(std::vector<std::byte> descriptor) {
    LPWSTR text = nullptr;
    EXPECT_TRUE(
        ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor.data(), 1, 7, &text, nullptr));
    std::wstring result = text;
    ::LocalFree(text);
    return result;
}

// One entry of a folder whose descriptor is read.
class SecurityTextTest : public SearchTest {
protected:
    SecurityTextTest() { found = {foundEntry(L"x")}; }

    // The conversion gives these units, of which none need be a terminator, and tells this length.
    Replacement convertTo(std::wstring_view units, const ULONG& length) {
        converted = GuardedBuffer(std::as_bytes(std::span(units)), "the text of a descriptor");
        return system().replace<decltype(::ConvertSecurityDescriptorToStringSecurityDescriptorW)>(
            "ConvertSecurityDescriptorToStringSecurityDescriptorW",
            [this, &length](PSECURITY_DESCRIPTOR, DWORD, SECURITY_INFORMATION, LPWSTR* made, PULONG size) {
                *made = converted.as<wchar_t>();
                *size = length;
                SetLastError(ERROR_INVALID_DATA);
                return TRUE;
            });
    }

    // The system has this descriptor for every path, and does what a caller without room for it deserves.
    Replacement giveDescriptor(std::vector<std::byte> descriptor) {
        return REPLACE(GetFileSecurityW,
                       [this, descriptor](LPCWSTR path, SECURITY_INFORMATION parts,
                                          PSECURITY_DESCRIPTOR buffer, DWORD size, LPDWORD needed) {
                           EXPECT_STREQ(path, L"C:\\dir\\x");
                           EXPECT_EQ(parts, 7u);
                           sizes.push_back(size);
                           *needed = static_cast<DWORD>(descriptor.size());
                           if (size < descriptor.size()) {
                               SetLastError(ERROR_INSUFFICIENT_BUFFER);
                               return FALSE;
                           }
                           std::memcpy(buffer, descriptor.data(), descriptor.size());
                           return TRUE;
                       });
    }

    // The text that the entry is delivered with.
    std::wstring read() {
        entries.clear();
        listSecurity(L"C:\\dir", listener());
        return entries.size() == 1 ? entries[0].security : L"(not delivered)";
    }

    static std::wstring event(DWORD code) { return L"C:\\dir\\x|" + systemText(code); }

    std::vector<DWORD> sizes;
    GuardedBuffer converted;

private:
    const GuardedHeap heap_{system()};
    const Replacement free_ = REPLACE(LocalFree, [this](HLOCAL block) -> HLOCAL {
        return block == converted.data() ? nullptr : REAL(LocalFree)(block);
    });
};

TEST_F(SecurityTextTest, IsReadWithRoomForFourKibibytesFirst) {
    const auto descriptor = descriptorWith(2);
    const auto give = giveDescriptor(descriptor);

    EXPECT_EQ(read(), textOf(descriptor));

    EXPECT_THAT(sizes, ElementsAre(4096u));
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(SecurityTextTest, IsReadOnceMoreAtTheSizeThatTheSystemWants) {
    const auto descriptor = descriptorWith(1500);
    ASSERT_GT(descriptor.size(), 40000u);
    const auto give = giveDescriptor(descriptor);

    EXPECT_EQ(read(), textOf(descriptor));

    EXPECT_THAT(sizes, ElementsAre(4096u, static_cast<DWORD>(descriptor.size())));
}

TEST_F(SecurityTextTest, FitsTheFirstRoomToTheLastByte) {
    auto descriptor = descriptorWith(2);
    const std::wstring text = textOf(descriptor);
    descriptor.resize(4096);
    const auto give = giveDescriptor(descriptor);
    EXPECT_EQ(read(), text);

    descriptor.resize(4097);
    const auto giveMore = giveDescriptor(descriptor);
    EXPECT_EQ(read(), text);

    EXPECT_THAT(sizes, ElementsAre(4096u, 4096u, 4097u));
}

TEST_F(SecurityTextTest, IsGivenUpWhenItGrowsBetweenTheTwoCalls) {
    const auto grow = REPLACE(GetFileSecurityW, [&](LPCWSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR,
                                                    DWORD size, LPDWORD needed) {
        sizes.push_back(size);
        *needed = size + 1;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    });
    const auto find = system().answer("GetNamedSecurityInfoW", ERROR_ACCESS_DENIED);
    const auto convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE, 87);

    EXPECT_EQ(read(), L"");

    EXPECT_THAT(sizes, ElementsAre(4096u, 4097u));
    EXPECT_THAT(events, ElementsAre(event(87)));
}

TEST_F(SecurityTextTest, IsLookedForInASecondWayThatGivesNone) {
    const auto fail = system().answer("GetFileSecurityW", FALSE, ERROR_MORE_DATA);
    std::wstring asked;
    const auto find = REPLACE(
        GetNamedSecurityInfoW, [&](LPCWSTR path, SE_OBJECT_TYPE type, SECURITY_INFORMATION parts, PSID* owner,
                                   PSID* group, PACL* dacl, PACL* sacl, PSECURITY_DESCRIPTOR* place) {
            asked = path;
            EXPECT_EQ(type, SE_FILE_OBJECT);
            EXPECT_EQ(parts, 7u);
            EXPECT_TRUE(owner == nullptr && group == nullptr && dacl == nullptr && sacl == nullptr);
            EXPECT_NE(place, nullptr);
            return static_cast<DWORD>(ERROR_BAD_NETPATH);
        });
    const auto convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE,
                                         ERROR_INVALID_PARAMETER);

    EXPECT_EQ(read(), L"");

    EXPECT_EQ(fail.count(), 1u);
    EXPECT_EQ(asked, L"C:\\dir\\x");
    // The conversion of nothing is really attempted, and its code is the one that is told.
    ASSERT_EQ(convert.count(), 1u);
    EXPECT_EQ(convert.calls()[0].argument<const void*>(0), nullptr);
    EXPECT_EQ(convert.calls()[0].argument<DWORD>(2), 7u);
    EXPECT_THAT(events, ElementsAre(event(ERROR_INVALID_PARAMETER)));
}

TEST_F(SecurityTextTest, IsConvertedInTheFirstRevision) {
    const auto give = giveDescriptor(descriptorWith(1));
    const auto convert = system().watch("ConvertSecurityDescriptorToStringSecurityDescriptorW");

    read();

    ASSERT_EQ(convert.count(), 1u);
    EXPECT_EQ(convert.calls()[0].argument<DWORD>(1), 1u);
    EXPECT_EQ(convert.calls()[0].argument<DWORD>(2), 7u);
}

TEST_F(SecurityTextTest, IsNoneWhenTheConversionFails) {
    const auto give = giveDescriptor(descriptorWith(1));
    const auto convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE,
                                         ERROR_UNKNOWN_REVISION);

    EXPECT_EQ(read(), L"");

    EXPECT_THAT(events, ElementsAre(event(ERROR_UNKNOWN_REVISION)));
    EXPECT_EQ(system().count("GetNamedSecurityInfoW"), 0u);
}

TEST_F(SecurityTextTest, EndsAtItsTerminatorAndIsNoneWithoutALength) {
    const auto give = giveDescriptor(descriptorWith(1));
    ULONG length = 6;
    const auto convert = convertTo(std::wstring_view(L"O:\0\0\0\0", 6), length);
    EXPECT_EQ(read(), L"O:");
    EXPECT_THAT(events, IsEmpty());

    length = 0;
    EXPECT_EQ(read(), L"");
    EXPECT_THAT(events, ElementsAre(event(ERROR_INVALID_DATA)));
}

TEST_F(SecurityTextTest, EndsAtItsLengthWithoutATerminator) {
    const auto give = giveDescriptor(descriptorWith(1));
    const ULONG length = 4;
    const auto convert = convertTo(L"O:BA", length);

    EXPECT_EQ(read(), L"O:BA");
}

TEST_F(SecurityTextTest, IsNoneWithoutMemory) {
    const auto give = giveDescriptor(descriptorWith(500));
    const auto find = system().watch("GetNamedSecurityInfoW");
    const std::size_t before = [this] {
        const auto watch = system().watch("malloc");
        list(L"C:\\dir");
        return watch.count();
    }();
    std::vector<std::wstring> told;
    for (std::size_t k = before + 1; k <= before + 5; ++k) {
        events.clear();
        const auto fail = system().failCall("malloc", k, ERROR_INVALID_DATA);

        read();

        EXPECT_THAT(entries, SizeIs(1)) << k;
        told.insert(told.end(), events.begin(), events.end());
    }
    // Without the long form that says whether the entry is a folder; without room for the descriptor, twice;
    // without room for its text.
    EXPECT_THAT(told, ElementsAre(event(ERROR_NOT_ENOUGH_MEMORY), event(ERROR_NOT_ENOUGH_MEMORY),
                                  event(ERROR_NOT_ENOUGH_MEMORY), event(ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(find.count(), 0u) << "the second way is for what the system refuses";
}

TEST_F(SecurityTextTest, IsNoneWithoutMemoryForTheEmptyOne) {
    const std::size_t before = [this] {
        const auto watch = system().watch("malloc");
        list(L"C:\\dir");
        return watch.count();
    }();
    // Behind the long form that says whether the entry is a folder.
    const auto fail = system().failCall("malloc", before + 2, ERROR_INVALID_DATA);
    entries.clear();

    NATIVE(listWinFiles)(collector(), L"C:\\dir", JNI_TRUE, JNI_TRUE, listener(), JNI_FALSE);

    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_EQ(entries[0].security, L"");
    EXPECT_THAT(events, ElementsAre(event(ERROR_NOT_ENOUGH_MEMORY)));
}

TEST_F(SecurityTextTest, IsNoneOnASystemWithoutTheConversion) {
    writeFile(folder() / L"file", "content");
    FreshLibrary fresh(folder(), L"fresh.dll");
    fresh.ledger().allowUnknown("FreeLibrary");
    const auto hidden = fresh.system().hide({"ConvertSecurityDescriptorToStringSecurityDescriptorW"});
    ASSERT_TRUE(fresh.load());
    const auto read = fresh.system().watch("GetFileSecurityW");
    constexpr const char* name = "Java_com_qarvo_kel_util_WindowsUtil_listWinFiles";
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_listWinFiles);
    const NativeMethod<Function> method(java, name, fresh.exported<Function>(name));

    method(collector(), folder().path(), JNI_TRUE, JNI_TRUE, listener(), JNI_TRUE);

    EXPECT_GT(read.count(), 0u);
    // The file and the copy of the library beside it.
    EXPECT_THAT(entries, SizeIs(2));
    EXPECT_EQ(entries[0].security + entries[1].security, L"");
    EXPECT_THAT(events, ::testing::Contains((folder() / L"file") + L"|" + systemText(ERROR_PROC_NOT_FOUND)));

    constexpr const char* recordName = "Java_com_qarvo_kel_util_WindowsUtil_WinFile";
    using RecordFunction = decltype(Java_com_qarvo_kel_util_WindowsUtil_WinFile);
    const NativeMethod<RecordFunction> record(java, recordName, fresh.exported<RecordFunction>(recordName));
    EXPECT_NE(record(folder() / L"file", JNI_TRUE, JNI_TRUE), nullptr);
}

}  // namespace
