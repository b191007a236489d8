#include "account/group_membership.h"

#include <cstdio>
#include <iterator>

#include "account/account_names.h"
#include "account/computer_domain.h"
#include "account/directory_objects.h"
#include "account/directory_search.h"
#include "account/ldap_path.h"
#include "account/nested_groups.h"
#include "bridge/java_classes.h"
#include "bridge/java_refs.h"
#include "bridge/java_strings.h"

namespace winutil::account {

namespace {

constexpr std::size_t filterCapacity = 1024;  // characters, the terminator included

// Returns the path of the object of a name; none when there is none, and when the filter would be cut. The
// name is not escaped: what it means in a filter is what the caller asked for.
WideString findByName(IDirectorySearch* search, const wchar_t* filterHead, const wchar_t* name,
                      REFIID identifier) noexcept {
    wchar_t filter[filterCapacity];
    if (_snwprintf_s(filter, std::size(filter), _TRUNCATE, L"%s%s))", filterHead, name) < 0) {
        return {};
    }
    return findObjectPath(search, filter, identifier);
}

// The answer for a user who is no direct member.
HRESULT checkNestedMembership(ComPtr<IADsGroup> group, const wchar_t* userPath) noexcept {
    ComPtr<IDirectoryObject> user;
    const HRESULT result = bindObject(userPath, IID_IDirectoryObject, user);
    if (FAILED(result)) {
        return result;
    }
    ObjectGuid guid;
    if (!readObjectGuid(user.get(), guid)) {
        return E_FAIL;
    }
    return findNestedMember(std::move(group), guid) ? S_OK : E_FAIL;
}

// The class of a list and its methods.
struct ListClass {
    ListClass(JNIEnv* env, jobject list) noexcept : type(env, env->GetObjectClass(list)) {
        complete = (add = findMethod(env, type.get(), java_method::add)) != nullptr &&
                   (get = findMethod(env, type.get(), java_method::get)) != nullptr &&
                   (size = findMethod(env, type.get(), java_method::size)) != nullptr &&
                   (constructor = findMethod(env, type.get(), java_method::newList)) != nullptr;
        if (!complete) {
            env->ExceptionClear();
        }
    }

    LocalRef<jclass> type;
    jmethodID add = nullptr;
    jmethodID get = nullptr;
    jmethodID size = nullptr;
    jmethodID constructor = nullptr;
    bool complete = false;
};

// Who is looked for, and where.
struct Account {
    Account() noexcept {
        if (!userName(user)) {
            user[0] = L'\0';
        }
        ComputerName domain;
        computerDnsDomain(domain);
        domainLdapPath(domain, ldapPath);
    }

    UserName user;
    LdapPath ldapPath;
};

// Looks one group up and adds its name to the result unless the user is found to be a member. Returns false
// when a Java exception is pending.
bool checkGroup(JNIEnv* env, const ListClass& list, jobject groups, jint index, const Account& account,
                jobject result) noexcept {
    const LocalRef name(env, env->CallObjectMethod(groups, list.get, index));
    if (exceptionPending(env)) {
        return false;
    }
    if (!name) {
        return true;
    }
    const WideString groupName = toWideString(env, static_cast<jstring>(name.get()));
    if (!groupName && exceptionPending(env)) {
        return false;
    }
    // Failures go into the list as well: it holds every group for which membership was not established.
    if (groupName && SUCCEEDED(checkGroupMembership(account.ldapPath, account.user, groupName.get()))) {
        return true;
    }
    env->CallBooleanMethod(result, list.add, name.get());
    return !exceptionPending(env);
}

}  // namespace

HRESULT checkGroupMembership(const wchar_t* ldapPath, const wchar_t* user,
                             const wchar_t* groupName) noexcept {
    ComPtr<IDirectorySearch> search;
    HRESULT result = bindObject(ldapPath, IID_IDirectorySearch, search);
    if (FAILED(result)) {
        return result;
    }
    const WideString userPath =
        findByName(search.get(), L"(&(objectClass=user)(samAccountName=", user, IID_IADsUser);
    if (!userPath) {
        return E_FAIL;
    }
    const WideString groupPath =
        findByName(search.get(), L"(&(objectClass=group)(cn=", groupName, IID_IADsGroup);
    if (!groupPath) {
        return groupUnknown;
    }
    ComPtr<IADsGroup> group;
    result = bindObject(groupPath.get(), IID_IADsGroup, group);
    if (FAILED(result)) {
        return result;
    }
    const Bstr member(SysAllocString(userPath.get()));
    VARIANT_BOOL isMember = VARIANT_FALSE;
    result = member ? group->IsMember(member.get(), &isMember) : E_OUTOFMEMORY;
    if (FAILED(result)) {
        return result;
    }
    return isMember != VARIANT_FALSE ? S_OK : checkNestedMembership(std::move(group), userPath.get());
}

jobject groupsWithoutMembership(JNIEnv* env, jobject groups) noexcept {
    const ListClass list(env, groups);
    if (!list.complete) {
        return nullptr;
    }
    LocalRef result(env, env->NewObject(list.type.get(), list.constructor));
    if (!result) {
        return nullptr;
    }
    const Account account;
    const jint count = env->CallIntMethod(groups, list.size);
    if (exceptionPending(env)) {
        return nullptr;
    }
    for (jint i = 0; i < count; ++i) {
        if (!checkGroup(env, list, groups, i, account, result.get())) {
            return nullptr;
        }
    }
    return result.release();
}

}  // namespace winutil::account
