// Holds the tables and the example of docs/emulator.md against what the emulator reads.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "faults/FaultRule.h"
#include "incubator/DeviceFault.h"
#include "incubator/Scenario.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

/// The page from one heading to the next one of the same rank.
std::string Section(const std::string& heading, const std::string& next) {
    std::ifstream file(OKO_SOURCE_DIR "/docs/emulator.md");
    EXPECT_TRUE(file);
    const std::string page(std::istreambuf_iterator<char>(file), {});
    const auto start = page.find("\n" + heading + "\n");
    EXPECT_NE(start, std::string::npos) << heading;
    return page.substr(start, page.find("\n" + next + "\n", start) - start);
}

/// What stands in the first column of the section's table.
std::vector<std::string> FirstColumn(const std::string& section) {
    const std::regex row(R"(\n\| `([^`]*)` \|)");
    std::vector<std::string> column;
    for (auto match = std::sregex_iterator(section.begin(), section.end(), row); match != std::sregex_iterator();
         ++match) {
        column.push_back((*match)[1]);
    }
    return column;
}

TEST(EmulatorPageTests, EffectsOfThePage_AreAllThatThereAre) {
    std::set<std::string> onThePage;
    for (const std::string& effect : FirstColumn(Section("## Faults", "### Faults of the device"))) {
        EXPECT_NO_THROW(ParseFaultRule("*; always; " + effect)) << effect;
        onThePage.insert(effect);
    }
    std::set<std::string> inTheTable;
    for (const EffectWord& effect : kEffectWords) {
        inTheTable.emplace(effect.example);
    }
    EXPECT_EQ(onThePage, inTheTable);
}

TEST(EmulatorPageTests, DeviceFaultsOfThePage_AreAllThatThereAre) {
    std::set<std::string> onThePage;
    for (const std::string& fault : FirstColumn(Section("### Faults of the device", "## Transcripts"))) {
        EXPECT_NO_THROW(ParseDeviceFault(fault)) << fault;
        onThePage.insert(fault.substr(0, fault.find(' ')));
    }
    std::set<std::string> inTheTable;
    for (const DeviceFaultWord& fault : kDeviceFaultWords) {
        inTheTable.emplace(fault.word);
    }
    EXPECT_EQ(onThePage, inTheTable);
}

TEST(EmulatorPageTests, ScenarioOfThePage_IsOne) {
    const std::string section = Section("## Scenarios", "## Faults");
    const auto start = section.find("```json\n") + 8;
    const Scenario scenario = ParseScenario(section.substr(start, section.find("```", start) - start), "the page");
    EXPECT_EQ(scenario.events.size(), 2U);
}

TEST(EmulatorPageTests, RulesOfThePage_AreRules) {
    const std::string section = Section("## Faults", "### Faults of the device");
    const std::regex rule(R"(\n    ([^\n]*;[^\n]*))");
    int rules = 0;
    for (auto match = std::sregex_iterator(section.begin(), section.end(), rule); match != std::sregex_iterator();
         ++match) {
        EXPECT_NO_THROW(ParseFaultRule((*match)[1].str())) << (*match)[1];
        ++rules;
    }
    EXPECT_EQ(rules, 3);
}

}  // namespace

}  // namespace emulator
