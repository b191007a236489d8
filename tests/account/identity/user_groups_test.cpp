// The groups of a user.
// windows.h comes first: the other builds on it.
#include <windows.h>

#include <lm.h>

#include <deque>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* addSignature = "(Ljava/lang/Object;)Z";

// What one of the two calls answers, and how it was asked.
struct GroupCall {
    std::vector<std::wstring> names;
    NET_API_STATUS status = NERR_Success;
    NET_API_STATUS statusOfServer = NERR_Success;  // where a server is named
    std::vector<std::wstring> askedServers = {};   // "-" for none
    std::wstring askedUser = {};
};

class UserGroups : public WinUtilTest {
protected:
    UserGroups() {
        static_assert(sizeof(GROUP_USERS_INFO_0) == sizeof(wchar_t*));
        static_assert(sizeof(LOCALGROUP_USERS_INFO_0) == sizeof(wchar_t*));
        replacements_.push_back(
            REPLACE(NetUserGetGroups, [this](LPCWSTR server, LPCWSTR user, DWORD level, LPBYTE* buffer,
                                             DWORD length, LPDWORD read, LPDWORD total) {
                EXPECT_EQ(level, 0u);
                EXPECT_EQ(length, 0xFFFFFFFF);
                return answer(global, server, user, buffer, read, total);
            }));
        replacements_.push_back(
            REPLACE(NetUserGetLocalGroups, [this](LPCWSTR server, LPCWSTR user, DWORD level, DWORD flags,
                                                  LPBYTE* buffer, DWORD length, LPDWORD read, LPDWORD total) {
                EXPECT_EQ(level, 0u);
                EXPECT_EQ(flags, static_cast<DWORD>(LG_INCLUDE_INDIRECT));
                EXPECT_EQ(length, 0xFFFFFFFF);
                return answer(local, server, user, buffer, read, total);
            }));
        replacements_.push_back(REPLACE(NetApiBufferFree, [this](LPVOID buffer) -> NET_API_STATUS {
            EXPECT_EQ(buffers_.erase(buffer), 1u);
            return NERR_Success;
        }));
    }

    JavaObject collector() {
        return java.collector("add", addSignature, [this](const Arguments& arguments) -> Value {
            if (added.size() + 1 == throwAt) {
                throw JavaThrow{java.exception("java/lang/IllegalStateException", L"full")};
            }
            added.push_back(arguments[0].text());
            return true;
        });
    }

    GroupCall global{.names = {L"Domain Users", L"Caf\u00E9"}};
    GroupCall local{.names = {L"Users"}};
    std::vector<std::wstring> added;
    std::size_t throwAt = 0;

private:
    NET_API_STATUS answer(GroupCall& call, LPCWSTR server, LPCWSTR user, LPBYTE* buffer, LPDWORD read,
                          LPDWORD total) {
        call.askedServers.emplace_back(server == nullptr ? L"-" : server);
        call.askedUser = user;
        const NET_API_STATUS status = server != nullptr ? call.statusOfServer : call.status;
        if (status != NERR_Success) {
            return status;
        }
        // The pointers end at a guard page.
        std::vector<const wchar_t*> names;
        for (const std::wstring& name : call.names) {
            names.push_back(name.c_str());
        }
        GuardedBuffer block(std::as_bytes(std::span(names)), "groups");
        *read = *total = static_cast<DWORD>(names.size());
        *buffer = block.as<BYTE>();
        buffers_[*buffer] = std::move(block);
        return NERR_Success;
    }

    std::map<void*, GuardedBuffer> buffers_;
    std::vector<Replacement> replacements_;
};

TEST_F(UserGroups, ComeGlobalOnesFirst) {
    NATIVE(getDomainUserGroups)(L"\\\\dc1", L"al\u00EDce", collector());

    EXPECT_THAT(added, ElementsAre(L"Domain Users", L"Caf\u00E9", L"Users"));
    EXPECT_THAT(global.askedServers, ElementsAre(L"\\\\dc1"));
    EXPECT_THAT(local.askedServers, ElementsAre(L"\\\\dc1"));
    EXPECT_EQ(global.askedUser, L"al\u00EDce");
    EXPECT_EQ(local.askedUser, L"al\u00EDce");
}

TEST_F(UserGroups, AreThoseOfThisComputerWithoutAServer) {
    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());
    NATIVE(getDomainUserGroups)(L"", L"alice", collector());

    EXPECT_THAT(global.askedServers, ElementsAre(L"-", L"-"));
    EXPECT_THAT(local.askedServers, ElementsAre(L"-", L"-"));
}

// Each of the two calls begins with the server.
TEST_F(UserGroups, AreThoseOfThisComputerWhenTheServerCannotBeReached) {
    global.statusOfServer = RPC_S_SERVER_UNAVAILABLE;
    local.statusOfServer = RPC_S_SERVER_UNAVAILABLE;

    NATIVE(getDomainUserGroups)(L"dc1", L"alice", collector());

    EXPECT_THAT(added, ElementsAre(L"Domain Users", L"Caf\u00E9", L"Users"));
    EXPECT_THAT(global.askedServers, ElementsAre(L"dc1", L"-"));
    EXPECT_THAT(local.askedServers, ElementsAre(L"dc1", L"-"));
}

