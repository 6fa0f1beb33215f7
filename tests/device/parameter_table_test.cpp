#include "device/parameter_table.h"
#include "tests/support/recording_host.h"

#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
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
    for (const std::int32_t first : {32, 33, 35, 34, 36, 37}) { // Auto Release is before Limiter
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

TEST(ParameterDisplays, AreComputedInDoublePrecisionAndRoundedOnce) {
    // Near positions whose text is about to change, single precision would give a different text.
    struct SCase {
        std::int32_t index;
        double scale;
        double offset;
        int decimals;
        const char* sign; ///< of values above 0
    };
    constexpr std::array<SCase, 7> Cases{{{0, 20.0, -20.0, 1, "+"}, {4, 30.0, -30.0, 1, "+"},
        {16, 999.99, 0.01, 2, ""}, {20, 30.0, -30.0, 1, "+"}, {102, 48.0, -24.0, 1, "+"},
        {103, 48.0, -24.0, 1, "+"}, {108, 200.0, -100.0, 0, "+"}}};
    CHostedEffect effect(nullptr);
    for (const SCase& law : Cases) {
        const auto text = [&law](float shown) {
            std::array<char, 32> digits{};
            std::snprintf(digits.data(), digits.size(), "%s%.*f", shown > 0.0f ? law.sign : "", law.decimals,
                static_cast<double>(shown));
            return std::string(digits.data());
        };
        const auto shownAt = [&law](float x) {
            return static_cast<float>(law.scale * static_cast<double>(x) + law.offset);
        };
        const auto singleAt = [&law](float x) {
            return static_cast<float>(law.scale) * x + static_cast<float>(law.offset);
        };
        const double half = 0.5 * std::pow(10.0, -law.decimals);
        int apart = 0;
        for (int i = 0; apart < 5 && i < 100000; ++i) {
            const double tie = law.offset + half * (2 * i + 1); // half a unit of the last digit
            float x = std::nextafter(static_cast<float>((tie - law.offset) / law.scale), 0.0f);
            for (int neighbour = 0; neighbour < 3; ++neighbour, x = std::nextafter(x, 1.0f)) {
                const auto wanted = text(shownAt(x));
                if (wanted == text(singleAt(x))) continue;
                ++apart;
                effect.Set(law.index, x);
                EXPECT_EQ(effect.Display(law.index), wanted) << law.index << " at " << x;
            }
        }
        EXPECT_GE(apart, 5) << law.index << ": there must be such positions";
    }
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

TEST(ParameterRows, OfLinearLawsShowTheirRangeAsText) {
    for (const auto& row : ParameterRows()) {
        if (row.kind != EParameterKind::Continuous || row.law != EParameterLaw::Linear) continue;
        EXPECT_EQ(row.display.offset, row.minimum) << row.name;
        EXPECT_EQ(row.display.offset + row.display.scale, row.maximum) << row.name;
    }
}

namespace {

/// The real values that the engine derives from positions, measured at the output of an instance.
class CMeasuredEngine final {
public:
    CMeasuredEngine() { effect.Dispatch(VST::effSetBlockSize, 0, Frames); }

    void Set(std::int32_t tag, float position) { effect.Set(HostIndexOf(tag), position); }

    /// Gain of a steady level in dB, after all ramps have ended.
    double GainDb(float level) {
        std::vector<std::vector<float>> audio;
        for (int block = 0; block < 400; ++block) {
            audio.assign(2, std::vector<float>(Frames, level));
            effect.Process(audio);
        }
        return 20.0 * std::log10(static_cast<double>(audio[0].back() / level));
    }

    /// How long the gain takes from `depth` below 1 to a tenth of that, in ms, from two points of its rise.
    double ReleaseMs(double expectedMs) {
        constexpr float Loud = 4.0f;
        constexpr float Soft = 0.01f;
        GainDb(Loud);
        const auto distance = static_cast<std::size_t>(std::max(1.0, expectedMs * 44.1));
        std::vector<double> below; // 1 - gain, per sample
        while (below.size() < 1000 + distance) {
            std::vector<std::vector<float>> audio(2, std::vector<float>(Frames, Soft));
            effect.Process(audio);
            for (const float x : audio[0]) below.push_back(1.0 - static_cast<double>(x / Soft));
        }
        // The loud samples still in the delay are limited to 1, a hundred times the soft level.
        std::size_t start = 0;
        while (start < below.size() && below[start] < 0.0) ++start;
        start += 128; // past the edge and the window that smooths the gain
        if (start + distance >= below.size()) return 0.0;
        const double decades = std::log10(below[start] / below[start + distance]);
        return static_cast<double>(distance) / 44.1 / decades;
    }

    CHostedEffect effect{nullptr};

private:
    static constexpr std::int32_t Frames = 64;
};

double RealValue(const SParameterRow& row, double position) {
    return row.law == EParameterLaw::Linear ? row.minimum + position * (row.maximum - row.minimum)
                                            : row.minimum * std::pow(row.maximum / row.minimum, position);
}

/// The engine's value for a position of `row`'s parameter `tag`, in the row's unit.
double EnginesValue(const SParameterRow& row, std::int32_t tag, float position) {
    constexpr float Quiet = 0.001f;
    CMeasuredEngine engine;
    engine.GainDb(Quiet); // until the ramps of a new instance are over
    engine.Set(tag, position);
    switch (row.firstTag) {
    case 23: // main gains
    case 29:
    case 32: // input gain
        return engine.GainDb(Quiet);
    case 33: // threshold: the drive is its reciprocal
        return -engine.GainDb(Quiet);
    case 37: // ceiling: the level to which a loud sound is limited
        return engine.GainDb(4.0f) + 20.0 * std::log10(4.0);
    case 36: // release
        return engine.ReleaseMs(RealValue(row, static_cast<double>(position)));
    case FirstMacroTag: // percent of the full range of a target with full sensitivity
        engine.Set(33, 0.0f);
        engine.effect.Device().AssignMacro(static_cast<std::size_t>(tag - FirstMacroTag), 33,
            position < 0.5f ? 0.0f : 1.0f); // either way upwards
        engine.Set(tag, position);
        return (position < 0.5f ? -100.0 : 100.0) *
               static_cast<double>(engine.effect.Device().GetParam(33, 0));
    default:
        ADD_FAILURE() << "no measurement for " << row.name;
        return 0.0;
    }
}

} // namespace

TEST(ParameterRows, DescribeTheEnginesLawsForPrograms) {
    for (const auto& row : ParameterRows()) {
        if (row.kind != EParameterKind::Continuous) continue;
        const bool timed = row.law == EParameterLaw::Exponential;
        for (std::int32_t n = 0; n < row.count; ++n) {
            for (const float position :
                {0.5f, 0.6f, 0.75f, 0.875f, timed ? 0.7f : 0.0f, timed ? 0.8f : 1.0f}) {
                const double wanted = RealValue(row, static_cast<double>(position));
                EXPECT_NEAR(
                    EnginesValue(row, row.firstTag + n, position), wanted, timed ? 0.02 * wanted : 2e-3)
                    << row.name << n + 1 << " at " << position;
            }
        }
    }
}
