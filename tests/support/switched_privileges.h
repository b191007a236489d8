// Which privileges the library switches.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

// Records each change of a privilege among the events of a test, as "SeTcbPrivilege on".
inline Replacement recordPrivileges(SystemCalls& calls, std::vector<std::string>& events) {
    return calls.replace<decltype(::AdjustTokenPrivileges)>(
        "AdjustTokenPrivileges",
        [&calls, &events](HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES request, auto... rest) {
            EXPECT_FALSE(disableAll);
            LUID_AND_ATTRIBUTES& privilege = request->Privileges[0];
            char name[64] = "?";
            DWORD size = sizeof(name);
            LookupPrivilegeNameA(nullptr, &privilege.Luid, name, &size);
            events.push_back(name +
                             std::string(privilege.Attributes == SE_PRIVILEGE_ENABLED ? " on" : " off"));
            return calls.real<decltype(::AdjustTokenPrivileges)>("AdjustTokenPrivileges")(token, disableAll,
                                                                                          request, rest...);
        });
}

}  // namespace testbed
