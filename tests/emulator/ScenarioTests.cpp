#include "incubator/Scenario.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "faults/FaultRule.h"
#include "incubator/DeviceFault.h"
#include "incubator/Incubator.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

/// What is said about a text that is no scenario.
std::string ScenarioComplaint(std::string_view json) {
    try {
        ParseScenario(json, "my.json");
    } catch (const ScenarioError& error) {
        return error.what();
    }
    return "(none)";
}

TEST(ScenarioTests, ReadyOnes_AreThereAndAnswer) {
    for (const char* const name :
         {"full-incubator", "failing-sensor", "still-values", "simulator-default", "door-open", "bad-day", "product-7",
          "product-8", "product-9", "product-10", "product-11", "product-12", "product-13", "product-14", "product-15",
          "product-16", "product-17"}) {
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
        EXPECT_EQ(ScenarioComplaint(row.json), row.complaint);
    }
    EXPECT_EQ(ScenarioComplaint(R"({"comPort": 1e999})").substr(0, 9), "my.json: ");
    const std::string syntax = ScenarioComplaint("{\n  \"name\": oops\n}");
    EXPECT_NE(syntax.find("my.json"), std::string::npos);
    EXPECT_NE(syntax.find("line 2, column"), std::string::npos);
}

TEST(ScenarioTests, UnknownMembers_AreNamedWhereverTheyStand) {
    for (const std::string place :
         {"products/0", "products/0/devices/0", "products/0/parameters/0", "status/0", "events/0"}) {
        const auto odd = [&](std::string_view here) { return place == here ? R"(, "colour": 3)" : ""; };
        const std::string json = std::string(R"({"products": [{"number": 9, "devices": [{"number": 0)") +
                                 odd("products/0/devices/0") + R"(}], "parameters": [{"number": 1)" +
                                 odd("products/0/parameters/0") + "}]" + odd("products/0") +
                                 R"(}], "status": [{"product": 9, "device": 0, "error": 1)" + odd("status/0") +
                                 R"(}], "events": [{"at": 1, "do": "restart")" + odd("events/0") + "}]}";
        EXPECT_EQ(ScenarioComplaint(json), "my.json/" + place + ": \"colour\" is not known");
    }
}

/// What is said about these members of device 1 of the first product.
std::string ComplaintAboutDevice(const std::string& members) {
    return ScenarioComplaint(R"({"products": [{"number": 9, "devices": [{"number": 0}, {)" + members + "}]}]}");
}

TEST(ScenarioTests, WhatIsNoWholeNumberInItsRange_IsRefusedAndNotCut) {
    for (const char* const number : {"1e99", "3.9", "3.0", "true", "4294967297", "18446744073709551615", "-1", "0",
                                     "257", "\"3\"", "null", "[3]"}) {
        EXPECT_EQ(ScenarioComplaint(std::string(R"({"comPort": )") + number + "}").substr(0, 63),
                  "my.json/comPort: a whole number from 1 to 256 is expected, not ")
            << number;
    }
    EXPECT_EQ(ScenarioComplaint(R"({"comPort": 256})"), "(none)");
    EXPECT_EQ(ScenarioComplaint(R"({"comPort": 4294967297})"),
              "my.json/comPort: a whole number from 1 to 256 is expected, not 4294967297");
    EXPECT_EQ(ComplaintAboutDevice(R"("number": 1.5)"),
              "my.json/products/0/devices/1/number: a whole number from 0 to 999 is expected, not 1.5");
    EXPECT_EQ(ScenarioComplaint(R"({"products": [{"number": 18}]})"),
              "my.json/products/0/number: a whole number from 0 to 17 is expected, not 18");
    EXPECT_EQ(ScenarioComplaint(R"({"products": [{"number": 9, "findMs": -5}]})"),
              "my.json/products/0/findMs: a whole number from 0 to 3600000 is expected, not -5");
    EXPECT_EQ(ScenarioComplaint(R"({"products": [{"number": 9, "parameters": [{"number": 10000}]}]})"),
              "my.json/products/0/parameters/0/number: a whole number from 0 to 9999 is expected, not 10000");
    EXPECT_EQ(ScenarioComplaint(R"({"status": [{"product": 9, "device": 0, "error": 0}]})"),
              "my.json/status/0/error: a whole number from 1 to 999 is expected, not 0");
    EXPECT_EQ(ScenarioComplaint(R"({"status": [{"product": 18, "device": 0, "error": 1}]})"),
              "my.json/status/0/product: a whole number from 0 to 17 is expected, not 18");
    EXPECT_EQ(ScenarioComplaint(R"({"status": [{"product": 9, "error": 1}]})"),
              "my.json/status/0: \"device\" is missing");
    EXPECT_EQ(ScenarioComplaint(R"({"status": [{"device": 0, "error": 1}]})"),
              "my.json/status/0: \"product\" is missing");
    EXPECT_EQ(ScenarioComplaint(R"({"status": [{"product": 9, "device": 0}]})"),
              "my.json/status/0: \"error\" is missing");
}

