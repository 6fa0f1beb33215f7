#include "tests/support/comma_locale.h"
#include "tests/support/recording_host.h"

#include <array>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class Device : public testing::Test {
protected:
    CRecordingHost host;
    CHostedEffect effect{host.Callback()};
    CDeviceDSP& device = effect.Device();

    void SetUp() override { host.calls.clear(); }
};

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

} // namespace

TEST_F(Device, FreshInstanceHasGroupZeroCurrentAndEqualGroups) {
    EXPECT_EQ(device.GetCurrentGroup(), 0);
    EXPECT_EQ(device.GetProgram(), 0);
    EXPECT_EQ(device.GetGroupCount(), 4);
    EXPECT_EQ(device.GetMaxChannels(), 16);
    for (const std::int32_t tag : {21, 22, 32, 33, 34, 35, 36, 37}) {
        for (int group = 1; group < 4; ++group) {
            EXPECT_EQ(device.GetParam(tag, 0), device.GetParam(tag + 100 * group, 0)) << tag;
        }
    }
    EXPECT_FALSE(device.GetHostBypass());
    EXPECT_FALSE(device.Simd());
    EXPECT_FALSE(device.GroupsParallel());
}

TEST_F(Device, UnknownTagsChangeNothingAndReadAsZero) {
    for (const std::int32_t tag : {0, 38, 100, 138, 338, -1, -2, -3, -57, INT_MIN, INT_MAX}) {
        device.SetParam(tag, 0.75f, NotifyHost | GroupRelative);
        device.SetParam(tag, 0.75f, NotifyHost);
        EXPECT_EQ(device.GetParam(tag, 0), 0.0f);
        EXPECT_EQ(device.GetParam(tag, GroupRelative), 0.0f);
    }
    EXPECT_TRUE(host.calls.empty());
    for (const std::int32_t tag : HostParamTable()) EXPECT_NE(device.GetParam(tag, 0), 0.75f);
}

TEST_F(Device, MacroOffsetIsClampedWithTheBaseAndKeptApartFromIt) {
    device.SetParam(33, 0.9f, RawBase);
    device.SetParam(33, 0.3f, MacroOffset);
    EXPECT_EQ(device.GetParam(33, 0), 1.0f);
    EXPECT_EQ(device.GetParam(33, BaseValue), 0.9f);
    device.SetParam(33, 0.5f, RawBase);
    EXPECT_EQ(device.GetParam(33, 0), 0.5f + 0.3f);
    EXPECT_EQ(effect.Get(4), 0.5f);
}

TEST_F(Device, PlainWriteMovesTheBaseSoThatTheFinalValueIsTheOneGiven) {
    device.SetParam(32, 0.2f, MacroOffset);
    device.SetParam(32, 0.7f, Normalized);
    EXPECT_EQ(device.GetParam(32, Normalized), 0.7f);
    EXPECT_EQ(device.GetParam(32, Normalized | BaseValue), 0.7f - 0.2f);
}

TEST_F(Device, PlainWriteMayPutTheBaseOutsideTheRange) {
    device.SetParam(32, 0.5f, MacroOffset);
    device.SetParam(32, 0.1f, 0);
    EXPECT_EQ(device.GetParam(32, BaseValue), 0.1f - 0.5f);
    EXPECT_EQ(device.GetParam(32, 0), 0.1f - 0.5f + 0.5f);
}

TEST_F(Device, GroupRelativeTagsMeanTheCurrentGroup) {
    device.SetParam(233, 0.125f, 0);
    device.SetCurrentGroup(2);
    EXPECT_EQ(device.GetParam(33, Normalized | GroupRelative), 0.125f);
    device.SetParam(36, 0.625f, GroupRelative);
    EXPECT_EQ(device.GetParam(236, 0), 0.625f);
    EXPECT_EQ(device.GetParam(36, 0), 0.4f);
}

