#include "account/user_groups.h"

#include <windows.h>

#include <lmaccess.h>
#include <lmerr.h>

#include "bridge/java_calls.h"
#include "bridge/java_classes.h"
#include "bridge/owners.h"

namespace winutil::account {

namespace {

// Makes a call with a server and, when that cannot be reached, once more for this computer.
template <class Call>
NET_API_STATUS askServer(const wchar_t* server, Call call) noexcept {
    const NET_API_STATUS status = call(server);
    return status == RPC_S_SERVER_UNAVAILABLE ? call(nullptr) : status;
}

// Adds the name of a group; one without a name is passed over. Returns false when a Java exception is
// pending.
bool addGroup(JNIEnv* env, jobject collection, jmethodID add, const wchar_t* name) noexcept {
    return name == nullptr || addItem(env, collection, add, name);
}

// Returns false when a Java exception is pending.
bool addGlobalGroups(JNIEnv* env, const wchar_t* server, const wchar_t* user, jobject collection,
                     jmethodID add) noexcept {
    NetMemory<GROUP_USERS_INFO_0> groups;
    DWORD count = 0;
    const NET_API_STATUS status = askServer(server, [&](const wchar_t* asked) noexcept {
        DWORD total = 0;
        return NetUserGetGroups(asked, user, 0, reinterpret_cast<LPBYTE*>(groups.receive()),
                                MAX_PREFERRED_LENGTH, &count, &total);
    });
    for (DWORD i = 0; status == NERR_Success && i < count; ++i) {
        if (!addGroup(env, collection, add, groups.get()[i].grui0_name)) {
            return false;
        }
    }
    return true;
}

void addLocalGroups(JNIEnv* env, const wchar_t* server, const wchar_t* user, jobject collection,
                    jmethodID add) noexcept {
    NetMemory<LOCALGROUP_USERS_INFO_0> groups;
    DWORD count = 0;
    const NET_API_STATUS status = askServer(server, [&](const wchar_t* asked) noexcept {
        DWORD total = 0;
        return NetUserGetLocalGroups(asked, user, 0, LG_INCLUDE_INDIRECT,
                                     reinterpret_cast<LPBYTE*>(groups.receive()), MAX_PREFERRED_LENGTH,
                                     &count, &total);
    });
    for (DWORD i = 0; status == NERR_Success && i < count; ++i) {
        if (!addGroup(env, collection, add, groups.get()[i].lgrui0_name)) {
            return;
        }
    }
}

}  // namespace

void addUserGroups(JNIEnv* env, const wchar_t* server, const wchar_t* user, jobject collection) noexcept {
    const jmethodID add = findCollectorMethod(env, collection, java_method::add);
    const wchar_t* machine = server[0] == L'\0' ? nullptr : server;
    if (add != nullptr && addGlobalGroups(env, machine, user, collection, add)) {
        addLocalGroups(env, machine, user, collection, add);
    }
}

}  // namespace winutil::account