TEST(ScenarioTests, ValuesOfDevices_LieWithinTheirLimits) {
    struct Case {
        const char* members;
        const char* complaint;  // behind the path to the device
    };
    for (const Case& row : std::vector<Case>{
             {R"("number": 1, "current": 1e10)",
              "/current: a number from -1000000000 to 1000000000 is expected, not 10000000000.0"},
             {R"("number": 1, "current": false)",
              "/current: a number from -1000000000 to 1000000000 is expected, not false"},
             {R"("number": 1, "ambient": "22")",
              "/ambient: a number from -1000000000 to 1000000000 is expected, not \"22\""},
             {R"("number": 1, "min": 20, "max": 50, "target": 50.5)",
              "/target: a number from 20 to 50 is expected, not 50.5"},
             {R"("number": 1, "lagSeconds": -1)", "/lagSeconds: a number from 0 to 1000000 is expected, not -1"},
             {R"("number": 1, "noise": -0.1)", "/noise: a number from 0 to 1000000000 is expected, not -0.1"},
             {R"("number": 1, "error": 4)", "/error: a text is expected, not 4"},
         }) {
        EXPECT_EQ(ComplaintAboutDevice(row.members), std::string("my.json/products/0/devices/1") + row.complaint);
    }
    EXPECT_EQ(ComplaintAboutDevice(R"("number": 1, "min": 0, "max": 0, "current": 23.9, "target": 23.9)"), "(none)");
}

TEST(ScenarioTests, WhatStandsThereTwice_IsRefused) {
    EXPECT_EQ(ScenarioComplaint(R"({"products": [{"number": 9}, {"number": 12}, {"number": 9}]})"),
              "my.json/products/2/number: product 9 stands there already");
    EXPECT_EQ(ComplaintAboutDevice(R"("number": 0)"),
              "my.json/products/0/devices/1/number: device 0 stands there already");
    EXPECT_EQ(ScenarioComplaint(R"({"products": [{"number": 9, "parameters": [{"number": 1}, {"number": 1}]}]})"),
              "my.json/products/0/parameters/1/number: parameter 1 stands there already");
    EXPECT_EQ(
        ScenarioComplaint(R"({"products": [{"number": 9, "devices": [{"number": 0}], "parameters": [{"number": 0}]},
                                         {"number": 8, "devices": [{"number": 0}], "parameters": [{"number": 0}]}]})"),
        "(none)");
}

TEST(ScenarioTests, FaultsAndEvents_AreCheckedAgainstTheProducts) {
    struct Case {
        const char* members;
        const char* complaint;
    };
    for (const Case& row : std::vector<Case>{
             {R"("faults": ["*; always; freeze 9 1"])", "my.json/faults/0: the effect: product 9 has no device 1"},
             {R"("faults": [7])", "my.json/faults/0: a text is expected, not 7"},
             {R"("events": [{"do": "restart"}])", "my.json/events/0: \"at\" is missing"},
             {R"("events": [{"at": 1}])", "my.json/events/0: \"do\" is missing"},
             {R"("events": [{"at": 1, "do": "restart"}, {"at": -1, "do": "restart"}])",
              "my.json/events/1/at: a number from 0 to 1000000000 is expected, not -1"},
             {R"("events": [{"at": 1, "do": "freeze 8 0"}])", "my.json/events/0/do: the scenario has no product 8"},
             {R"("events": [{"at": 1, "do": "freeze 9"}])",
              "my.json/events/0/do: the device is missing: write \"freeze PRODUCT DEVICE\""},
             {R"("events": [{"at": 1, "do": "explode"}])",
              "my.json/events/0/do: \"explode\" is no fault of the device; there are refuse-target, ignore-target, "
              "freeze, "
              "drift, spike, stuck-on, stuck-off, bottle-empty, door-open, unplug and restart, and \"set PRODUCT "
              "DEVICE "
              "WHAT VALUE\""},
             {R"("events": [{"at": 1, "do": "set 9 0 target 61"}])",
              "my.json/events/0/do: a target of 61 is out of range: 0 to 60"},
             {R"("events": [{"at": 1, "do": "set 9 1 target 38"}])", "my.json/events/0/do: product 9 has no device 1"},
             {R"("events": [{"at": 1, "do": "set 9 zero target 38"}])",
              "my.json/events/0/do: \"zero\" is no number of a product or a device"},
             {R"("events": [{"at": 1, "do": "set 9 0"}])",
              "my.json/events/0/do: \"set 9 0\" is not of the form set PRODUCT DEVICE WHAT VALUE"},
             {R"("events": [{"at": 1, "do": "set 9 0 target"}])",
              "my.json/events/0/do: target: \"\" is not a number: write one such as 38.5"},
             {R"("events": [{"at": 1, "do": "set 9 0 error"}, {"at": 0, "do": "door-open 9 for 1m"}])", "(none)"},
         }) {
        const std::string products = R"({"products": [{"number": 9, "devices": [{"number": 0}]}], )";
        EXPECT_EQ(ScenarioComplaint(products + row.members + "}"), row.complaint);
    }
}

TEST(ScenarioTests, LeftOutMembers_HaveTheirDefaults) {
    const Scenario scenario =
        ParseScenario(R"({"products": [{"number": 9, "devices": [{"number": 0, "current": 18, "min": 20}]}]})", "x");
    const DeviceScenario& device = scenario.products[0].devices[0];
    EXPECT_EQ(device.target, 20.0);  // the nearest to where it stands
    EXPECT_EQ(device.ambient, 18.0);
    EXPECT_EQ(device.max, 60.0);
    EXPECT_EQ(scenario.comPort, 3);
}

TEST(ScenarioTests, BadDay_PassesWithAllThatCanGoWrong) {
    std::set<DeviceFault::Kind> happened;
    Incubator incubator(LoadScenario("bad-day"), 1, [&](const EventScenario& event) {
        if (const auto* const fault = std::get_if<DeviceFault>(&event.does)) {
            happened.insert(fault->kind);
        }
    });
    incubator.Advance(20 * 60.0);
    EXPECT_EQ(happened.size(), kDeviceFaultWords.size());
    EXPECT_TRUE(incubator.Running().empty());
}

TEST(ScenarioTests, UnknownName_IsNeitherScenarioNorFile) {
    EXPECT_THROW(LoadScenario("no such scenario"), ScenarioError);
}

}  // namespace

}  // namespace emulator
