#include "process/process_list.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <tlhelp32.h>

#include <cwchar>

#include "bridge/arguments.h"
#include "bridge/java_calls.h"
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
    const LocalRef record =
        newObject(env, target.recordType, target.newRecord, entry.szExeFile, jlong{entry.th32ProcessID},
                  jlong{owner.session}, owner.account, owner.domain);
    return record && addItem(env, target.list, target.add, record);
}

bool isWanted(const PROCESSENTRY32W& entry, const wchar_t* filter) noexcept {
    return filter == nullptr || filter[0] == L'\0' || _wcsicmp(filter, entry.szExeFile) == 0;
}

// Returns false with the reason in `errorBuffer` or a Java exception pending.
bool addProcesses(JNIEnv* env, const ProcessList& target, const wchar_t* filter,
                  ErrorBuffer& errorBuffer) noexcept {
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to CreateToolhelp32Snapshot", tag);
    }
    PROCESSENTRY32W entry = {};
    static_assert(sizeof(entry) == 568);
    entry.dwSize = sizeof(entry);
    if (!Process32FirstW(snapshot.get(), &entry)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to Process32First", tag);
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

jobject listProcesses(JNIEnv* env, jstring executableName, ErrorBuffer& errorBuffer) noexcept {
    const LocalRef listType(env, env->FindClass(java_class::arrayList));
    const jmethodID add = listType ? findMethod(env, listType.get(), java_method::add) : nullptr;
    const jmethodID newList =
        add != nullptr ? findMethod(env, listType.get(), java_method::newList) : nullptr;
    if (newList == nullptr) {
        env->ExceptionClear();
        return nullptr;
    }
    const LocalRef recordType = requireClass(env, tag, java_class::winProcessInfo, errorBuffer);
    if (!recordType) {
        return nullptr;
    }
    const jmethodID newRecord = findMethod(env, recordType.get(), java_method::newWinProcessInfo);
    if (newRecord == nullptr) {
        env->ExceptionClear();
        return nullptr;
    }
    LocalRef<> list = newObject(env, listType.get(), newList);
    if (!list) {
        return nullptr;
    }
    const Arguments filter(env, wide(executableName));
    if (!filter) {
        failed(errorBuffer, ERROR_NOT_ENOUGH_MEMORY, L"%s", tag);
        return nullptr;
    }
    const ProcessList target = {
        .list = list.get(), .add = add, .recordType = recordType.get(), .newRecord = newRecord};
    return addProcesses(env, target, filter.get<0>(), errorBuffer) ? list.release() : nullptr;
}

}  // namespace winutil::process
