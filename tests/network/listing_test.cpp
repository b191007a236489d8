// The connections of the machine on their way to the collector.
#include <span>

#include "listing_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD all = 0xFFFFFFFF;

AskedEntries asking(DWORD count) {
    return {.count = count, .size = 16384, .zeroed = true};
}

TEST_F(NetworkListing, HandsOverEverythingOfAConnectionButItsComment) {
    NETRESOURCEW resource = share(const_cast<wchar_t*>(L"\\\\server\\share"));
    resource.lpLocalName = const_cast<wchar_t*>(L"U:");
    resource.lpComment = const_cast<wchar_t*>(L"comment");
    resource.lpProvider = const_cast<wchar_t*>(L"Microsoft Windows Network");
    network.give(L"", {{.entries = {resource}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(entries, ElementsAre(ElementsAre(L"connected", L"disk", L"share", L" connectable", L"U:",
                                                 L"\\\\server\\share", L"Microsoft Windows Network")));
}

TEST_F(NetworkListing, AsksForAllConnectionsOfAllKinds) {
    EXPECT_TRUE(list());

    EXPECT_THAT(network.opened, ElementsAre(OpenedEnumeration{
                                    .scope = RESOURCE_CONNECTED, .type = RESOURCETYPE_ANY, .usage = 0}));
    EXPECT_THAT(network.asked, ElementsAre(asking(all)));
    EXPECT_THAT(network.closed, ElementsAre(L""));
    EXPECT_THAT(entries, IsEmpty());
}

TEST_F(NetworkListing, NamesEveryScope) {
    std::vector<NETRESOURCEW> resources;
    for (const DWORD scope : {1ul, 2ul, 3ul, 0ul, 4ul, 0x80000000ul, 0xFFFFFFFFul}) {
        resources.push_back(share(nullptr));
        resources.back().dwScope = scope;
    }
    network.give(L"", {{.entries = resources}});

    EXPECT_TRUE(list());

    EXPECT_THAT(column(0), ElementsAre(L"connected", L"all resources", L"remembered", L"unknown 0",
                                       L"unknown 4", L"unknown -2147483648", L"unknown -1"));
}

TEST_F(NetworkListing, NamesEveryType) {
    std::vector<NETRESOURCEW> resources;
    for (const DWORD type : {0ul, 1ul, 2ul, 3ul, 8ul, 0xFFFFFFFFul}) {
        resources.push_back(share(nullptr));
        resources.back().dwType = type;
    }
    network.give(L"", {{.entries = resources}});

    EXPECT_TRUE(list());

    EXPECT_THAT(column(1), ElementsAre(L"any", L"disk", L"print", L"unknown 3", L"unknown 8", L"unknown -1"));
}

TEST_F(NetworkListing, NamesEveryDisplayType) {
    std::vector<NETRESOURCEW> resources;
    for (DWORD displayType = 0; displayType < 9; ++displayType) {
        resources.push_back(share(nullptr));
        resources.back().dwDisplayType = displayType;
    }
    network.give(L"", {{.entries = resources}});

    EXPECT_TRUE(list());

    EXPECT_THAT(column(2), ElementsAre(L"generic", L"domain", L"server", L"share", L"file", L"group",
                                       L"network", L"unknown 7", L"unknown 8"));
}

TEST_F(NetworkListing, PutsABlankBeforeEachWordOfTheUsage) {
    std::vector<NETRESOURCEW> resources;
    for (const DWORD usage : {0ul, 1ul, 2ul, 3ul, 0x80000000ul, 0x80000015ul}) {
        resources.push_back(share(L"x"));
        resources.back().dwUsage = usage;
    }
    network.give(L"", {{.entries = resources}});

    EXPECT_TRUE(list());

    EXPECT_THAT(column(3), ElementsAre(L"", L" connectable", L" container", L" connectable container", L"",
                                       L" connectable"));
}

TEST_F(NetworkListing, HasEmptyTextsForAbsentNames) {
    network.give(L"", {{.entries = {share(nullptr)}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(entries,
                ElementsAre(ElementsAre(L"connected", L"disk", L"share", L" connectable", L"", L"", L"")));
}

TEST_F(NetworkListing, KeepsTheFirst1024CharactersOfEachName) {
    const std::wstring longest(1024, L'n');
    const std::wstring tooLong = longest + L"more";
    NETRESOURCEW resource = share(tooLong.c_str());
    resource.lpLocalName = const_cast<wchar_t*>(longest.c_str());
    resource.lpProvider = const_cast<wchar_t*>(tooLong.c_str());
    network.give(L"", {{.entries = {resource}}});

    EXPECT_TRUE(list());

    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0][4], longest);
    EXPECT_EQ(entries[0][5], longest);
    EXPECT_EQ(entries[0][6], longest);
}

TEST_F(NetworkListing, ReadsNoNameFurtherThanItKeeps) {
    const std::wstring content(1024, L'n');
    const GuardedBuffer name(std::as_bytes(std::span(content)));
    network.give(L"", {{.entries = {share(name.as<wchar_t>())}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(content));
}

TEST_F(NetworkListing, AsksForAsManyEntriesAsTheLastBatchHad) {
    network.give(L"", {{.entries = {share(L"1"), share(L"2")}},
                       {.entries = {share(L"3")}},
                       {.entries = {share(L"4"), share(L"5"), share(L"6")}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"1", L"2", L"3", L"4", L"5", L"6"));
    EXPECT_THAT(network.asked, ElementsAre(asking(all), asking(2), asking(1), asking(3)));
}

TEST_F(NetworkListing, ListsWhatIsInAContainerBehindIt) {
    network.give(L"", {{.entries = {container(L"net"), share(L"last")}}});
    network.give(L"net", {{.entries = {container(L"server1"), container(L"server2")}}});
    network.give(L"server1", {{.entries = {share(L"a")}}, {.entries = {share(L"b")}}});
    network.give(L"server2", {{.entries = {share(L"c")}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"net", L"server1", L"a", L"b", L"server2", L"c", L"last"));
    EXPECT_THAT(network.closed, ElementsAre(L"server1", L"server2", L"net", L""));
    for (const OpenedEnumeration& opened : network.opened) {
        EXPECT_EQ(opened.scope, DWORD{RESOURCE_CONNECTED});
        EXPECT_EQ(opened.type, DWORD{RESOURCETYPE_ANY});
        EXPECT_EQ(opened.usage, 0u);
    }
}

TEST_F(NetworkListing, BeginsEachContainerByAskingForAll) {
    network.give(L"", {{.entries = {container(L"net"), share(L"x")}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(network.asked, ElementsAre(asking(all), asking(all), asking(2)));
}

TEST_F(NetworkListing, OpensWhatIsConnectableAndAContainer) {
    NETRESOURCEW both = container(L"both");
    both.dwUsage = RESOURCEUSAGE_CONTAINER | RESOURCEUSAGE_CONNECTABLE;
    network.give(L"", {{.entries = {both}}});
    network.give(L"both", {{.entries = {share(L"inside")}}});

    EXPECT_TRUE(list());

    EXPECT_THAT(remoteNames(), ElementsAre(L"both", L"inside"));
}

TEST_F(NetworkListing, KeepsTheNumberOfReferencesFlat) {
    network.give(L"", {100, {.entries = std::vector(100, share(L"\\\\server\\share"))}});

    EXPECT_TRUE(list());

    EXPECT_EQ(entries.size(), 10'000u);
    EXPECT_LE(java.peakReferences(), 8u);
}

TEST_F(NetworkListing, TakesItsBufferZeroedAndFixed) {
    const auto allocate = system().watch("GlobalAlloc");

    EXPECT_TRUE(list());

    ASSERT_EQ(allocate.count(), 1u);
    EXPECT_EQ(allocate.calls()[0].argument<UINT>(0), 0x40u);
    EXPECT_EQ(allocate.calls()[0].argument<SIZE_T>(1), 16384u);
}

}  // namespace
