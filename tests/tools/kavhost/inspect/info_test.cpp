#include "tools/kavhost/inspect/info.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

SRun InfoOfTheProduct(const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"info", "-p", Utf8(PluginFile()), "--profile", Utf8(PluginProfile())};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunHost(arguments);
}

bool HasLine(const std::string& text, const std::string& pattern) {
    return std::regex_search(text, std::regex("\n *" + pattern + "\n"));
}

} // namespace

TEST(Info, NamesTheRangeOfEachParameter) {
    const auto text = InfoOfTheProduct({}).out;
    EXPECT_TRUE(HasLine(text, R"(4  Threshold \(1\) +1\.00 +0\.0 dB   -30 to 0 dB)")) << text;
    EXPECT_TRUE(HasLine(text, R"(16  Release \(1\) +0\.40 +\S+ ms   0\.01 to 1000 ms)")) << text;
    EXPECT_TRUE(HasLine(text, R"(8  Auto Release \(1\) +0\.00 +Off +on or off)")) << text;
    EXPECT_TRUE(HasLine(text, R"(100  Oversampling .* one of "OS x1", "OS x2", "OS x4", "OS x8")")) << text;
}

TEST(Info, NamesTheRangesForProgramsToo) {
    const auto parameters =
        nlohmann::json::parse(InfoOfTheProduct({"--json", "--set", "4=0.5", "--os", "2"}).out)["parameters"];
    const auto& threshold = parameters[4];
    EXPECT_EQ(threshold["unit"], "dB");
    EXPECT_EQ(threshold["minimum"], -30);
    EXPECT_EQ(threshold["maximum"], 0);
    EXPECT_EQ(threshold["choices"], nullptr);
    EXPECT_EQ(threshold["default"], 1);
    EXPECT_EQ(threshold["quantity"], "-15.00 dB");
    const auto& oversampling = parameters[100];
    EXPECT_EQ(oversampling["choices"], (nlohmann::json{"OS x1", "OS x2", "OS x4", "OS x8"}));
    EXPECT_EQ(oversampling["minimum"], nullptr);
    EXPECT_EQ(oversampling["default"], 0);
    EXPECT_EQ(oversampling["quantity"], "OS x2");
    // Without a profile nothing is known.
    const auto fader =
        nlohmann::json::parse(RunHost({"info", "--json", "-p", Utf8(EffectFile("fader"))}).out)["parameters"];
    for (const char* key : {"quantity", "unit", "minimum", "maximum", "choices", "default"})
        EXPECT_EQ(fader[0].at(key), nullptr) << key;
}

/// 64 samples of look-ahead at 44.1 and 48 kHz, counted at the oversampled rate.
TEST(Info, NamesTheLatencyThatAHostIsToldWithTheseSettings) {
    for (const int factor : {1, 2, 4, 8}) {
        const auto text = InfoOfTheProduct({"--os", std::to_string(factor)}).out;
        EXPECT_TRUE(HasLine(text, "latency     " + std::to_string(64 * factor) + " frames, as reported"))
            << factor << text.substr(0, 500);
    }
    const auto json = nlohmann::json::parse(InfoOfTheProduct({"--json", "--set", "Oversampling=x4"}).out);
    EXPECT_EQ(json["latency"], 256);
}

TEST(Profile, HasTheValuesOfANewInstance) {
    // This home has no patches, so the effect starts as built.
    const auto info = nlohmann::json::parse(InfoOfTheProduct({"--json"}).out);
    ASSERT_EQ(info["parameters"].size(), 109u);
    for (const auto& parameter : info["parameters"]) {
        EXPECT_NEAR(parameter["default"].get<double>(), parameter["value"].get<double>(), 1e-6)
            << parameter["name"];
    }
}
