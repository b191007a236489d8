// The session that all queries share: what it asks for, and what becomes of each step that fails.
#include <cstring>

#include "wmi_fixture.h"

namespace {

using namespace testbed;

// One native method, its query, and what it says when that fails.
struct Method {
    const char* name;
    std::wstring query;
    std::wstring failureText;
    std::function<void()> call;
};

class WmiSession : public WmiTest {
protected:
    // Collectors that nothing must be handed to.
    JavaObject processors = java.object("java/lang/Object");
    JavaObject modules = java.object("java/lang/Object");
    JavaObject features = java.list();

    std::vector<Method> methods() {
        const std::wstring modelFailure = L"Query for Computer System name failed.";
        return {
            {"getSystemModel", L"SELECT * FROM Win32_ComputerSystem", modelFailure,
             [this] { NATIVE(getSystemModel)(); }},
            {"getProcessorInfo", L"SELECT * FROM Win32_Processor", modelFailure,
             [this] { NATIVE(getProcessorInfo)(processors); }},
            {"getMemoryInfo", L"SELECT * FROM Win32_PhysicalMemory", modelFailure,
             [this] { NATIVE(getMemoryInfo)(modules); }},
            {"getMotherboardUUID", L"SELECT * FROM Win32_ComputerSystemProduct",
             L"Query for motherboard UUID failed.", [this] { NATIVE(getMotherboardUUID)(); }},
            {"getWindowsInstalledFeatures", L"SELECT * FROM Win32_ServerFeature",
             L"Query for Server Feature failed.", [this] { NATIVE(getWindowsInstalledFeatures)(features); }},
        };
    }

    // Calls every method while a step fails, and expects that message and those events of each.
    void expectFailure(HRESULT& step, const std::wstring& message, const Events& expected) {
        step = E_ACCESSDENIED;
        for (const Method& method : methods()) {
            SCOPED_TRACE(method.name);
            events.clear();

            method.call();

            EXPECT_EQ(java.takeException(), ioException(message));
            EXPECT_EQ(events, expected);
            EXPECT_TRUE(ledger().isEmpty());
        }
    }
};

TEST_F(WmiSession, AsksTheLocalNamespaceTheMethodsQuestion) {
    for (const Method& method : methods()) {
        SCOPED_TRACE(method.name);

        method.call();

        EXPECT_EQ(locator.path, L"ROOT\\CIMV2");
        EXPECT_EQ(services.language, L"WQL");
        EXPECT_EQ(services.query, method.query);
        EXPECT_EQ(services.flags, 48);
    }
    EXPECT_EQ(system().count("CoInitializeSecurity"), 5u);
    EXPECT_EQ(system().count("CoSetProxyBlanket"), 5u);
}

TEST_F(WmiSession, GivesEverythingBackAndEndsComLast) {
    for (const Method& method : methods()) {
        SCOPED_TRACE(method.name);
        foundOnly({});
        found({});
        events.clear();

        method.call();

        EXPECT_EQ(events, (Events{"initialize", "release object", "release object", "release enumeration",
                                  "release services", "release locator", "uninitialize"}));
        EXPECT_EQ(enumeration.asked, 3u) << "until there are no more";
        EXPECT_TRUE(ledger().isEmpty());
    }
}

TEST_F(WmiSession, EndsWhereTheEnumerationFails) {
    found({{L"UUID", text(L"one")}});
    enumeration.endResult = noSuchClass;

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"one");

    EXPECT_EQ(enumeration.asked, 2u);
}

TEST_F(WmiSession, TakesAThreadInTheOtherModeAsItIs) {
    initializeResult = RPC_E_CHANGED_MODE;
    found({{L"UUID", text(L"one")}});

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"one");
    EXPECT_EQ(count("uninitialize"), 0);

    services.queryResult = E_FAIL;
    NATIVE(getMotherboardUUID)();
    EXPECT_EQ(java.takeException(), ioException(L"Query for motherboard UUID failed."));
    EXPECT_EQ(count("uninitialize"), 0);
}

TEST_F(WmiSession, BalancesAnInitializationThatWasThereBefore) {
    initializeResult = S_FALSE;

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"");

    EXPECT_EQ(count("uninitialize"), 1);
}

TEST_F(WmiSession, TakesTheSecurityThatTheProcessHasAlready) {
    securityResult = RPC_E_TOO_LATE;
    found({{L"UUID", text(L"one")}});

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"one");
}

// Each step that fails

TEST_F(WmiSession, SaysThatSecurityFailed) {
    expectFailure(securityResult, L"Failed to initialize security.", {"initialize", "uninitialize"});
}

