#include "inventory/wmi_session.h"

namespace winutil::inventory {

namespace {

constexpr long queryFlags = WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY;
static_assert(queryFlags == 48);

HRESULT initializeSecurity() noexcept {
    const HRESULT result = CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                                RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    // The process has one setting, and whoever came first has made it.
    return result == RPC_E_TOO_LATE ? S_OK : result;
}

HRESULT createLocator(ComPtr<IWbemLocator>& locator) noexcept {
    const HRESULT result =
        CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(locator.receive()));
    return SUCCEEDED(result) && !locator ? E_NOINTERFACE : result;
}

HRESULT connectServer(IWbemLocator* locator, ComPtr<IWbemServices>& services) noexcept {
    const Bstr path(SysAllocString(L"ROOT\\CIMV2"));
    if (!path) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = locator->ConnectServer(path.get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                                  services.receive());
    return SUCCEEDED(result) && !services ? E_NOINTERFACE : result;
}

HRESULT setProxyBlanket(IWbemServices* services) noexcept {
    return CoSetProxyBlanket(services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                             RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

HRESULT executeQuery(IWbemServices* services, const wchar_t* text,
                     ComPtr<IEnumWbemClassObject>& objects) noexcept {
    const Bstr language(SysAllocString(L"WQL"));
    const Bstr query(SysAllocString(text));
    if (!language || !query) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result =
        services->ExecQuery(language.get(), query.get(), queryFlags, nullptr, objects.receive());
    return SUCCEEDED(result) && !objects ? E_NOINTERFACE : result;
}

}  // namespace

// What a step leaves behind that failed; no text when none has.
struct WmiSession::Failure {
    const wchar_t* text = nullptr;
    HRESULT result = S_OK;
    FailureForm form = FailureForm::fixedText;
};

WmiSession::Failure WmiSession::connect() noexcept {
    if (!com_) {
        return {L"Failed to initialize COM library. error=", com_.result(), FailureForm::withSystemText};
    }
    HRESULT result = initializeSecurity();
    if (FAILED(result)) {
        return {L"Failed to initialize security.", result};
    }
    result = createLocator(locator_);
    if (FAILED(result)) {
        return {L"Failed to create IWbemLocator object.", result};
    }
    result = connectServer(locator_.get(), services_);
    if (FAILED(result)) {
        return {L"Could not connect [ROOT\\CIMV2]", result};
    }
    result = setProxyBlanket(services_.get());
    if (FAILED(result)) {
        return {L"Could not set proxy blanket.", result};
    }
    return {};
}

bool WmiSession::run(const WmiQuery& query, ErrorBuffer& errorBuffer) noexcept {
    Failure failure = connect();
    if (failure.text == nullptr) {
        failure.result = executeQuery(services_.get(), query.text, objects_);
        failure.text = FAILED(failure.result) ? query.failureText : nullptr;
    }
    if (failure.text == nullptr) {
        return true;
    }
    LocalMemory<wchar_t> systemText;
    if (failure.form == FailureForm::withSystemText || query.failureForm == FailureForm::withSystemText) {
        systemText = findSystemText(static_cast<DWORD>(failure.result));
    }
    errorBuffer.print(L"%s%s", failure.text, systemText ? systemText.get() : L"");
    return false;
}

ComPtr<IWbemClassObject> WmiSession::next() noexcept {
    ComPtr<IWbemClassObject> object;
    ULONG returned = 0;
    objects_->Next(static_cast<LONG>(WBEM_INFINITE), 1, object.receive(), &returned);
    return returned == 0 ? ComPtr<IWbemClassObject>() : std::move(object);
}

}  // namespace winutil::inventory
