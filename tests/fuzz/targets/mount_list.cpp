// Where volumes are mounted, and their names.
#include "volume/mount_list.h"
#include "target.h"
#include "volume/volumes.h"
#include "windows/answered_calls.h"
#include "windows/java.h"

void fuzz::examine(hostile::Input& input) {
    hostile::Volumes answers(input);
    volumeAnswers = &answers;
    Java java;
    winutil::volume::listPartitions(java.env(), java.collector());

    const ExactCopy rest(input.rest());
    const std::wstring_view list(rest.as<wchar_t>(), rest.bytes().size() / sizeof(wchar_t));
    const std::wstring_view path = winutil::volume::findDriveLetterPath(list);
    require(path.empty() || (path.size() >= 3 && path.substr(1, 2) == L":\\"),
            "a path without a drive letter");
    require(path.find(L'\0') == path.npos, "a path goes on behind its end");
}