TEST_F(Device, GroupRelativeTagsWithoutGroupsStayAsTheyAre) {
    device.SetCurrentGroup(2);
    device.SetParam(30, 2.0f, GroupRelative);
    EXPECT_EQ(device.GetParam(30, 0), 2.0f);
}

TEST_F(Device, CurrentGroupIsHeldToTheGroupsThatThereAre) {
    device.SetCurrentGroup(7);
    EXPECT_EQ(device.GetCurrentGroup(), 3);
    device.SetCurrentGroup(INT_MIN);
    EXPECT_EQ(device.GetCurrentGroup(), 0);
}

TEST_F(Device, OversamplingTakesPositionsAndIndexes) {
    const auto fromHost = [this](float position) {
        effect.Set(100, position);
        return device.GetParam(30, 0);
    };
    EXPECT_EQ(fromHost(0.5f), 2.0f);
    EXPECT_EQ(fromHost(0.16f), 0.0f);
    EXPECT_EQ(fromHost(0.17f), 1.0f);
    EXPECT_EQ(fromHost(1.0f), 3.0f);
    device.SetParam(30, 1.9f, 0);
    EXPECT_EQ(device.GetParam(30, 0), 1.0f);
    EXPECT_EQ(device.GetParam(30, Normalized), 1.0f / 3.0f);
    for (int index = 0; index < 4; ++index) { // a host may write back what it has read
        device.SetParam(30, static_cast<float>(index), 0);
        effect.Set(100, effect.Get(100));
        EXPECT_EQ(device.GetParam(30, 0), static_cast<float>(index));
    }
}

TEST_F(Device, OversamplingOutsideItsRangeIsHeld) {
    for (const std::uint32_t flags : {0u, std::uint32_t{Normalized}}) {
        for (const float value : {4.0f, 100.0f, 3e38f, std::numeric_limits<float>::infinity()}) {
            device.SetParam(30, value, flags);
            EXPECT_EQ(device.GetParam(30, 0), 3.0f) << value;
        }
        for (const float value :
            {-0.5f, -1.0f, -3e38f, -std::numeric_limits<float>::infinity(), NotANumber}) {
            device.SetParam(30, 2.0f, 0);
            device.SetParam(30, value, flags);
            EXPECT_EQ(device.GetParam(30, 0), 0.0f) << value;
        }
    }
}

TEST_F(Device, AnyToggleValueButZeroIsOn) {
    for (const float value : {1.0f, 0.1f, -1.0f, 1e-30f, NotANumber}) {
        device.SetParam(35, 0.0f, 0);
        device.SetParam(35, value, 0);
        EXPECT_EQ(device.GetParam(35, 0), 1.0f) << value;
    }
    device.SetParam(35, -0.0f, 0);
    EXPECT_EQ(device.GetParam(35, 0), 0.0f);
}

TEST_F(Device, NotANumberGivesAFinalValueOfZeroAndIsKeptAsBase) {
    device.SetParam(33, NotANumber, RawBase);
    EXPECT_EQ(device.GetParam(33, 0), 0.0f);
    EXPECT_TRUE(std::isnan(device.GetParam(33, BaseValue)));
    device.SetParam(33, 0.5f, RawBase);
    EXPECT_EQ(device.GetParam(33, 0), 0.5f);
}

TEST_F(Device, HostReadsAutoReleaseBeforeLimiter) {
    device.SetParam(35, 1.0f, 0);
    device.SetParam(34, 0.0f, 0);
    EXPECT_EQ(effect.Get(8), 1.0f);
    EXPECT_EQ(effect.Get(12), 0.0f);
}

TEST_F(Device, EveryParameterKeepsWhatTheHostWrites) {
    for (std::int32_t index = 0; index < 109; ++index) {
        effect.Set(index, 0.0f);
        EXPECT_EQ(effect.Get(index), 0.0f) << index;
    }
    for (std::int32_t index = 0; index < 109; ++index) {
        effect.Set(index, 1.0f);
        EXPECT_EQ(effect.Get(index), 1.0f) << index;
        for (std::int32_t later = index + 1; later < 109; ++later)
            ASSERT_EQ(effect.Get(later), 0.0f) << index;
    }
}

