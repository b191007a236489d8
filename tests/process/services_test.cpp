// The state of a service.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <winsvc.h>

#include "process_fixture.h"

namespace {

using namespace testbed;

const std::wstring tag = L"[WindowsUtil:getServiceStatus]";

class ServiceTest : public ProcessTest {
protected:
    // A manager with one service, in this state.
    void pretend(DWORD state) {
        replacements_.push_back(REPLACE(OpenSCManagerW, [](LPCWSTR machine, LPCWSTR database, DWORD access) {
            EXPECT_EQ(machine, nullptr);
            EXPECT_EQ(database, nullptr);
            EXPECT_EQ(access, 1u);
            return reinterpret_cast<SC_HANDLE>(Ledger::fakeHandle());
        }));
        replacements_.push_back(REPLACE(OpenServiceW, [this](SC_HANDLE, LPCWSTR name, DWORD access) {
            asked = name;
            EXPECT_EQ(access, 4u);
            return reinterpret_cast<SC_HANDLE>(Ledger::fakeHandle());
        }));
        replacements_.push_back(REPLACE(QueryServiceStatusEx, [state](SC_HANDLE, SC_STATUS_TYPE level,
                                                                      LPBYTE buffer, DWORD size, LPDWORD) {
            EXPECT_EQ(level, SC_STATUS_PROCESS_INFO);
            EXPECT_EQ(size, 36u);
            reinterpret_cast<SERVICE_STATUS_PROCESS*>(buffer)->dwCurrentState = state;
            return TRUE;
        }));
    }

    std::wstring asked;

private:
    std::vector<Replacement> replacements_;
};

TEST_F(ServiceTest, KnowsARunningServiceOfTheSystem) {
    EXPECT_TRUE(NATIVE(isServiceRunning)(L"PlugPlay"));

    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ServiceTest, KnowsAStoppedServiceOfTheSystem) {
    EXPECT_FALSE(NATIVE(isServiceRunning)(L"Spooler"));

    EXPECT_FALSE(java.isPending());
}

TEST_F(ServiceTest, TellsThatThereIsNoSuchService) {
    EXPECT_FALSE(NATIVE(isServiceRunning)(L"NoSuchService"));

    EXPECT_EQ(java.takeException(), ioException(stepMessage(tag + L" OpenService failed.", 1060)));
}

TEST_F(ServiceTest, IsRunningInThatStateAloneAndAsksForTheNameAsItIs) {
    for (DWORD state = 0; state <= SERVICE_PAUSED + 1; ++state) {
        pretend(state);

        EXPECT_EQ(NATIVE(isServiceRunning)(L"B\u00e4ckup"), state == SERVICE_RUNNING) << state;

        EXPECT_EQ(asked, L"B\u00e4ckup");
    }
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(ServiceTest, TellsWhyThereIsNoManager) {
    const auto open = system().answer("OpenSCManagerW", 0, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(isServiceRunning)(L"PlugPlay"));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(tag + L" OpenSCManager failed.", ERROR_ACCESS_DENIED)));
    EXPECT_EQ(system().count("OpenServiceW"), 0u);
}

TEST_F(ServiceTest, TellsWhyTheServiceCannotBeOpenedAndClosesTheManager) {
    pretend(SERVICE_RUNNING);
    const auto open = system().answer("OpenServiceW", 0, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(isServiceRunning)(L"x"));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(tag + L" OpenService failed.", ERROR_ACCESS_DENIED)));
    EXPECT_TRUE(ledger().isEmpty());
    EXPECT_EQ(system().count("CloseServiceHandle"), 1u);
}

TEST_F(ServiceTest, TellsWhyThereIsNoStateAndClosesBoth) {
    pretend(SERVICE_RUNNING);
    const auto query = system().answer("QueryServiceStatusEx", FALSE, ERROR_INVALID_LEVEL);

    EXPECT_FALSE(NATIVE(isServiceRunning)(L"x"));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(tag + L" QueryServiceStatusEx failed.", ERROR_INVALID_LEVEL)));
    EXPECT_EQ(system().count("CloseServiceHandle"), 2u);
}

TEST_F(ServiceTest, AsksNobodyWithoutMemoryForTheName) {
    java.failCall("GetStringChars");

    EXPECT_FALSE(NATIVE(isServiceRunning)(L"PlugPlay"));

    EXPECT_EQ(java.takeException(), ioException(stepMessage(tag, ERROR_NOT_ENOUGH_MEMORY)));
    const auto allocation = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(NATIVE(isServiceRunning)(L"PlugPlay"));

    EXPECT_EQ(java.takeException(), ioException(stepMessage(tag, ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("OpenSCManagerW"), 0u);
}

}  // namespace
