// The strings of a REG_MULTI_SZ, whose data may end anywhere.
#include "registry/multi_string.h"

#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "guard_pages.h"

namespace {

using namespace std::string_literals;
using winutil::registry::countStrings;
using winutil::registry::takeString;

struct MultiStringCase {
    const char* name;
    std::string data;
    std::vector<std::string> strings;
};

class MultiString : public testing::TestWithParam<MultiStringCase> {};

// The data ends at a guard page: a byte too far faults.
TEST_P(MultiString, EndsAtItsFirstEmptyStringOrWithItsData) {
    const testbed::GuardedBuffer block(std::as_bytes(std::span(GetParam().data)));
    const std::string_view list(block.as<const char>(), block.size());

    std::vector<std::string> taken;
    std::string_view rest = list;
    for (std::string_view text = takeString(rest); !text.empty(); text = takeString(rest)) {
        taken.emplace_back(text);
    }
    EXPECT_EQ(taken, GetParam().strings);
    EXPECT_EQ(countStrings(list), GetParam().strings.size());
}

INSTANTIATE_TEST_SUITE_P(Data, MultiString,
                         testing::Values(MultiStringCase{"None", "", {}},
                                         MultiStringCase{"OneZero", "\0"s, {}},
                                         MultiStringCase{"TwoZeros", "\0\0"s, {}},
                                         MultiStringCase{"Complete", "a\0bc\0\0"s, {"a", "bc"}},
                                         MultiStringCase{"WithoutTheSecondZero", "a\0bc\0"s, {"a", "bc"}},
                                         MultiStringCase{"WithoutAnyZero", "a\0bc"s, {"a", "bc"}},
                                         MultiStringCase{"OneByte", "a", {"a"}},
                                         MultiStringCase{"AnEmptyStringAhead", "\0a\0\0"s, {}},
                                         MultiStringCase{"AnEmptyStringInside", "a\0\0b\0\0"s, {"a"}}),
                         [](const auto& data) { return data.param.name; });

TEST(MultiStringEnd, GivesNothingMoreAtItsEnd) {
    std::string_view list;
    EXPECT_EQ(takeString(list), "");
    EXPECT_EQ(takeString(list), "");
}

}  // namespace