TEST_F(Device, MacroMovesItsTargetByKnobAndSensitivity) {
    device.AssignMacro(0, 33, 0.75f);
    device.SetParam(33, 0.5f, RawBase);
    device.SetParam(24, 0.75f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.75f);
    EXPECT_EQ(device.GetParam(33, BaseValue), 0.5f);
    device.SetParam(24, 0.5f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.5f);
}

TEST_F(Device, MacroNeverNotifiesTheHostOfItsTargets) {
    device.AssignMacro(0, 33, 1.0f);
    device.SetParam(24, 1.0f, NotifyHost);
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_EQ(host.calls[0].index, 104);
}

TEST_F(Device, LastMacroThatMovedSetsTheOffset) {
    device.AssignMacro(0, 33, 1.0f);
    device.AssignMacro(1, 33, 1.0f);
    device.SetParam(33, 0.5f, RawBase);
    device.SetParam(24, 0.75f, 0);
    device.SetParam(25, 0.375f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.25f);
}

TEST_F(Device, TargetAtTheTopComesBackWhenTheMacroDoes) {
    device.AssignMacro(0, 33, 0.75f);
    device.SetParam(33, 0.9f, RawBase);
    device.SetParam(24, 1.0f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 1.0f);
    device.SetParam(24, 0.5f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.9f);
}

TEST_F(Device, MacrosThatMoveEachOtherEndWhereTheyBegan) {
    device.AssignMacro(0, 25, 1.0f);
    device.AssignMacro(1, 26, 1.0f);
    device.AssignMacro(2, 24, 1.0f);
    device.AssignMacro(2, 33, 1.0f);
    device.AssignMacro(3, 27, 1.0f); // itself
    device.SetParam(33, 0.5f, RawBase);
    device.SetParam(24, 0.75f, 0); // macro 2 gets +0.5, macro 3 (0.5 - 0.5) x 2, the threshold -1
    EXPECT_EQ(device.GetParam(25, 0), 1.0f);
    EXPECT_EQ(device.GetParam(26, 0), 0.5f);
    EXPECT_EQ(device.GetParam(33, 0), 0.0f);
    device.SetParam(27, 1.0f, 0);
    EXPECT_EQ(device.GetParam(27, 0), 1.0f);
}

TEST_F(Device, MacroSlotsWithUnknownTargetsAreSkipped) {
    device.tags[0][0] = 338;
    device.tags[0][1] = INT_MAX;
    device.tags[0][2] = INT_MIN;
    device.tags[0][3] = 33;
    for (std::size_t slot = 0; slot < 4; ++slot) device.sensitivities[0][slot] = 0.0f;
    device.SetParam(33, 0.5f, RawBase);
    device.SetParam(24, 0.375f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.75f);
}

TEST_F(Device, EachMacroMovesItsOwnTargetsAndNoOthers) {
    constexpr std::array<std::int32_t, 5> Targets{32, 133, 236, 337, 29};
    for (std::size_t macro = 0; macro < 5; ++macro) {
        device.AssignMacro(macro, Targets[macro], 0.75f);
        device.SetParam(Targets[macro], 0.5f, RawBase);
    }
    for (std::size_t macro = 0; macro < 5; ++macro) {
        device.SetParam(24 + static_cast<std::int32_t>(macro), 0.75f, 0);
        for (std::size_t other = 0; other < 5; ++other) {
            EXPECT_EQ(device.GetParam(Targets[other], 0), other <= macro ? 0.75f : 0.5f) << macro;
            EXPECT_EQ(device.GetParam(Targets[other], BaseValue), 0.5f);
        }
    }
}

