#include "account/handshake.h"

#include <cstddef>

#include "account/guest_account.h"
#include "account/security_provider.h"
#include "bridge/owners.h"

namespace winutil::account {

namespace {

constexpr wchar_t ntlm[] = L"NTLM";

constexpr DWORD descriptorVersion = 0;
static_assert(SECBUFFER_VERSION == descriptorVersion);

// The functions take their input texts and bytes as not constant.
wchar_t* packageName() noexcept {
    return const_cast<wchar_t*>(ntlm);
}

unsigned short* identityText(const wchar_t* text) noexcept {
    return reinterpret_cast<unsigned short*>(const_cast<wchar_t*>(text));
}

unsigned long identityLength(const wchar_t* text) noexcept {
    return static_cast<unsigned long>(lstrlenW(text));
}

// A message of the handshake.
struct Token {
    std::byte* data;
    unsigned long length;  // bytes
};

// One buffer with a token, in the form that the provider takes and fills.
struct TokenBuffer {
    explicit TokenBuffer(const Token& token) noexcept
        : buffer{token.length, SECBUFFER_TOKEN, token.data}, descriptor{descriptorVersion, 1, &buffer} {}
    TokenBuffer(const TokenBuffer&) = delete;
    TokenBuffer& operator=(const TokenBuffer&) = delete;
    ~TokenBuffer() = default;

    SecBuffer buffer;
    SecBufferDesc descriptor;
};

// The client or the server of the handshake, and what the provider keeps for it.
struct SspiSide {
    explicit SspiSide(const SspiFunctionTable& table) noexcept : functions(table) {}
    SspiSide(const SspiSide&) = delete;
    SspiSide& operator=(const SspiSide&) = delete;
    ~SspiSide() {
        if (haveContext) {
            functions.deleteSecurityContext(&context);
        }
        if (haveCredentials) {
            functions.freeCredentialsHandle(&credentials);
        }
    }

