#include "protocol/CommandTable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <string_view>

#include "incubator/Incubator.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

TEST(CommandTableTests, EachExample_IsAnsweredByTheFullIncubator) {
    Incubator incubator(LoadScenario("full-incubator"), 1);
    for (const CommandEntry& entry : kCommands) {
        SCOPED_TRACE(entry.keyword);
        EXPECT_FALSE(ExamplesOf(entry).empty());
        EXPECT_FALSE(entry.description.empty());
        for (const std::string_view example : ExamplesOf(entry)) {
            SCOPED_TRACE(example);
            const Command command = ParseCommand(example);
            EXPECT_EQ(command.keyword, entry.keyword);
            const Answer answer = incubator.Execute(command);
            EXPECT_EQ(answer.code, 0);
            EXPECT_FALSE(answer.payload.starts_with('e')) << answer.payload;
        }
    }
}

TEST(CommandTableTests, NumbersOfArgumentsBesideTheTable_AreRefused) {
    Incubator incubator(LoadScenario("full-incubator"), 1);
    for (const CommandEntry& entry : kCommands) {
        SCOPED_TRACE(entry.keyword);
        for (std::size_t count = 0; count < 6; ++count) {
            std::string text(entry.keyword);
            for (std::size_t i = 0; i < count; ++i) {
                text += " 9";
            }
            const bool refused = incubator.Execute(ParseCommand(text)).payload == "e wrong number of arguments";
            EXPECT_EQ(refused, count < entry.fewest || count > entry.most) << text;
        }
    }
    EXPECT_EQ(FindCommand("nonsense"), nullptr);
    EXPECT_EQ(FindCommand(""), nullptr);
    EXPECT_EQ(incubator.Execute(ParseCommand("nonsense")).payload, "e unknown command");
}

/// What the library sends: its own tests hold the page against that.
TEST(CommandTableTests, Examples_AreThoseOfTheProtocolsPage) {
    std::ifstream file(OKO_SOURCE_DIR "/docs/protocol.md");
    ASSERT_TRUE(file);
    const std::string page(std::istreambuf_iterator<char>(file), {});
    const std::regex row(R"(\| `[^`]*` \| `([^`]*)` \|[^\n]*)");
    std::set<std::string> onThePage;
    for (auto match = std::sregex_iterator(page.begin(), page.end(), row); match != std::sregex_iterator(); ++match) {
        onThePage.insert((*match)[1]);
    }
    std::set<std::string> inTheTable;
    for (const CommandEntry& entry : kCommands) {
        for (const std::string_view example : ExamplesOf(entry)) {
            inTheTable.emplace(example);
        }
    }
    EXPECT_EQ(inTheTable, onThePage);
    EXPECT_GT(inTheTable.size(), 20U);
}

}  // namespace

}  // namespace emulator