TEST_F(Device, EachMacroMovesItsTargetsForTheHostAndTheEditor) {
    device.SetCurrentGroup(2);
    for (std::size_t macro = 0; macro < 5; ++macro) {
        const auto knob = 24 + static_cast<std::int32_t>(macro);
        device.AssignMacro(macro, 33, 0.75f);
        device.SetParam(33, 0.5f, RawBase);
        effect.Set(104 + static_cast<std::int32_t>(macro), 0.75f); // the host
        EXPECT_EQ(device.GetParam(33, 0), 0.75f) << macro;
        device.SetParam(knob, 0.25f, Normalized | NotifyHost | GroupRelative); // the editor
        EXPECT_EQ(device.GetParam(33, 0), 0.25f) << macro;
        device.SetParam(knob, 0.5f, Normalized);
        EXPECT_EQ(device.GetParam(33, 0), 0.5f) << macro;
        device.AssignMacro(macro, 33, CMacro::NoSensitivity);
    }
    EXPECT_EQ(device.GetParam(233, 0), 1.0f) << "targets are absolute tags, whatever group is current";
}

TEST_F(Device, EverySlotOfAMacroMovesItsTarget) {
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        const auto knob = 24 + static_cast<std::int32_t>(macro);
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            device.ClearMacros();
            device.tags[macro][slot] = 33;
            device.sensitivities[macro][slot] = 0.75f;
            device.SetParam(33, 0.5f, RawBase);
            device.SetParam(knob, 0.75f, 0);
            ASSERT_EQ(device.GetParam(33, 0), 0.75f) << macro << " " << slot;
            device.SetParam(knob, 0.5f, 0);
            ASSERT_EQ(device.GetParam(33, 0), 0.5f) << macro << " " << slot;
        }
    }
}

TEST_F(Device, SlotsActInOrderSoThatTheLastOneOfATargetCounts) {
    device.SetParam(33, 0.5f, RawBase);
    for (const std::size_t slot : {3u, 8u, 63u}) {
        device.tags[4][slot] = 33;
        device.sensitivities[4][slot] = slot == 63 ? 0.75f : 0.0f;
    }
    device.SetParam(28, 0.625f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.5f + 0.125f * 4.0f * 0.25f);
    // A macro in an earlier slot moves the target first, one in a later slot last.
    device.ClearMacros();
    device.AssignMacro(1, 33, 0.0f);
    device.tags[0][5] = 25;
    device.sensitivities[0][5] = 0.75f;
    device.tags[0][6] = 33;
    device.sensitivities[0][6] = 0.75f;
    device.SetParam(24, 0.75f, 0);
    EXPECT_EQ(device.GetParam(33, 0), 0.75f);
    device.tags[0][6] = 25;
    device.tags[0][5] = 33;
    device.SetParam(24, 0.75f, 0); // macro 2 gets the offset 0.25 as its value, and adds (0.25 - 0.5) x -2
    EXPECT_EQ(device.GetParam(33, 0), 1.0f);
}

TEST_F(Device, OffsetsOfMacrosAreComputedInDoublePrecision) {
    int apart = 0;
    device.AssignMacro(2, 33, 1.0f);
    for (int i = 0; i < 50; ++i) {
        for (int k = 0; k < 50; ++k) {
            const float value = static_cast<float>(i) / 100.0f;
            const float sensitivity = static_cast<float>(k) / 100.0f;
            const auto offset = static_cast<float>(
                (static_cast<double>(value) - 0.5) * 4.0 * (static_cast<double>(sensitivity) - 0.5));
            apart += offset != (value - 0.5f) * 4.0f * (sensitivity - 0.5f) ? 1 : 0;
            device.AssignMacro(2, 33, sensitivity);
            device.SetParam(33, 0.0f, RawBase);
            device.SetParam(26, value, 0);
            ASSERT_EQ(device.GetParam(33, 0), offset) << value << " " << sensitivity;
        }
    }
    EXPECT_GT(apart, 100) << "these values must distinguish one precision from the other";
}