TEST_F(WmiSession, SaysThatThereIsNoLocator) {
    expectFailure(createResult, L"Failed to create IWbemLocator object.", {"initialize", "uninitialize"});
}

TEST_F(WmiSession, SaysThatItCouldNotConnect) {
    expectFailure(locator.connectResult, L"Could not connect [ROOT\\CIMV2]",
                  {"initialize", "release locator", "uninitialize"});
}

TEST_F(WmiSession, SaysThatTheProxyWasRefused) {
    expectFailure(blanketResult, L"Could not set proxy blanket.",
                  {"initialize", "release services", "release locator", "uninitialize"});
}

TEST_F(WmiSession, SaysWhichQueryFailed) {
    services.queryResult = invalidQuery;
    for (const Method& method : methods()) {
        SCOPED_TRACE(method.name);
        events.clear();

        method.call();

        EXPECT_EQ(java.takeException(), ioException(method.failureText));
        EXPECT_EQ(events, (Events{"initialize", "release services", "release locator", "uninitialize"}));
        EXPECT_TRUE(ledger().isEmpty());
    }
}

TEST_F(WmiSession, TakesASuccessWithoutAnObjectForAFailure) {
    for (const Method& method : methods()) {
        const std::pair<bool*, std::wstring> steps[] = {
            {&createsNothing, L"Failed to create IWbemLocator object."},
            {&locator.givesNothing, L"Could not connect [ROOT\\CIMV2]"},
            {&services.givesNothing, method.failureText}};
        for (const auto& [step, message] : steps) {
            SCOPED_TRACE(method.name);
            *step = true;

            method.call();

            *step = false;
            EXPECT_EQ(java.takeException(), ioException(message));
            EXPECT_TRUE(ledger().isEmpty());
        }
    }
}

TEST_F(WmiSession, NeedsMemoryForItsTexts) {
    const Method model = methods().front();
    const std::wstring messages[] = {L"Could not connect [ROOT\\CIMV2]", model.failureText,
                                     model.failureText};
    for (std::size_t k = 0; k < std::size(messages); ++k) {
        const Replacement failure = system().failCall("SysAllocString", k + 1, ERROR_SUCCESS);

        model.call();

        EXPECT_EQ(java.takeException(), ioException(messages[k])) << "text " << k;
        EXPECT_TRUE(ledger().isEmpty());
    }
}

// The one message with the system's text behind it

class WmiWithoutCom : public WmiSession {
protected:
    std::wstring systemsText;
    DWORD askedCode = 0;

    Replacement messages = REPLACE(FormatMessageW,
                                   [this](DWORD flags, LPCVOID source, DWORD code, DWORD language,
                                          LPWSTR buffer, DWORD, va_list*) -> DWORD {
                                       EXPECT_EQ(flags, 0x1300u);
                                       EXPECT_EQ(source, nullptr);
                                       EXPECT_EQ(language, 0x400u);
                                       askedCode = code;
                                       if (systemsText.empty()) {
                                           return 0;
                                       }
                                       const std::size_t size = (systemsText.size() + 1) * sizeof(wchar_t);
                                       void* copy = LocalAlloc(LMEM_FIXED, size);
                                       std::memcpy(copy, systemsText.c_str(), size);
                                       *reinterpret_cast<LPWSTR*>(buffer) = static_cast<LPWSTR>(copy);
                                       return static_cast<DWORD>(systemsText.size());
                                   });

    void expectMessage(const std::wstring& message) {
        initializeResult = E_OUTOFMEMORY;
        for (const Method& method : methods()) {
            SCOPED_TRACE(method.name);
            events.clear();

            method.call();

            EXPECT_EQ(java.takeException(), ioException(message));
            EXPECT_EQ(askedCode, 0x8007000Eu);
            EXPECT_EQ(events, Events{"initialize"});
            EXPECT_TRUE(ledger().isEmpty());
        }
        EXPECT_EQ(system().count("CoInitializeSecurity"), 0u);
    }
};

TEST_F(WmiWithoutCom, SaysWhyInTheSystemsWords) {
    systemsText = L"No memory left.\r\n";
    expectMessage(L"Failed to initialize COM library. error=No memory left.\r\n");
}

TEST_F(WmiWithoutCom, SaysNoMoreWhereTheSystemHasNoWords) {
    expectMessage(L"Failed to initialize COM library. error=");
}

TEST_F(WmiWithoutCom, CutsAMessageThatDoesNotFit) {
    systemsText = std::wstring(5000, L'x');
    const std::wstring fixed = L"Failed to initialize COM library. error=";
    expectMessage(fixed + std::wstring(4095 - fixed.size(), L'x'));
}

}  // namespace
