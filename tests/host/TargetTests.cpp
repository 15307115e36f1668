// How the target of a request is taken apart.

#include "page/Target.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Parts = std::vector<std::string>;
using Query = std::vector<std::pair<std::string, std::string>>;

TEST(Target, PathIsSplitBeforeItIsDecoded) {
    const auto target = ParseTarget("/api/channels/a%2Fb%3A%20%C2%B5/target");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->path, (Parts{"api", "channels", "a/b: \u00B5", "target"}));
    EXPECT_TRUE(target->query.empty());
}

TEST(Target, RootIsOneEmptyPart) {
    EXPECT_EQ(ParseTarget("/")->path, Parts{""});
    EXPECT_EQ(ParseTarget("/?token=x")->path, Parts{""});
    EXPECT_EQ(ParseTarget("/metrics")->path, Parts{"metrics"});
    EXPECT_EQ(ParseTarget("/metrics/")->path, (Parts{"metrics", ""}));
    EXPECT_EQ(ParseTarget("//")->path, (Parts{"", ""}));
}

TEST(Target, QueryIsNamesAndValues) {
    const auto target = ParseTarget("/x?since=5&until=%31%30&flag&=lost&&since=6&a=b=c");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->query, (Query{{"since", "5"}, {"until", "10"}, {"flag", ""}, {"since", "6"}, {"a", "b=c"}}));
    EXPECT_EQ(target->Query("since"), "5");
    EXPECT_EQ(target->Query("flag"), "");
    EXPECT_EQ(target->Query("points"), std::nullopt);
}

TEST(Target, WhatIsBadlyEncodedIsNone) {
    for (const char* text : {"", "api", "*", "http://127.0.0.1/", "/%", "/%4", "/%4g", "/%g4", "/a?b=%", "/a?%zz=1",
                             "/%00", "/%0a", "/a?b=%7f", "/a\nb", "/%-1", "/%+1"}) {
        EXPECT_FALSE(ParseTarget(text)) << text;
    }
}

TEST(Target, WholeNumberIsAllOfTheText) {
    EXPECT_EQ(ParseWhole("1763761200123"), 1'763'761'200'123);
    EXPECT_EQ(ParseWhole("-5"), -5);
    for (const char* text : {"", "1.5", "1e3", " 1", "1 ", "+1", "0x1", "9223372036854775808"}) {
        EXPECT_EQ(ParseWhole(text), std::nullopt) << text;
    }
}

}  // namespace
