// What goes wrong while connections are listed, on the system's side and on Java's.
#include "listing_fixture.h"

namespace {

using namespace testbed;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST_F(NetworkListing, IsFalseWhenTheEnumerationCannotBeOpened) {
    network.failToOpen(L"", ERROR_NO_NETWORK);
    network.give(L"", {{.entries = {share(L"x")}}});

    EXPECT_FALSE(list());

    EXPECT_THAT(entries, IsEmpty());
    EXPECT_THAT(network.closed, IsEmpty());
    EXPECT_EQ(system().count("GlobalAlloc"), 0u);
}

TEST_F(NetworkListing, PassesOverAContainerThatCannotBeOpened) {
    network.failToOpen(L"locked", ERROR_ACCESS_DENIED);
    network.give(L"", {{.entries = {container(L"locked"), share(L"next")}}, {.entries = {share(L"last")}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"locked", L"next", L"last"));
}

TEST_F(NetworkListing, IsFalseAndClosedWithoutMemoryForTheEntries) {
    const auto allocate = system().failCall("GlobalAlloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(list());

    EXPECT_THAT(network.asked, IsEmpty());
    EXPECT_THAT(network.closed, ElementsAre(L""));
}

TEST_F(NetworkListing, PassesOverAContainerWithoutMemoryForItsEntries) {
    network.give(L"", {{.entries = {container(L"net"), share(L"next")}}});
    network.give(L"net", {{.entries = {share(L"inside")}}});
    const auto allocate = system().failCall("GlobalAlloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"net", L"next"));
    EXPECT_THAT(network.closed, ElementsAre(L"net", L""));
}

TEST_F(NetworkListing, IsFalseWhenTheEnumerationCannotBeClosed) {
    network.failToClose(L"", ERROR_INVALID_HANDLE);
    network.give(L"", {{.entries = {share(L"x")}}});
    ledger().expectLeft("WNetOpenEnumW");

    EXPECT_FALSE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"x"));
    EXPECT_THAT(network.closed, SizeIs(1));
}

TEST_F(NetworkListing, DoesNotMindAContainerThatCannotBeClosed) {
    network.failToClose(L"net", ERROR_INVALID_HANDLE);
    network.give(L"", {{.entries = {container(L"net"), share(L"next")}}});
    ledger().expectLeft("WNetOpenEnumW");

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"net", L"next"));
}

TEST_F(NetworkListing, GivesTheBufferBackBeforeItClosesTheEnumeration) {
    std::vector<std::string> order;
    const auto release = REPLACE(GlobalFree, [&](HGLOBAL block) {
        order.emplace_back("GlobalFree");
        return REAL(GlobalFree)(block);
    });
    const auto close = REPLACE(WNetCloseEnum, [&](HANDLE) {
        order.emplace_back("WNetCloseEnum");
        return DWORD{NO_ERROR};
    });

    EXPECT_TRUE(list());

    EXPECT_THAT(order, ElementsAre("GlobalFree", "WNetCloseEnum"));
}

// The library would go on for ever; that it ends is this test's doing.
TEST_F(NetworkListing, GoesOnForAsLongAsTheEnumerationFails) {
    std::vector<FakeNetwork::Batch> batches(2'000, {.code = ERROR_EXTENDED_ERROR});
    batches.push_back({.entries = {share(L"at last")}});
    network.give(L"", std::move(batches));

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"at last"));
    EXPECT_THAT(network.asked, SizeIs(2'002));
}

TEST_F(NetworkListing, NeverClaimsALargerBufferThanItHas) {
    network.give(L"", {{.code = ERROR_MORE_DATA, .size = 1'000'000}, {.entries = {share(L"x")}, .size = 48}});

    EXPECT_TRUE(list());

    EXPECT_THAT(network.asked, SizeIs(3));
    EXPECT_THAT(network.asked, Each(Field(&AskedEntries::size, 16384u)));
    EXPECT_THAT(network.asked, Each(Field(&AskedEntries::zeroed, true)));
}

TEST_F(NetworkListing, ReportsNothingOfAFailedCall) {
    network.give(L"", {{.entries = {share(L"left behind")}, .code = ERROR_MORE_DATA}});

    EXPECT_TRUE(list());

    EXPECT_THAT(entries, IsEmpty());
}

TEST_F(NetworkListing, BelievesInNoMoreEntriesThanItsBufferHolds) {
    network.give(L"", {{.entries = {share(L"x")}, .count = 0x10000000}});

    EXPECT_TRUE(list());

    EXPECT_THAT(entries, SizeIs(16384 / sizeof(NETRESOURCEW)));
    ASSERT_THAT(network.asked, SizeIs(2));
    EXPECT_EQ(network.asked[1].count, 0x10000000u);
}

TEST_F(NetworkListing, PassesOverEntriesForACollectorWithoutTheMethod) {
    network.give(L"", {{.entries = {container(L"net"), share(L"x")}}});

    EXPECT_TRUE(NATIVE(getNetUsed)(java.object("java/lang/Object")));

    EXPECT_FALSE(java.isPending());
    EXPECT_THAT(network.closed, ElementsAre(L"net", L""));
}

TEST_F(NetworkListing, WalksWithoutACollector) {
    network.give(L"", {{.entries = {share(L"x")}}});

    EXPECT_TRUE(NATIVE(getNetUsed)(nullptr));
}

TEST_F(NetworkListing, EndsWhenTheCollectorThrows) {
    network.give(L"", {{.entries = {container(L"net"), share(L"never")}}, {.entries = {share(L"never")}}});
    network.give(L"net", {{.entries = {share(L"inside"), share(L"never")}}, {.entries = {share(L"never")}}});
    onEntry = [this] {
        if (entries.size() == 2) {
            throw JavaThrow{java.exception("java/lang/RuntimeException", L"enough")};
        }
    };

    EXPECT_FALSE(list());

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/RuntimeException", L"enough"}));
    EXPECT_THAT(remoteNames(), ElementsAre(L"net", L"inside"));
    EXPECT_THAT(network.asked, SizeIs(2));
    EXPECT_THAT(network.closed, ElementsAre(L"net", L""));
}

TEST_F(NetworkListing, DoesNotOpenAContainerThatTheCollectorThrewAt) {
    network.give(L"", {{.entries = {container(L"net")}}});
    onEntry = [this] { throw JavaThrow{java.exception("java/lang/RuntimeException", L"enough")}; };

    EXPECT_FALSE(list());

    EXPECT_EQ(java.takeException().message, L"enough");
    EXPECT_THAT(network.opened, SizeIs(1));
}

class WithoutJavaMemory : public NetworkListing, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(WithoutJavaMemory, EndsTheListing) {
    network.give(L"", {{.entries = {share(L"x"), share(L"y")}}});
    java.failCall("NewString", GetParam());

    EXPECT_FALSE(list());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(entries, SizeIs(GetParam() <= 7 ? 0 : 1));
    EXPECT_THAT(network.closed, ElementsAre(L""));
}

INSTANTIATE_TEST_SUITE_P(ForOneText, WithoutJavaMemory, ::testing::Range<std::size_t>(1, 9));

using RealListing = WinUtilTest;

TEST_F(RealListing, SucceedsWhereTheSystemHasANetwork) {
    HANDLE enumeration = nullptr;
    const bool expected =
        WNetOpenEnumW(RESOURCE_CONNECTED, RESOURCETYPE_ANY, 0, nullptr, &enumeration) == NO_ERROR &&
        WNetCloseEnum(enumeration) == NO_ERROR;

    EXPECT_EQ(NATIVE(getNetUsed)(java.object("java/lang/Object")), expected);
}

}  // namespace
