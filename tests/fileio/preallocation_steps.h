// What a preallocation asks of the system, in its order.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

inline constexpr char privilegeOn[] = "+SeManageVolumePrivilege";
inline constexpr char privilegeOff[] = "-SeManageVolumePrivilege";

// Writes down, as long as it lives: "+name" and "-name" for a privilege that is switched, "open for reading"
// or "open for writing" for a file that was opened, and "move 4096" (from the start), "end", "valid 4096" and
// "close" for what then happens to it. Content is declared valid without asking the system, which needs a
// privilege for it.
class PreallocationSteps {
public:
    explicit PreallocationSteps(SystemCalls& calls) : calls_(calls) {
        placed_.push_back(REPLACE(LookupPrivilegeValueA, [this](LPCSTR machine, LPCSTR name, PLUID luid) {
            privilege_ = name;
            return REAL(LookupPrivilegeValueA)(machine, name, luid);
        }));
        placed_.push_back(
            REPLACE(AdjustTokenPrivileges, [this](HANDLE token, BOOL all, PTOKEN_PRIVILEGES state, DWORD size,
                                                  PTOKEN_PRIVILEGES previous, PDWORD length) {
                add((state->Privileges[0].Attributes == SE_PRIVILEGE_ENABLED ? "+" : "-") + privilege_);
                return REAL(AdjustTokenPrivileges)(token, all, state, size, previous, length);
            }));
        placed_.push_back(REPLACE(
            CreateFileW, [this](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                DWORD disposition, DWORD flags, HANDLE model) {
                HANDLE file = REAL(CreateFileW)(path, access, share, security, disposition, flags, model);
                if (file != INVALID_HANDLE_VALUE) {
                    files_.insert(file);
                    add((access & GENERIC_WRITE) != 0 ? "open for writing" : "open for reading");
                }
                return file;
            }));
        placed_.push_back(REPLACE(
            SetFilePointerEx, [this](HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER moved, DWORD from) {
                add("move " + std::to_string(distance.QuadPart) +
                    (from == FILE_BEGIN ? "" : " not from the start"));
                return REAL(SetFilePointerEx)(file, distance, moved, from);
            }));
        placed_.push_back(REPLACE(SetEndOfFile, [this](HANDLE file) {
            add("end");
            return REAL(SetEndOfFile)(file);
        }));
        placed_.push_back(REPLACE(SetFileValidData, [this](HANDLE, LONGLONG length) -> BOOL {
            add("valid " + std::to_string(length));
            return TRUE;
        }));
        placed_.push_back(REPLACE(CloseHandle, [this](HANDLE handle) {
            if (files_.erase(handle) != 0) {
                add("close");
            }
            return REAL(CloseHandle)(handle);
        }));
    }
    PreallocationSteps(const PreallocationSteps&) = delete;
    PreallocationSteps& operator=(const PreallocationSteps&) = delete;

    // Those since the last time that it was asked.
    std::vector<std::string> taken() { return std::exchange(taken_, {}); }

private:
    SystemCalls& system() { return calls_; }
    void add(std::string step) { taken_.push_back(std::move(step)); }

    SystemCalls& calls_;
    std::vector<Replacement> placed_;
    std::set<HANDLE> files_;
    std::string privilege_;
    std::vector<std::string> taken_;
};

}  // namespace testbed
