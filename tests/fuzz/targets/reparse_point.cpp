// A reparse point: what a file system keeps for a link, and what any program may write there.
#include "fileio/open.h"
#include "filesystem/reparse_data.h"
#include "filesystem/reparse_points.h"
#include "target.h"
#include "windows/answered_calls.h"
#include "windows/system.h"

namespace {

using winutil::filesystem::LinkTarget;

bool isSame(const LinkTarget& left, const LinkTarget& right) {
    return std::wcscmp(left, right) == 0;
}

// A junction that the library writes to a path on a drive reads back as the path that it was given. Others
// need not: "UNC\\x" becomes the name of a share.
void requireRoundTrip(const LinkTarget& target) {
    LinkTarget name;
    winutil::filesystem::writeJunctionName(target, name);
    if (name[0] == L'\0' || target[0] == L'\0' || target[1] != L':') {
        return;
    }
    winutil::filesystem::ReparseBuffer buffer = {};
    const DWORD size = winutil::filesystem::fillJunctionData(name, buffer);
    const fuzz::ExactCopy junction(std::span(buffer.bytes).first(size));
    LinkTarget again;
    const DWORD kind = winutil::filesystem::parseReparseData(junction.bytes(), 0, again);
    fuzz::require(kind == winutil::filesystem::linkKindJunction, "a junction is read back as something else");
    fuzz::require(isSame(target, again), "a junction is read back with another target");
}

}  // namespace

namespace winutil::fileio {

FileCell createFileWithRetry(const wchar_t*, DWORD, DWORD, DWORD, DWORD, ErrorBuffer*) noexcept {
    FileCell cell(static_cast<HANDLE*>(std::malloc(sizeof(HANDLE))));
    *cell.get() = fuzz::fakeHandle();
    return cell;
}

}  // namespace winutil::fileio

void fuzz::examine(hostile::Input& input) {
    hostile::Input alone = input;
    hostile::Devices answers(input);
    deviceAnswers = &answers;
    LinkTarget target;
    constexpr DWORD attributes = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
    const auto kind = winutil::filesystem::readReparseKind(L"C:\\link", target, attributes);
    require(kind.has_value(), "a reparse point is not looked at");
    requireRoundTrip(target);

    // The same bytes with nothing behind them.
    const BYTE result = alone.value<BYTE>();
    const ExactCopy data(alone.bytes(std::min<std::size_t>(alone.value<WORD>(), 16384)));
    LinkTarget exact;
    const DWORD exactKind = winutil::filesystem::parseReparseData(data.bytes(), attributes, exact);
    require(result % 4 != 0 || (exactKind == *kind && isSame(target, exact)),
            "what lies behind a reparse point is read");
}
