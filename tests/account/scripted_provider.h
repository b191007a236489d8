// A security provider whose answers are a test's: nine entry points in place of the system's.
#pragma once

#include <windows.h>

#ifndef SECURITY_WIN32
#define SECURITY_WIN32
#endif
#include <sspi.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "system_calls.h"

namespace testbed {

class ScriptedProvider {
public:
    // Takes the place of what the DLL loads until it goes out of scope; one at a time.
    explicit ScriptedProvider(SystemCalls& system);
    ScriptedProvider(const ScriptedProvider&) = delete;
    ScriptedProvider& operator=(const ScriptedProvider&) = delete;
    ~ScriptedProvider();

    // What the DLL did, a line for each call.
    std::vector<std::string> calls;
    std::vector<std::string> loaded;    // names of libraries
    std::vector<std::string> resolved;  // names of entry points

    std::set<std::string> missing;                                 // entry points that it does not have
    std::map<std::string, std::vector<SECURITY_STATUS>> statuses;  // for the first calls; then success
    bool describesPackage = true;                                  // or leaves the caller's pointer alone
    HANDLE token = nullptr;                                        // what QuerySecurityContextToken gives
    DWORD errorAtEnd = 0;                                          // the last error as the client went
    std::size_t live = 0;                                          // contexts and credentials not given back

    // How many calls begin with that name.
    std::size_t count(const std::string& name) const;

    // The calls of a handshake in which every step succeeds.
    static std::vector<std::string> wholeHandshake();

    static constexpr unsigned long maxToken = 64;

private:
    Replacement load_;
    Replacement getProcAddress_;
    HMODULE module_ = nullptr;
};

}  // namespace testbed
