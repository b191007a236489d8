// The system library that speaks the authentication protocols, loaded for the length of one check.
#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#ifndef SECURITY_WIN32
#define SECURITY_WIN32
#endif
#include <sspi.h>

#include "bridge/owners.h"

namespace winutil::account {

// Its entry points. All are there but the two that not every provider has, which are null then.
struct SspiFunctionTable {
    decltype(&::AcceptSecurityContext) acceptSecurityContext = nullptr;
    decltype(&::AcquireCredentialsHandleW) acquireCredentialsHandle = nullptr;
    decltype(&::CompleteAuthToken) completeAuthToken = nullptr;  // optional
    decltype(&::DeleteSecurityContext) deleteSecurityContext = nullptr;
    decltype(&::FreeContextBuffer) freeContextBuffer = nullptr;
    decltype(&::FreeCredentialsHandle) freeCredentialsHandle = nullptr;
    decltype(&::InitializeSecurityContextW) initializeSecurityContext = nullptr;
    decltype(&::QuerySecurityPackageInfoW) querySecurityPackageInfo = nullptr;
    decltype(&::QuerySecurityContextToken) querySecurityContextToken = nullptr;  // optional
};

// Loads the provider and fills the table. None, and an empty table, when the library or one of the entry
// points that must be there is missing. The table belongs to the caller, so that checks on several threads do
// not meet in it; it is good as long as the module is held.
Module loadSecurityProvider(SspiFunctionTable& table) noexcept;

}  // namespace winutil::account
