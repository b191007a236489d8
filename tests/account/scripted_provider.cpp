#include "scripted_provider.h"

#include <gtest/gtest.h>

#include <cstring>

#include "text.h"

namespace testbed {

namespace {

ScriptedProvider* current = nullptr;

// The two sides, as the handles name them.
constexpr ULONG_PTR client = 1;
constexpr ULONG_PTR server = 2;

std::string sideName(ULONG_PTR side) {
    return side == client ? "client" : side == server ? "server" : "nobody";
}

SECURITY_STATUS nextStatus(const std::string& function, SECURITY_STATUS otherwise) {
    std::vector<SECURITY_STATUS>& script = current->statuses[function];
    if (script.empty()) {
        return otherwise;
    }
    const SECURITY_STATUS status = script.front();
    script.erase(script.begin());
    return status;
}

void note(const std::string& line) {
    current->calls.push_back(line);
}

// The token in a descriptor, as text; checks the form that descriptors have.
std::string tokenOf(const SecBufferDesc* descriptor) {
    if (descriptor == nullptr) {
        return "none";
    }
    EXPECT_EQ(descriptor->ulVersion, 0u);
    EXPECT_EQ(descriptor->cBuffers, 1u);
    const SecBuffer& buffer = descriptor->pBuffers[0];
    EXPECT_EQ(buffer.BufferType, static_cast<unsigned long>(SECBUFFER_TOKEN));
    const auto* text = static_cast<const char*>(buffer.pvBuffer);
    return {text, strnlen(text, buffer.cbBuffer)};
}

void produce(SecBufferDesc* descriptor, const std::string& token) {
    tokenOf(descriptor);
    SecBuffer& buffer = descriptor->pBuffers[0];
    EXPECT_EQ(buffer.cbBuffer, ScriptedProvider::maxToken);
    std::memcpy(buffer.pvBuffer, token.data(), token.size());
    buffer.cbBuffer = static_cast<unsigned long>(token.size());
}

std::string identityText(const unsigned short* text, unsigned long length) {
    return toUtf8({reinterpret_cast<const wchar_t*>(text), length});
}

SECURITY_STATUS WINAPI acquire(SEC_WCHAR* principal, SEC_WCHAR* package, unsigned long use, void* luid,
                               void* identity, SEC_GET_KEY_FN getKey, void* argument, PCredHandle credentials,
                               PTimeStamp) {
    EXPECT_EQ(principal, nullptr);
    EXPECT_STREQ(package, L"NTLM");
    EXPECT_EQ(luid, nullptr);
    EXPECT_TRUE(getKey == nullptr && argument == nullptr);
    const bool outbound = use == SECPKG_CRED_OUTBOUND;
    EXPECT_TRUE(outbound || use == SECPKG_CRED_INBOUND);
    std::string line = outbound ? "acquire client" : "acquire server";
    if (const auto* given = static_cast<const SEC_WINNT_AUTH_IDENTITY_W*>(identity)) {
        EXPECT_EQ(given->Flags, static_cast<unsigned long>(SEC_WINNT_AUTH_IDENTITY_UNICODE));
        line += " as " + identityText(given->Domain, given->DomainLength) + "\\" +
                identityText(given->User, given->UserLength) + ":" +
                identityText(given->Password, given->PasswordLength);
    }
    note(line);
    const SECURITY_STATUS status = nextStatus(line.substr(0, 14), SEC_E_OK);
    if (status >= 0) {
        credentials->dwLower = outbound ? client : server;
        ++current->live;
    }
    return status;
}

// What both kinds of step have in common.
SECURITY_STATUS step(const std::string& side, ULONG_PTR number, PCredHandle credentials, PCtxtHandle before,
                     PSecBufferDesc input, PCtxtHandle context, PSecBufferDesc output) {
    note(side + (before == nullptr ? " begins with " : " goes on with ") + tokenOf(input));
    EXPECT_EQ(credentials->dwLower, number);
    if (before != nullptr) {
        EXPECT_EQ(before->dwLower, number);
    }
    const SECURITY_STATUS status = nextStatus(side, before == nullptr ? SEC_I_CONTINUE_NEEDED : SEC_E_OK);
    if (status < 0) {
        return status;
    }
    if (before == nullptr) {
        ++current->live;
    }
    context->dwLower = number;
    produce(output, side + (before == nullptr ? "1" : "2"));
    return status;
}

SECURITY_STATUS WINAPI initialize(PCredHandle credentials, PCtxtHandle before, SEC_WCHAR* target,
                                  unsigned long requirements, unsigned long, unsigned long representation,
                                  PSecBufferDesc input, unsigned long, PCtxtHandle context,
                                  PSecBufferDesc output, unsigned long*, PTimeStamp) {
    EXPECT_EQ(target, nullptr);
    EXPECT_EQ(requirements, 0u);
    EXPECT_EQ(representation, static_cast<unsigned long>(SECURITY_NATIVE_DREP));
    return step("client", client, credentials, before, input, context, output);
}

SECURITY_STATUS WINAPI accept(PCredHandle credentials, PCtxtHandle before, PSecBufferDesc input,
                              unsigned long requirements, unsigned long representation, PCtxtHandle context,
                              PSecBufferDesc output, unsigned long*, PTimeStamp) {
    EXPECT_EQ(requirements, 0u);
    EXPECT_EQ(representation, static_cast<unsigned long>(SECURITY_NATIVE_DREP));
    return step("server", server, credentials, before, input, context, output);
}

SECURITY_STATUS WINAPI complete(PCtxtHandle context, PSecBufferDesc token) {
    note("complete " + sideName(context->dwLower) + " " + tokenOf(token));
    return nextStatus("complete", SEC_E_OK);
}

SECURITY_STATUS WINAPI deleteContext(PCtxtHandle context) {
    if (sideName(context->dwLower) == "client") {
        current->errorAtEnd = GetLastError();
    }
    note("delete context of " + sideName(context->dwLower));
    --current->live;
    return SEC_E_OK;
}

SECURITY_STATUS WINAPI freeCredentials(PCredHandle credentials) {
    note("free credentials of " + sideName(credentials->dwLower));
    --current->live;
    return SEC_E_OK;
}

SecPkgInfoW packageInfo = {};

SECURITY_STATUS WINAPI queryPackage(SEC_WCHAR* package, PSecPkgInfoW* info) {
    EXPECT_STREQ(package, L"NTLM");
    note("query package");
    const SECURITY_STATUS status = nextStatus("query package", SEC_E_OK);
    if (status >= 0 && current->describesPackage) {
        packageInfo.cbMaxToken = ScriptedProvider::maxToken;
        *info = &packageInfo;
        ++current->live;
    }
    return status;
}

SECURITY_STATUS WINAPI freeBuffer(void* buffer) {
    EXPECT_EQ(buffer, &packageInfo);
    note("free package");
    --current->live;
    return SEC_E_OK;
}

SECURITY_STATUS WINAPI queryToken(PCtxtHandle context, HANDLE* token) {
    note("query token of " + sideName(context->dwLower));
    if (current->token == nullptr) {
        return SEC_E_UNSUPPORTED_FUNCTION;
    }
    *token = current->token;
    return SEC_E_OK;
}

const std::map<std::string, const void*> entryPoints = {
    {"AcceptSecurityContext", reinterpret_cast<const void*>(&accept)},
    {"AcquireCredentialsHandleW", reinterpret_cast<const void*>(&acquire)},
    {"CompleteAuthToken", reinterpret_cast<const void*>(&complete)},
    {"DeleteSecurityContext", reinterpret_cast<const void*>(&deleteContext)},
    {"FreeContextBuffer", reinterpret_cast<const void*>(&freeBuffer)},
    {"FreeCredentialsHandle", reinterpret_cast<const void*>(&freeCredentials)},
    {"InitializeSecurityContextW", reinterpret_cast<const void*>(&initialize)},
    {"QuerySecurityPackageInfoW", reinterpret_cast<const void*>(&queryPackage)},
    {"QuerySecurityContextToken", reinterpret_cast<const void*>(&queryToken)},
};

}  // namespace

ScriptedProvider::ScriptedProvider(SystemCalls& system) {
    current = this;
    load_ = system.replace<decltype(::LoadLibraryA)>("LoadLibraryA", [this, &system](LPCSTR name) {
        loaded.emplace_back(name);
        // Whatever the name, a library that is there: the ledger sees it come and go.
        module_ = system.real<decltype(::LoadLibraryA)>("LoadLibraryA")("version.dll");
        return module_;
    });
    getProcAddress_ = system.replace<decltype(::GetProcAddress)>(
        "GetProcAddress", [this, &system](HMODULE module, LPCSTR name) -> FARPROC {
            EXPECT_EQ(module, module_);
            resolved.emplace_back(name);
            const auto found = entryPoints.find(name);
            if (missing.contains(name) || found == entryPoints.end()) {
                SetLastError(ERROR_PROC_NOT_FOUND);
                return nullptr;
            }
            return reinterpret_cast<FARPROC>(const_cast<void*>(system.lead(name, found->second)));
        });
}

ScriptedProvider::~ScriptedProvider() {
    EXPECT_EQ(live, 0u) << "credentials, contexts or package informations that were not given back";
    current = nullptr;
}

std::size_t ScriptedProvider::count(const std::string& name) const {
    std::size_t found = 0;
    for (const std::string& call : calls) {
        found += call.starts_with(name) ? 1 : 0;
    }
    return found;
}

std::vector<std::string> ScriptedProvider::wholeHandshake() {
    return {"query package",
            "free package",
            "acquire client as DOM\\user:secret",
            "client begins with none",
            "acquire server",
            "server begins with client1",
            "client goes on with server1",
            "server goes on with client2",
            "query token of server",
            "delete context of client",
            "free credentials of client",
            "delete context of server",
            "free credentials of server"};
}

}  // namespace testbed
