#include "account/group_membership.h"

#include "account/account_names.h"
#include "account/computer_domain.h"
#include "account/directory_objects.h"
#include "account/directory_search.h"
#include "account/ldap_filter.h"
#include "account/ldap_path.h"
#include "account/nested_groups.h"
#include "bridge/java_calls.h"
#include "bridge/java_classes.h"
#include "bridge/java_refs.h"
#include "bridge/java_strings.h"

namespace winutil::account {

namespace {

// Finds the path of the object of a name, by the rules of findObjectPath. A name too long for a filter is
// that of none.
HRESULT findByName(IDirectorySearch* search, std::wstring_view filterHead, std::wstring_view name,
                   REFIID identifier, WideString& path) noexcept {
    LdapFilter filter;
    return nameFilter(filterHead, name, filter) ? findObjectPath(search, filter, identifier, path) : E_FAIL;
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

// Returns what checkGroupMembership does, and a failure for null and for a name that there is no memory for.
HRESULT checkElement(JNIEnv* env, jstring name, const Account& account) noexcept {
    // Not a terminated copy: that would end at a zero in the name, and be the name of another group.
    JavaChars groupName;
    if (name == nullptr || !groupName.take(env, name, Secrecy::open)) {
        return E_FAIL;
    }
    return checkGroupMembership(account.ldapPath, account.user, {groupName.get(), groupName.length()});
}

// Looks one group up and adds its name to the result unless the user is found to be a member. Returns false
// when a Java exception is pending.
bool checkGroup(JNIEnv* env, const ListClass& list, jobject groups, jint index, const Account& account,
                jobject result) noexcept {
    const LocalRef name(env, env->CallObjectMethod(groups, list.get, index));
    if (exceptionPending(env)) {
        return false;
    }
    // Required: the result has the groups that he is not in, and failures as well, because the Java side
    // takes it for those where membership was not established.
    return SUCCEEDED(checkElement(env, static_cast<jstring>(name.get()), account)) ||
           addItem(env, result, list.add, name);
}

}  // namespace

HRESULT checkGroupMembership(const wchar_t* ldapPath, const wchar_t* user,
                             std::wstring_view groupName) noexcept {
    ComPtr<IDirectorySearch> search;
    HRESULT result = bindObject(ldapPath, IID_IDirectorySearch, search);
    if (FAILED(result)) {
        return result;
    }
    WideString userPath;
    result = findByName(search.get(), L"(&(objectClass=user)(samAccountName=", user, IID_IADsUser, userPath);
    if (FAILED(result)) {
        return result;
    }
    WideString groupPath;
    result = findByName(search.get(), L"(&(objectClass=group)(cn=", groupName, IID_IADsGroup, groupPath);
    if (FAILED(result)) {
        return result == E_OUTOFMEMORY ? result : groupUnknown;
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
    LocalRef<> result = newObject(env, list.type.get(), list.constructor);
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
