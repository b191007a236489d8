#include "process/process_list.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <tlhelp32.h>

#include <cwchar>

#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/token_user.h"
#include "process/failure.h"
#include "process/java_lookups.h"

namespace winutil::process {

namespace {

constexpr wchar_t tag[] = L"[WindowsUtil:getProcessInfo]";

constexpr DWORD nameCapacity = 1024;  // characters, the terminator included

struct Owner {
    wchar_t account[nameCapacity];
    wchar_t domain[nameCapacity];
    DWORD session;
};

// The Java list that is filled, and what it takes for that.
struct ProcessList {
    jobject list;
    jmethodID add;
    jclass recordType;
    jmethodID newRecord;
};

bool findOwner(DWORD processId, Owner& owner) noexcept {
    const KernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processId));
    KernelHandle token;
    if (!process || !OpenProcessToken(process.get(), TOKEN_QUERY, token.receive())) {
        return false;
    }
    const ProcessHeapMemory<TOKEN_USER> user = tokenUser(token.get());
    DWORD accountSize = nameCapacity;
    DWORD domainSize = nameCapacity;
    SID_NAME_USE use = SidTypeUnknown;
    return user &&
           LookupAccountSidW(nullptr, user.get()->User.Sid, owner.account, &accountSize, owner.domain,
                             &domainSize, &use) &&
           ProcessIdToSessionId(processId, &owner.session);
}

// Returns false when a Java exception is pending.
bool addRecord(JNIEnv* env, const ProcessList& target, const PROCESSENTRY32W& entry,
               const Owner& owner) noexcept {
    const LocalRef name(env, newJavaString(env, entry.szExeFile));
    if (!name) {
        return false;
    }
    const LocalRef account(env, newJavaString(env, owner.account));
    if (!account) {
        return false;
    }
    const LocalRef domain(env, newJavaString(env, owner.domain));
    if (!domain) {
        return false;
    }
    const LocalRef record(
        env, env->NewObject(target.recordType, target.newRecord, name.get(), jlong{entry.th32ProcessID},
                            jlong{owner.session}, account.get(), domain.get()));
    if (!record) {
        return false;
    }
    env->CallBooleanMethod(target.list, target.add, record.get());
    return !exceptionPending(env);
}

bool isWanted(const PROCESSENTRY32W& entry, const wchar_t* filter) noexcept {
    return filter == nullptr || filter[0] == L'\0' || _wcsicmp(filter, entry.szExeFile) == 0;
}

void throwFailure(JNIEnv* env, DWORD code, const wchar_t* format) noexcept {
    ErrorBuffer failure;
    failed(failure, code, format, tag);
    throwIOException(env, failure.text());
}

// Returns false when a Java exception is pending.
bool addProcesses(JNIEnv* env, const ProcessList& target, const wchar_t* filter) noexcept {
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        throwFailure(env, GetLastError(), L"%s Failed to CreateToolhelp32Snapshot");
        return false;
    }
    PROCESSENTRY32W entry = {};
    static_assert(sizeof(entry) == 568);
    entry.dwSize = sizeof(entry);
    if (!Process32FirstW(snapshot.get(), &entry)) {
        throwFailure(env, GetLastError(), L"%s Failed to Process32First");
        return false;
    }
    do {
        Owner owner;
        if (isWanted(entry, filter) && findOwner(entry.th32ProcessID, owner) &&
            !addRecord(env, target, entry, owner)) {
            return false;
        }
    } while (Process32NextW(snapshot.get(), &entry));
    return true;
}

}  // namespace

jobject listProcesses(JNIEnv* env, jstring executableName) noexcept {
    const LocalRef listType(env, env->FindClass(java_class::arrayList));
    const jmethodID add = listType ? findMethod(env, listType.get(), java_method::add) : nullptr;
    const jmethodID newList =
        add != nullptr ? findMethod(env, listType.get(), java_method::newList) : nullptr;
    if (newList == nullptr) {
        env->ExceptionClear();
        return nullptr;
    }
    const LocalRef recordType = requireClass(env, tag, java_class::winProcessInfo);
    if (!recordType) {
        return nullptr;
    }
    const jmethodID newRecord = findMethod(env, recordType.get(), java_method::newWinProcessInfo);
    if (newRecord == nullptr) {
        env->ExceptionClear();
        return nullptr;
    }
    LocalRef list(env, env->NewObject(listType.get(), newList));
    if (!list) {
        return nullptr;
    }
    WideString filter;
    if (executableName != nullptr) {
        filter = toWideString(env, executableName);
        if (!filter) {
            return nullptr;
        }
    }
    const ProcessList target = {
        .list = list.get(), .add = add, .recordType = recordType.get(), .newRecord = newRecord};
    return addProcesses(env, target, filter.get()) ? list.release() : nullptr;
}

}  // namespace winutil::process