TEST_F(Device, SwitchesThatFollowAMacroAreOnUnlessTheOffsetIsZero) {
    for (const std::int32_t tag : {16, 116, 19, 21, 322, 31, 34, 135}) {
        device.ClearMacros();
        device.AssignMacro(3, tag, 0.75f);
        for (const float knob : {1.0f, 0.0f, 0.50001f}) {
            device.SetParam(27, 0.5f, 0);
            EXPECT_EQ(device.GetParam(tag, 0), 0.0f) << tag;
            device.SetParam(27, knob, 0);
            EXPECT_EQ(device.GetParam(tag, 0), 1.0f) << tag << " " << knob;
        }
        device.SetParam(27, 0.5f, 0);
    }
}

TEST_F(Device, OversamplingThatFollowsAMacroTakesTheOffsetAsItsIndex) {
    device.AssignMacro(0, 30, 1.0f);
    const auto index = [this](float knob) {
        device.SetParam(30, 3.0f, 0);
        device.SetParam(24, knob, 0);
        return device.GetParam(30, 0);
    };
    EXPECT_EQ(index(1.0f), 1.0f); // (1 - 0.5) x 4 x 0.5
    EXPECT_EQ(index(0.99f), 0.0f);
    EXPECT_EQ(index(0.5f), 0.0f);
    EXPECT_EQ(index(0.0f), 0.0f);
}

TEST_F(Device, OffsetStaysWhenItsTargetIsNoLongerAssigned) {
    for (const bool clears : {false, true}) {
        device.ClearMacros();
        device.AssignMacro(0, 33, 0.75f);
        device.SetParam(33, 0.5f, RawBase);
        device.SetParam(24, 0.75f, 0);
        if (clears) {
            device.ClearMacros();
        } else {
            device.AssignMacro(0, 33, CMacro::NoSensitivity);
        }
        EXPECT_EQ(device.GetParam(33, 0), 0.75f);
        for (const float knob : {0.5f, 0.0f, 1.0f}) {
            device.SetParam(24, knob, 0);
            EXPECT_EQ(device.GetParam(33, 0), 0.75f) << "nothing moves it any more";
        }
        effect.Set(4, 0.25f);
        EXPECT_EQ(device.GetParam(33, 0), 0.5f) << "the host's value is the base";
        EXPECT_EQ(effect.Get(4), 0.25f);
        device.SetParam(33, 0.625f, Normalized);
        EXPECT_EQ(device.GetParam(33, 0), 0.625f) << "the editor's value is the final value";
        EXPECT_EQ(effect.Get(4), 0.375f);
    }
}

TEST_F(Device, GroupRelativeTagsAreNeverNegative) {
    // If 132 less 200, for example, were taken for a relative tag, it would be a tag of another group.
    for (int group = 0; group < 4; ++group) {
        device.SetCurrentGroup(group);
        for (std::int32_t tag = -400; tag < 0; ++tag) {
            ASSERT_EQ(device.ResolveTag(tag, GroupRelative), tag);
            device.SetParam(tag, 0.75f, GroupRelative | RawBase | NotifyHost);
            ASSERT_EQ(device.GetParam(tag, GroupRelative), 0.0f) << tag;
        }
        for (const std::int32_t tag : {INT_MIN, INT_MIN + 100, INT_MAX, INT_MAX - 200}) {
            ASSERT_EQ(device.ResolveTag(tag, GroupRelative), tag);
        }
    }
    EXPECT_TRUE(host.calls.empty());
    for (const std::int32_t tag : HostParamTable()) EXPECT_NE(device.GetParam(tag, BaseValue), 0.75f) << tag;
}

TEST_F(Device, TagsAreAbsoluteWithoutTheFlagAndRelativeWithIt) {
    for (int group = 0; group < 4; ++group) {
        device.SetCurrentGroup(group);
        for (std::int32_t tag = 0; tag <= 337; ++tag) {
            EXPECT_EQ(device.ResolveTag(tag, 0), tag);
            const std::int32_t inGroup = 100 * group + tag;
            EXPECT_EQ(
                device.ResolveTag(tag, GroupRelative), HostIndexOf(inGroup) != NoHostIndex ? inGroup : tag);
        }
    }
}

