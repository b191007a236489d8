#include "bridge/list.h"

#include <memory>
#include <vector>

#include "gtest/gtest.h"

namespace {

using winutil::List;
using Numbers = std::vector<int>;

TEST(List, KeepsItsItemsInOrderWhileItGrows) {
    List<int> list;
    EXPECT_TRUE(list.empty());
    Numbers expected;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(list.append(i));
        expected.push_back(i);
    }
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(Numbers(list.begin(), list.end()), expected);
}

TEST(List, OwnsItsItems) {
    const auto item = std::make_shared<int>(1);
    {
        List<std::shared_ptr<int>> list;
        for (int i = 0; i < 40; ++i) {
            ASSERT_TRUE(list.append(item));
        }
        EXPECT_EQ(item.use_count(), 41);
    }
    EXPECT_EQ(item.use_count(), 1);
}

}  // namespace
