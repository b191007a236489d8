// Paths on mapped drives as paths on their shares.
#include <windows.h>

#include <winnetwk.h>

#include <cstring>

#include "guarded_heap.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr wchar_t path[] = L"U:\\folder\\file.txt";

class UniversalName : public WinUtilTest {
protected:
    // A system that knows one universal name, and the structure around it in as many bytes.
    Replacement know(const std::wstring& name) {
        return REPLACE(
            WNetGetUniversalNameW, [this, name](LPCWSTR asked, DWORD level, LPVOID buffer, LPDWORD size) {
                paths.emplace_back(asked);
                sizes.push_back(*size);
                EXPECT_EQ(level, DWORD{REMOTE_NAME_INFO_LEVEL});
                const std::size_t needed = sizeof(REMOTE_NAME_INFOW) + (name.size() + 1) * sizeof(wchar_t);
                if (*size < needed) {
                    *size = static_cast<DWORD>(needed);
                    return DWORD{ERROR_MORE_DATA};
                }
                auto* information = static_cast<REMOTE_NAME_INFOW*>(buffer);
                information->lpUniversalName = reinterpret_cast<wchar_t*>(information + 1);
                std::memcpy(information->lpUniversalName, name.c_str(), (name.size() + 1) * sizeof(wchar_t));
                return DWORD{NO_ERROR};
            });
    }

    std::wstring of(const std::wstring& given) { return NATIVE(getUNC)(given).text(); }

    std::vector<std::wstring> paths;
    std::vector<DWORD> sizes;
};

TEST_F(UniversalName, PutsTheShareInPlaceOfTheDrive) {
    const auto known = know(L"\\\\server\\share\\folder\\file.txt");

    EXPECT_EQ(of(path), L"\\\\server\\share\\folder\\file.txt");

    EXPECT_THAT(paths, ElementsAre(path));
    EXPECT_THAT(sizes, ElementsAre(4096u));
}

TEST_F(UniversalName, IsReadAgainWithTheSizeThatTheSystemAsksFor) {
    const std::wstring name = L"\\\\server\\share\\" + std::wstring(5'000, L'n');
    const auto known = know(name);

    EXPECT_EQ(of(path), name);

    EXPECT_THAT(paths, ElementsAre(path, path));
    EXPECT_THAT(sizes,
                ElementsAre(4096u, static_cast<DWORD>(sizeof(REMOTE_NAME_INFOW) + 2 * name.size() + 2)));
}

TEST_F(UniversalName, StaysWithinTheSizeThatTheSystemAsksFor) {
    const GuardedHeap heap(system());
    const std::wstring name(40'000, L'n');
    const auto known = know(name);

    EXPECT_EQ(of(path), name);
}

TEST_F(UniversalName, IsThePathWhenItKeepsGrowing) {
    const auto known = REPLACE(WNetGetUniversalNameW, [this](LPCWSTR, DWORD, LPVOID, LPDWORD size) {
        sizes.push_back(*size);
        *size += 1000;
        return DWORD{ERROR_MORE_DATA};
    });

    EXPECT_EQ(of(path), path);

    EXPECT_THAT(sizes, ElementsAre(4096u, 5096u));
}

TEST_F(UniversalName, IsThePathWhenTheSystemAsksForTooLittle) {
    const GuardedHeap heap(system());
    const auto known = REPLACE(WNetGetUniversalNameW, [this](LPCWSTR, DWORD, LPVOID, LPDWORD size) {
        sizes.push_back(*size);
        *size = 1;
        return sizes.size() == 1 ? DWORD{ERROR_MORE_DATA} : DWORD{NO_ERROR};
    });

    EXPECT_EQ(of(path), path);

    EXPECT_THAT(sizes, ElementsAre(4096u, 1u));
}

TEST_F(UniversalName, IsThePathWhenTheSecondLookFails) {
    const auto known = REPLACE(WNetGetUniversalNameW, [this](LPCWSTR, DWORD, LPVOID, LPDWORD size) {
        sizes.push_back(*size);
        *size = 8'000;
        return sizes.size() == 1 ? DWORD{ERROR_MORE_DATA} : DWORD{ERROR_NOT_CONNECTED};
    });

    EXPECT_EQ(of(path), path);
}

TEST_F(UniversalName, IsThePathWithoutMemoryForALongOne) {
    const auto known = know(std::wstring(5'000, L'n'));
    const auto allocate = system().answer("calloc", 0, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(of(path), path);

    EXPECT_THAT(sizes, SizeIs(1));
}

TEST_F(UniversalName, IsThePathWithoutMemoryForItsCopy) {
    const auto known = know(L"\\\\server\\share");
    const auto allocate = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(of(path), path);
}

TEST_F(UniversalName, IsThePathWithoutMemoryForThat) {
    const auto allocate = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(of(path), path);

    EXPECT_EQ(system().count("WNetGetUniversalNameW"), 0u);
}

class FailingName : public UniversalName, public ::testing::WithParamInterface<DWORD> {};

TEST_P(FailingName, IsThePath) {
    const auto known = system().answer("WNetGetUniversalNameW", GetParam(), GetParam());

    EXPECT_EQ(of(path), path);

    EXPECT_EQ(known.count(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Codes, FailingName,
                         ::testing::Values(ERROR_NOT_CONNECTED, ERROR_BAD_DEVICE, ERROR_CONNECTION_UNAVAIL,
                                           ERROR_NO_NETWORK, ERROR_NOT_SUPPORTED, ERROR_INVALID_LEVEL));

class OtherPlatform : public UniversalName, public ::testing::WithParamInterface<DWORD> {};

TEST_P(OtherPlatform, GivesThePathWithoutAsking) {
    const auto known = know(L"\\\\server\\share");
    const auto version = REPLACE(GetVersionExA, [&](LPOSVERSIONINFOA information) {
        EXPECT_EQ(information->dwOSVersionInfoSize, 148u);
        information->dwPlatformId = GetParam();
        return TRUE;
    });

    EXPECT_EQ(of(path), path);

    EXPECT_EQ(known.count(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Platforms, OtherPlatform,
                         ::testing::Values(VER_PLATFORM_WIN32s, VER_PLATFORM_WIN32_WINDOWS, 3));

TEST_F(UniversalName, IsThePathWhenTheVersionCannotBeTold) {
    const auto known = know(L"\\\\server\\share");
    const auto version = system().answer("GetVersionExA", FALSE, ERROR_INVALID_PARAMETER);

    EXPECT_EQ(of(path), path);

    EXPECT_EQ(known.count(), 0u);
}

TEST_F(UniversalName, OfALocalPathIsThePathItself) {
    EXPECT_EQ(of(L"C:\\windows"), L"C:\\windows");
    EXPECT_EQ(of(L"no path at all"), L"no path at all");
    EXPECT_EQ(of(L""), L"");
}

}  // namespace