    const SspiFunctionTable& functions;
    bool haveCredentials = false;
    bool haveContext = false;
    CredHandle credentials = {};
    CtxtHandle context = {};
};

bool acquireCredentials(SspiSide& side, unsigned long use, SEC_WINNT_AUTH_IDENTITY_W* identity) noexcept {
    if (!side.haveCredentials) {
        TimeStamp expiry;
        side.haveCredentials =
            side.functions.acquireCredentialsHandle(nullptr, packageName(), use, nullptr, identity, nullptr,
                                                    nullptr, &side.credentials, &expiry) >= 0;
    }
    return side.haveCredentials;
}

// What follows a step's call on either side: the status looked at, the token completed, its length stored.
bool finishStep(SspiSide& side, SECURITY_STATUS status, TokenBuffer& produced, Token& output,
                bool& done) noexcept {
    if (status < 0) {
        return false;
    }
    side.haveContext = true;
    if (status == SEC_I_COMPLETE_NEEDED || status == SEC_I_COMPLETE_AND_CONTINUE) {
        const auto complete = side.functions.completeAuthToken;
        if (complete == nullptr || complete(&side.context, &produced.descriptor) < 0) {
            return false;
        }
    }
    output.length = produced.buffer.cbBuffer;
    done = status != SEC_I_CONTINUE_NEEDED && status != SEC_I_COMPLETE_AND_CONTINUE;
    return true;
}

// Makes the client's next token from the server's last one, which is null at the start.
bool clientStep(SspiSide& side, SEC_WINNT_AUTH_IDENTITY_W& identity, const Token* input, Token& output,
                bool& done) noexcept {
    if (!acquireCredentials(side, SECPKG_CRED_OUTBOUND, &identity)) {
        return false;
    }
    TokenBuffer produced(output);
    TokenBuffer given(input != nullptr ? *input : Token{});
    unsigned long attributes = 0;
    TimeStamp expiry;
    const SECURITY_STATUS status = side.functions.initializeSecurityContext(
        &side.credentials, side.haveContext ? &side.context : nullptr, nullptr, 0, 0, SECURITY_NATIVE_DREP,
        input != nullptr ? &given.descriptor : nullptr, 0, &side.context, &produced.descriptor, &attributes,
        &expiry);
    return finishStep(side, status, produced, output, done);
}

// Makes the server's next token from the client's last one.
bool serverStep(SspiSide& side, const Token& input, Token& output, bool& done) noexcept {
    if (!acquireCredentials(side, SECPKG_CRED_INBOUND, nullptr)) {
        return false;
    }
    TokenBuffer produced(output);
    TokenBuffer given(input);
    unsigned long attributes = 0;
    TimeStamp expiry;
    const SECURITY_STATUS status = side.functions.acceptSecurityContext(
        &side.credentials, side.haveContext ? &side.context : nullptr, &given.descriptor, 0,
        SECURITY_NATIVE_DREP, &side.context, &produced.descriptor, &attributes, &expiry);
    return finishStep(side, status, produced, output, done);
}

// Returns whether the server side let the client in as the guest, as a computer that admits everybody does
// with any name and password. Without memory to tell, it may have: the logon behind the handshake then
// decides.
bool admittedAsGuest(SspiSide& server) noexcept {
    const auto queryToken = server.functions.querySecurityContextToken;
    KernelHandle token;
    if (queryToken == nullptr || !server.haveContext || queryToken(&server.context, token.receive()) < 0) {
        return false;
    }
    return isGuestToken(token.get()).value_or(true);
}

bool readMaxToken(const SspiFunctionTable& functions, unsigned long& maxToken) noexcept {
    PSecPkgInfoW info = nullptr;
    if (functions.querySecurityPackageInfo(packageName(), &info) < 0 || info == nullptr) {
        return false;
    }
    maxToken = info->cbMaxToken;
    functions.freeContextBuffer(info);
    return true;
}

// Plays the handshake. Every step runs, whatever became of those before it, and no more than these four:
// whether a side calls itself done is not asked.
bool playHandshake(SspiSide& client, SspiSide& server, SEC_WINNT_AUTH_IDENTITY_W& identity,
                   std::byte* clientBuffer, std::byte* serverBuffer, unsigned long maxToken) noexcept {
    bool done = false;
    Token fromClient{clientBuffer, maxToken};
    bool succeeded = clientStep(client, identity, nullptr, fromClient, done);
    Token fromServer{serverBuffer, maxToken};
    succeeded = serverStep(server, fromClient, fromServer, done) && succeeded;
    fromClient.length = maxToken;
    succeeded = clientStep(client, identity, &fromServer, fromClient, done) && succeeded;
    fromServer.length = maxToken;
    return serverStep(server, fromClient, fromServer, done) && succeeded;
}

ProcessHeapMemory<std::byte> allocateToken(unsigned long size) noexcept {
    return ProcessHeapMemory<std::byte>(
        static_cast<std::byte*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size)));
}

}  // namespace

bool validateWithSspi(const Credentials& account) noexcept {
    // In the order opposite to that of their release.
    ProcessHeapMemory<std::byte> clientBuffer;
    ProcessHeapMemory<std::byte> serverBuffer;
    SspiFunctionTable functions;
    const Module provider = loadSecurityProvider(functions);
    unsigned long maxToken = 0;
    if (!provider || !readMaxToken(functions, maxToken)) {
        return false;
    }
    clientBuffer = allocateToken(maxToken);
    serverBuffer = allocateToken(maxToken);
    if (!clientBuffer || !serverBuffer) {
        return false;
    }
    // The texts are the caller's own: the password gets no copy here.
    SEC_WINNT_AUTH_IDENTITY_W identity = {};
    identity.User = identityText(account.user);
    identity.UserLength = identityLength(account.user);
    identity.Domain = identityText(account.domain);
    identity.DomainLength = identityLength(account.domain);
    identity.Password = identityText(account.password);
    identity.PasswordLength = identityLength(account.password);
    identity.Flags = SEC_WINNT_AUTH_IDENTITY_UNICODE;
    SspiSide server(functions);
    SspiSide client(functions);
    const bool succeeded =
        playHandshake(client, server, identity, clientBuffer.get(), serverBuffer.get(), maxToken);
    const bool guest = admittedAsGuest(server);
    return succeeded && !guest;
}

}  // namespace winutil::account
