#include "device/parameter_table.h"
#include "tests/support/recording_host.h"

#include <array>
#include <climits>
#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace KAV;
using namespace KAV::Tests;

namespace {

std::string FullName(std::int32_t tag) {
    std::array<char, TagNameCapacity> text{};
    WriteParameterName(FindParameter(tag), text);
    return text.data();
}

} // namespace

TEST(HostParamTable, HoldsTheTagsInTheHostsOrder) {
    const auto table = HostParamTable();
    ASSERT_EQ(table.size(), 109u);
    std::size_t index = 0;
    for (const std::int32_t first : {32, 33, 35, 34, 36, 37}) { // Auto Release stands before Limiter
        for (int group = 0; group < 4; ++group) EXPECT_EQ(table[index++], first + 100 * group);
    }
    for (int channel = 1; channel <= 16; ++channel) {
        for (int group = 0; group < 4; ++group) EXPECT_EQ(table[index++], channel + 100 * group);
    }
    for (const std::int32_t tag :
        {17, 18, 19, 20, 21, 121, 221, 321, 22, 122, 222, 322, 30, 31, 29, 23, 24, 25, 26, 27, 28}) {
        EXPECT_EQ(table[index++], tag);
    }
    EXPECT_EQ(index, 109u);
}

TEST(HostParamTable, ChannelTogglesOfOneChannelAreAdjacent) {
    EXPECT_EQ(HostParamTable()[24], 1);
    EXPECT_EQ(HostParamTable()[25], 101);
}

TEST(HostParamTable, IndexAndTagFindEachOther) {
    const auto table = HostParamTable();
    for (std::size_t i = 0; i < table.size(); ++i)
        EXPECT_EQ(HostIndexOf(table[i]), static_cast<std::int32_t>(i));
    const std::set<std::int32_t> known(table.begin(), table.end());
    for (std::int32_t tag = -100; tag < 500; ++tag) {
        EXPECT_EQ(HostIndexOf(tag) != NoHostIndex, known.contains(tag)) << tag;
        EXPECT_EQ(static_cast<bool>(FindParameter(tag)), known.contains(tag)) << tag;
    }
    for (const std::int32_t tag : {INT_MIN, INT_MAX}) EXPECT_EQ(HostIndexOf(tag), NoHostIndex);
}

TEST(ParameterNames, AreTheFullNamesByTag) {
    EXPECT_EQ(FullName(32), "Input Gain (1)");
    EXPECT_EQ(FullName(333), "Threshold (4)");
    EXPECT_EQ(FullName(134), "Limiter (2)");
    EXPECT_EQ(FullName(35), "Auto Release (1)");
    EXPECT_EQ(FullName(236), "Release (3)");
    EXPECT_EQ(FullName(37), "Output Ceiling (1)");
    EXPECT_EQ(FullName(1), "ToolCh1 (1)");
    EXPECT_EQ(FullName(316), "ToolCh16 (4)");
    EXPECT_EQ(FullName(20), "ToolBtnFx4");
    EXPECT_EQ(FullName(121), "ToolFxSolo (2)");
    EXPECT_EQ(FullName(22), "ToolFxMute (1)");
    EXPECT_EQ(FullName(23), "Main Input Gain");
    EXPECT_EQ(FullName(29), "Main Output Gain");
    EXPECT_EQ(FullName(30), "Oversampling");
    EXPECT_EQ(FullName(31), "Hiqh Quality");
    EXPECT_EQ(FullName(24), "Macro 1");
    EXPECT_EQ(FullName(28), "Macro 5");
}

TEST(ParameterNames, ReachTheHostWithSevenCharactersAtMost) {
    CHostedEffect effect(nullptr);
    EXPECT_EQ(effect.Name(4), "Thresho");
    EXPECT_EQ(effect.Name(7), "Thresho");
    EXPECT_EQ(effect.Name(24), "ToolCh1");
    EXPECT_EQ(effect.Name(24 + 4 * 9), "ToolCh1"); // channel 10
    EXPECT_EQ(effect.Name(103), "Main In");
    EXPECT_EQ(effect.Name(101), "Hiqh Qu");
    EXPECT_EQ(effect.Name(104), "Macro 1");
    for (std::int32_t index = 0; index < 109; ++index) {
        effect.Name(index); // each checks the eighth byte
        effect.Label(index);
        effect.Display(index);
    }
}

