#include "incubator/Scenario.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "faults/FaultRule.h"
#include "incubator/Incubator.h"
#include "protocol/Command.h"

namespace emulator {

namespace {

/// What is said about a text that is no scenario.
std::string Complaint(std::string_view json) {
    try {
        ParseScenario(json, "my.json");
    } catch (const ScenarioError& error) {
        return error.what();
    }
    return "(none)";
}

TEST(ScenarioTests, ReadyOnes_AreThereAndAnswer) {
    for (const char* const name :
         {"full-incubator", "failing-sensor", "simulator-default", "product-7", "product-8", "product-9", "product-10",
          "product-11", "product-12", "product-13", "product-14", "product-15", "product-16", "product-17"}) {
        ASSERT_TRUE(ReadyScenarios().contains(name)) << name;
    }
    for (const auto& [name, json] : ReadyScenarios()) {
        SCOPED_TRACE(name);
        const Scenario scenario = LoadScenario(name);
        EXPECT_EQ(scenario.name, name);
        EXPECT_FALSE(scenario.description.empty());
        Incubator incubator(scenario, 1);
        for (const ProductScenario& product : scenario.products) {
            SCOPED_TRACE(product.number);
            const std::string number = std::to_string(product.number);
            EXPECT_EQ(incubator.Execute(ParseCommand("listdev " + number)).code, 0);
            for (const ParameterScenario& parameter : product.parameters) {
                SCOPED_TRACE(parameter.number);
                EXPECT_EQ(
                    incubator.Execute(ParseCommand("bl-param-read " + number + " " + std::to_string(parameter.number)))
                        .code,
                    0);
            }
        }
        for (const std::string& fault : scenario.faults) {
            SCOPED_TRACE(fault);
            EXPECT_NO_THROW(ParseFaultRule(fault));
        }
    }
}

TEST(ScenarioTests, Parameters_AreSorted) {
    const Scenario scenario = ParseScenario(
        R"({"products": [{"number": 9, "parameters": [{"number": 5}, {"number": 2}, {"number": 3}]}]})", "x");
    EXPECT_EQ(scenario.products[0].parameters[0].number, 2);
    EXPECT_EQ(scenario.products[0].parameters[2].number, 5);
}

TEST(ScenarioTests, Mistakes_AreNamedWithFileAndPlace) {
    struct Case {
        const char* json;
        const char* complaint;
    };
    for (const Case& row : std::vector<Case>{
             {R"([])", "my.json: an object is expected"},
             {R"({"prodcts": []})", "my.json: \"prodcts\" is not known"},
             {R"({"products": 9})", "my.json/products: a list is expected, not 9"},
             {R"({"products": [{}]})", "my.json/products/0: \"number\" is missing"},
             {R"({"products": [{"number": "nine"}]})",
              "my.json/products/0/number: a whole number from 0 to 17 is expected, not \"nine\""},
             {R"({"products": [{"number": 9, "devices": [{"number": 0, "min": 5, "max": 1}]}]})",
              "my.json/products/0/devices/0: \"min\" is greater than \"max\""},
             {R"({"products": [{"number": 9, "devices": [{"number": 0, "overshoot": 1}]}]})",
              "my.json/products/0/devices/0/overshoot: a number from 0 to 0.9 is expected, not 1"},
             {R"({"products": [{"number": 9, "parameters": [{"number": 1}, {"number": 2, "follows": 4}]}]})",
              "my.json/products/0/parameters/1: \"follows\" names device 4, which the product does not have"},
             {R"({"faults": "status"})", "my.json/faults: a list is expected, not \"status\""},
             {R"({"faults": ["status; always; silent", "status; chance 2; silent"]})",
              "my.json/faults/1: the trigger \"chance\" needs a number from 0 to 1, not \"2\""},
         }) {
        SCOPED_TRACE(row.json);
        EXPECT_EQ(Complaint(row.json), row.complaint);
    }
    const std::string syntax = Complaint("{\n  \"name\": oops\n}");
    EXPECT_NE(syntax.find("my.json"), std::string::npos);
    EXPECT_NE(syntax.find("line 2, column"), std::string::npos);
}

TEST(ScenarioTests, UnknownName_IsNeitherScenarioNorFile) {
    EXPECT_THROW(LoadScenario("no such scenario"), ScenarioError);
}

}  // namespace

}  // namespace emulator