TEST_F(UserGroups, AreAskedForOnlyOnceMoreWhenNobodyAnswers) {
    global.status = global.statusOfServer = RPC_S_SERVER_UNAVAILABLE;

    NATIVE(getDomainUserGroups)(L"dc1", L"alice", collector());

    EXPECT_THAT(added, ElementsAre(L"Users"));
    EXPECT_EQ(global.askedServers.size(), 2u);
}

TEST_F(UserGroups, AreNotAskedForElsewhereAfterAnotherFailure) {
    global.statusOfServer = ERROR_ACCESS_DENIED;
    local.statusOfServer = NERR_UserNotFound;

    NATIVE(getDomainUserGroups)(L"dc1", L"alice", collector());

    EXPECT_THAT(added, IsEmpty());
    EXPECT_EQ(global.askedServers.size(), 1u);
    EXPECT_EQ(local.askedServers.size(), 1u);
}

TEST_F(UserGroups, AreTheLocalOnesWhenTheGlobalOnesFail) {
    global.status = ERROR_INVALID_LEVEL;

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_THAT(added, ElementsAre(L"Users"));
}

TEST_F(UserGroups, AreTheGlobalOnesWhenTheLocalOnesFail) {
    local.status = NERR_UserNotFound;

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_THAT(added, ElementsAre(L"Domain Users", L"Caf\u00E9"));
}

TEST_F(UserGroups, AreNoneForAUserWithoutGroups) {
    global.names.clear();
    local.names.clear();

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_THAT(added, IsEmpty());
}

TEST_F(UserGroups, EndAtTheExceptionOfTheCollector) {
    throwAt = 2;

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"full"}));
    EXPECT_THAT(added, ElementsAre(L"Domain Users"));
    EXPECT_THAT(local.askedServers, IsEmpty());
}

TEST_F(UserGroups, EndAtTheExceptionOfTheCollectorAmongTheLocalOnes) {
    local.names = {L"Users", L"Operators", L"Guests"};
    throwAt = 4;

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"full"}));
    EXPECT_THAT(added, ElementsAre(L"Domain Users", L"Caf\u00E9", L"Users"));
}

TEST_F(UserGroups, EndWhereJavaHasNoMemory) {
    java.failCall("NewString", 2);

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(added, ElementsAre(L"Domain Users"));
}

TEST_F(UserGroups, AreNotAskedForWithoutMemoryForTheNames) {
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("GetStringChars", k);
        NATIVE(getDomainUserGroups)(L"dc1", L"alice", collector());
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;

        const auto memory = system().failCall("malloc", k, 0);
        NATIVE(getDomainUserGroups)(L"dc1", L"alice", collector());
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
    }
    EXPECT_THAT(global.askedServers, IsEmpty());
    EXPECT_THAT(local.askedServers, IsEmpty());
}

TEST_F(UserGroups, AreNotAskedForWithoutACollectorThatTakesThem) {
    const JavaObject other =
        java.collector("add", "(Ljava/lang/String;)Z", [](const Arguments&) { return true; });

    NATIVE(getDomainUserGroups)(nullptr, L"alice", other);
    NATIVE(getDomainUserGroups)(nullptr, L"alice", nullptr);

    EXPECT_EQ(java.takeException(), nothingThrown());
    EXPECT_THAT(global.askedServers, IsEmpty());
    EXPECT_THAT(local.askedServers, IsEmpty());
}

TEST_F(UserGroups, KeepTheReferenceCountFlat) {
    local.names.assign(10'000, L"a group");

    NATIVE(getDomainUserGroups)(nullptr, L"alice", collector());

    EXPECT_EQ(added.size(), 10'002u);
    EXPECT_LE(java.peakReferences(), 3u);
}

using UserGroupsOfTheSystem = WinUtilTest;

TEST_F(UserGroupsOfTheSystem, AreThoseThatTheSystemGives) {
    std::vector<std::wstring> expected;
    LOCALGROUP_USERS_INFO_0* groups = nullptr;
    DWORD read = 0;
    DWORD total = 0;
    ASSERT_EQ(NetUserGetLocalGroups(nullptr, L"root", 0, LG_INCLUDE_INDIRECT,
                                    reinterpret_cast<LPBYTE*>(&groups), MAX_PREFERRED_LENGTH, &read, &total),
              static_cast<NET_API_STATUS>(NERR_Success));
    for (DWORD i = 0; i < read; ++i) {
        expected.emplace_back(groups[i].lgrui0_name);
    }
    NetApiBufferFree(groups);
    const JavaObject list = java.list();

    NATIVE(getDomainUserGroups)(nullptr, L"root", list);

    std::vector<std::wstring> added;
    for (const JavaObject& name : FakeJava::listElements(list)) {
        added.push_back(name.text());
    }
    ASSERT_FALSE(expected.empty());
    EXPECT_TRUE(std::ranges::equal(expected.rbegin(), expected.rend(), added.rbegin(),
                                   added.rbegin() + static_cast<std::ptrdiff_t>(expected.size())));
}

}  // namespace