TEST_F(Device, RoutingTextIsTheDefaultInEveryGroup) {
    for (int group = 0; group < 4; ++group) {
        EXPECT_EQ(device.GetRouting(group),
            "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>Not found</name>\r\n"
            "\t<map>0,-1|*|1,-1</map>\r\n\t<ch_names>L|*|R</ch_names>\r\n</kav_input_routing>");
    }
    EXPECT_EQ(device.GetRouting(-1), "");
    EXPECT_EQ(device.GetRouting(4), "");
}

TEST_F(Device, RoutingOfAGroupDecidesWhichChannelsItsTogglesMean) {
    const std::string text = "<kav_input_routing>\r\n\t<map>1,-1|*|-1,-1</map>\r\n</kav_input_routing>";
    device.SetRouting(text, 0);
    EXPECT_EQ(device.GetRouting(0), text);
    EXPECT_EQ(device.GetRouting(1), std::string(DefaultRoutingText()));
    device.SetParam(32, 0.0f, 0); // -20 dB
    std::vector<std::vector<float>> audio;
    for (int block = 0; block < 200; ++block) {
        audio.assign(2, std::vector<float>(512, 0.5f));
        effect.Process(audio);
    }
    EXPECT_NEAR(audio[0].back(), 0.5f, 1e-5f);
    EXPECT_NEAR(audio[1].back(), 0.05f, 1e-5f);
}

TEST_F(Device, MeterTagsReadWhatTheEngineShowsAndNothingElseDoes) {
    for (std::int32_t tag = -60; tag < 0; ++tag) EXPECT_EQ(device.GetParam(tag, 0), 0.0f) << tag;
    device.SetParam(37, 0.5f, 0); // a ceiling of -15 dB distinguishes the group's output from its input
    for (int block = 0; block < 200; ++block) {
        std::vector<std::vector<float>> audio{std::vector<float>(512, 0.9f), std::vector<float>(512, 0.1f)};
        effect.Process(audio);
    }
    const auto meter = [this](std::int32_t tag) { return device.GetParam(tag, Normalized | GroupRelative); };
    const auto& meters = device.Meters();
    for (std::int32_t n = 0; n < 16; ++n) {
        const auto place = static_cast<std::size_t>(n);
        EXPECT_EQ(meter(-4 - n), meters.Source(place)) << n;
        EXPECT_EQ(meter(-24 - n), meters.Input(place)) << n;
        EXPECT_EQ(meter(-40 - n), meters.Output(place)) << n;
        EXPECT_EQ(meter(-4 - n) > 0.0f, n < 2) << n;
        EXPECT_EQ(meter(-40 - n) > 0.0f, n < 2) << n;
    }
    for (std::int32_t g = 0; g < 4; ++g) EXPECT_EQ(meter(-20 - g) > 0.0f, g == 0);
    EXPECT_GT(meter(-4), meter(-5));
    EXPECT_GT(meter(-24), meter(-40));
    for (const std::int32_t tag : {-1, -2, -3, -56, -57}) EXPECT_EQ(meter(tag), 0.0f) << tag;
    device.SetParam(-4, 0.0f, 0);
    EXPECT_GT(meter(-4), 0.0f) << "a meter can't be written";
}

TEST_F(Device, RoutingOfAGroupThatIsNotThereIsIgnored) {
    for (const int group : {-1, 4, INT_MIN, INT_MAX}) device.SetRouting("<map></map>", group);
    for (int group = 0; group < 4; ++group)
        EXPECT_EQ(device.GetRouting(group), std::string(DefaultRoutingText()));
}

TEST_F(Device, DisplayDoesNotFollowTheProcessesLocale) {
    effect.Set(102, 0.755f);
    const CCommaLocale comma;
    for (const bool on : {true, false, true}) { // switched while the instance lives
        CCommaLocale::Switch(on);
        EXPECT_EQ(effect.Display(16), "400.01");
        EXPECT_EQ(effect.Display(102), "+12.2");
    }
}