TEST(ParameterLabels, AreTheUnits) {
    CHostedEffect effect(nullptr);
    for (const std::int32_t index : {0, 4, 20, 102, 103}) EXPECT_EQ(effect.Label(index), "dB");
    EXPECT_EQ(effect.Label(16), "ms");
    EXPECT_EQ(effect.Label(104), "%");
    for (const std::int32_t index : {8, 12, 24, 88, 92, 96, 100, 101}) EXPECT_EQ(effect.Label(index), "");
}

TEST(ParameterDisplays, OfANewInstanceAreTheDefaults) {
    CHostedEffect effect(nullptr);
    EXPECT_EQ(effect.Display(0), "0.0");
    EXPECT_EQ(effect.Display(4), "0.0");
    EXPECT_EQ(effect.Display(8), "Off");
    EXPECT_EQ(effect.Display(12), "On");
    EXPECT_EQ(effect.Display(16), "400.01"); // linear text, though the engine's law gives 1 ms
    EXPECT_EQ(effect.Display(20), "0.0");
    EXPECT_EQ(effect.Display(24), "On");
    EXPECT_EQ(effect.Display(25), "Off");
    EXPECT_EQ(effect.Display(88), "On");
    EXPECT_EQ(effect.Display(89), "Off");
    EXPECT_EQ(effect.Display(100), "OS x1");
    EXPECT_EQ(effect.Display(102), "0.0");
    EXPECT_EQ(effect.Display(104), "0");
}

TEST(ParameterDisplays, FollowTheirLawsOverTheRange) {
    CHostedEffect effect(nullptr);
    const auto shown = [&effect](std::int32_t index, float position) {
        effect.Set(index, position);
        return effect.Display(index);
    };
    EXPECT_EQ(shown(0, 0.0f), "-20.0");
    EXPECT_EQ(shown(0, 0.5f), "-10.0");
    EXPECT_EQ(shown(4, 0.0f), "-30.0");
    EXPECT_EQ(shown(4, 0.25f), "-22.5");
    EXPECT_EQ(shown(20, 0.5f), "-15.0");
    EXPECT_EQ(shown(16, 0.0f), "0.01");
    EXPECT_EQ(shown(16, 1.0f), "1000.00");
    EXPECT_EQ(shown(102, 1.0f), "+24.0");
    EXPECT_EQ(shown(102, 0.0f), "-24.0");
    EXPECT_EQ(shown(103, 0.75f), "+12.0");
    EXPECT_EQ(shown(104, 1.0f), "+100");
    EXPECT_EQ(shown(104, 0.0f), "-100");
    EXPECT_EQ(shown(104, 0.755f), "+51");
    EXPECT_EQ(shown(100, 0.5f), "OS x4");
    EXPECT_EQ(shown(100, 1.0f), "OS x8");
}

TEST(ParameterDisplays, ShowTheFinalValueNotTheBase) {
    CHostedEffect effect(nullptr);
    effect.Set(4, 0.5f);
    effect.Device().SetParam(33, 0.25f, MacroOffset);
    EXPECT_EQ(effect.Display(4), "-7.5");
    EXPECT_EQ(effect.Get(4), 0.5f);
}

TEST(ParameterDisplays, StayBoundedForAnyBase) {
    CHostedEffect effect(nullptr);
    for (const float base : {3e38f, std::numeric_limits<float>::infinity()}) {
        effect.Set(102, base);
        EXPECT_EQ(effect.Display(102), "+24.0");
        EXPECT_EQ(effect.Get(102), base);
    }
    for (const float base :
        {-3e38f, -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        effect.Set(102, base);
        EXPECT_EQ(effect.Display(102), "-24.0");
    }
    for (std::int32_t index = 0; index < 109; ++index) {
        for (const float base : {3e38f, -3e38f, std::numeric_limits<float>::infinity(),
                 -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
            effect.Set(index, base);
            effect.Display(index);
        }
    }
}

TEST(ParameterRows, DescribeTheEnginesLawsForPrograms) {
    for (const auto& row : ParameterRows()) {
        if (row.kind != EParameterKind::Continuous || row.law != EParameterLaw::Linear) continue;
        EXPECT_EQ(row.display.offset, row.minimum) << row.name;
        EXPECT_EQ(row.display.offset + row.display.scale, row.maximum) << row.name;
    }
}
