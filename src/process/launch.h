// Starting a child process under another account.
#pragma once

#include <jni.h>
#include <windows.h>

#include "bridge/errors.h"

namespace winutil::process {

// What is started, and where; each may be null.
struct Program {
    jstring application;
    jstring commandLine;
    jstring workingDirectory;
};

// Whom it runs as; each may be null.
struct Account {
    jstring domain;
    jstring user;
    jstring password;
};

// Starts a child with the token, the profile and the environment of an account that is logged on for it.
// Returns its WinProcess; null, with the reason in `errorBuffer` or with a Java exception pending, when that
// fails.
jobject launchAsUser(JNIEnv* env, const Program& program, const Account& account,
                     ErrorBuffer& errorBuffer) noexcept;

// Starts a child as the user of a session, by the same rules. It has neither token nor profile of its own.
jobject launchInSession(JNIEnv* env, const Program& program, DWORD session,
                        ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
