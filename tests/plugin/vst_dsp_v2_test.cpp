#include "tests/support/recording_host.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV;
using namespace KAV::Tests;
using namespace KAV::VST;

namespace {

class HostCalls : public testing::Test {
protected:
    CRecordingHost host;
    CHostedEffect effect{host.Callback()};

    void SetUp() override { host.calls.clear(); }
};

} // namespace

TEST_F(HostCalls, TheVersionIsThatOfPatches) {
    EXPECT_EQ(effect.Record().version, 1010);
    void* chunk = nullptr;
    const auto size = static_cast<std::size_t>(effect.Dispatch(effGetChunk, 0, 0, &chunk));
    const std::string_view state(static_cast<const char*>(chunk), size);
    EXPECT_NE(state.find("<app_version>1.0.1.0</app_version>"), std::string_view::npos);
}

TEST_F(HostCalls, SpeakerArrangementsOfEqualCountsUpToSixteenAreTaken) {
    EXPECT_TRUE(effect.SetChannels(16, 16));
    EXPECT_EQ(effect.Record().numInputs, 16);
    EXPECT_EQ(effect.Record().numOutputs, 16);
    EXPECT_EQ(host.Count(audioMasterIOChanged), 1u);
}

TEST_F(HostCalls, RefusedSpeakerArrangementsLeaveEverythingAsItWas) {
    ASSERT_TRUE(effect.SetChannels(6, 6));
    host.calls.clear();
    for (const auto& [in, out] :
        {std::pair{17, 17}, {2, 6}, {6, 2}, {-1, -1}, {INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}}) {
        EXPECT_FALSE(effect.SetChannels(in, out)) << in << " and " << out;
    }
    EXPECT_EQ(effect.Record().numInputs, 6);
    EXPECT_EQ(effect.Record().numOutputs, 6);
    EXPECT_TRUE(host.calls.empty());
    VstSpeakerArrangement* in = nullptr;
    VstSpeakerArrangement* out = nullptr;
    EXPECT_EQ(effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out), 1);
    EXPECT_EQ(in->numChannels, 6);
    EXPECT_EQ(out->numChannels, 6);
}

TEST_F(HostCalls, SpeakerArrangementsComeBackAsTheyWereSet) {
    SpeakerArrangement<64> in{};
    SpeakerArrangement<64> out{};
    in.type = 7;
    in.numChannels = out.numChannels = 3;
    in.speakers[2].azimuth = 0.5f;
    out.speakers[0].name[0] = 'L';
    EXPECT_EQ(effect.Dispatch(effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out), 1);
    VstSpeakerArrangement* answer = nullptr;
    EXPECT_EQ(
        effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&answer), nullptr), 1);
    EXPECT_EQ(answer->type, 7);
    EXPECT_EQ(answer->speakers[2].azimuth, 0.5f);
    EXPECT_EQ(effect.Dispatch(effGetSpeakerArrangement, 0, 0, &answer), 1);
    EXPECT_EQ(answer->speakers[0].name[0], 'L');
}

TEST_F(HostCalls, ArrangementsThatWereHandedOutCanBeSetAgainAlsoSwapped) {
    SpeakerArrangement<64> in{};
    SpeakerArrangement<64> out{};
    in.type = 7;
    out.type = 9;
    in.numChannels = out.numChannels = 16;
    for (std::size_t n = 0; n < 16; ++n) {
        in.speakers[n].azimuth = static_cast<float>(n) + 0.25f;
        out.speakers[n].azimuth = static_cast<float>(n) + 0.5f;
    }
    const auto set = [this](const VstSpeakerArrangement* input, VstSpeakerArrangement* output) {
        return effect.Dispatch(effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(input), output);
    };
    ASSERT_EQ(effect.Dispatch(effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out), 1);
    VstSpeakerArrangement* input = nullptr;
    VstSpeakerArrangement* output = nullptr;
    const auto get = [&] {
        return effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&input), &output);
    };
    const auto expect = [&](const SpeakerArrangement<64>& wantedInput,
                            const SpeakerArrangement<64>& wantedOutput) {
        ASSERT_EQ(get(), 1);
        EXPECT_EQ(effect.Record().numInputs, 16);
        EXPECT_EQ(effect.Record().numOutputs, 16);
        EXPECT_EQ(std::memcmp(input, &wantedInput, sizeof(in)), 0);
        EXPECT_EQ(std::memcmp(output, &wantedOutput, sizeof(out)), 0);
    };
    expect(in, out);
    EXPECT_EQ(set(input, output), 1);
    expect(in, out);
    EXPECT_EQ(set(output, input), 1);
    expect(out, in);
    EXPECT_EQ(set(input, input), 1);
    expect(out, out);
    EXPECT_EQ(set(reinterpret_cast<const VstSpeakerArrangement*>(&in), output), 1);
    expect(in, out);
    EXPECT_EQ(set(output, output), 1);
    expect(out, out);
}

TEST_F(HostCalls, FewerSpeakersLeaveNothingOfTheOnesBefore) {
    SpeakerArrangement<64> in{};
    in.numChannels = 6;
    for (auto& speaker : in.speakers) speaker.azimuth = 0.5f;
    ASSERT_EQ(effect.Dispatch(effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &in), 1);
    ASSERT_TRUE(effect.SetChannels(2, 2));
    VstSpeakerArrangement* input = nullptr;
    ASSERT_EQ(
        effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&input), nullptr), 1);
    for (const auto& speaker : input->speakers) EXPECT_EQ(speaker.azimuth, 0.0f);
}

TEST_F(HostCalls, ArrangementOfNoChannelsIsTakenAndSilencesTheEntry) {
    EXPECT_TRUE(effect.SetChannels(0, 0));
    EXPECT_EQ(effect.Record().numInputs, 0);
    EXPECT_EQ(effect.Record().numOutputs, 0);
    EXPECT_EQ(effect.Device().Channels(), 0);
    EXPECT_EQ(host.Count(audioMasterIOChanged), 1u);
    VstSpeakerArrangement* in = nullptr;
    VstSpeakerArrangement* out = nullptr;
    EXPECT_EQ(effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out), 1);
    ASSERT_NE(in, nullptr);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(in->numChannels, 0);
    EXPECT_EQ(out->numChannels, 0);
    std::vector<std::vector<float>> channels{{3.0f, 3.0f}, {3.0f, 3.0f}};
    effect.Process(channels); // more pointers than channels
    effect.Record().processReplacing(&effect.Record(), nullptr, nullptr, 2);
    for (const auto& channel : channels) EXPECT_EQ(channel, (std::vector{3.0f, 3.0f}));
    EXPECT_TRUE(effect.SetChannels(2, 2));
    effect.Process(channels);
    EXPECT_EQ(channels[0][0], 0.0f) << "limited again, a look-ahead later";
}

TEST_F(HostCalls, ArrangementIsReadNoFurtherThanItsHeaderStates) {
    // A host that allocates room for only one speaker: the sanitizer detects a read beyond it.
    const auto record = std::make_unique<SpeakerArrangement<1>>();
    record->numChannels = 1;
    EXPECT_EQ(effect.Dispatch(
                  effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(record.get()), record.get()),
        1);
    EXPECT_EQ(effect.Record().numInputs, 1);
}

TEST_F(HostCalls, ThereIsNoArrangementBeforeTheFirstSet) {
    VstSpeakerArrangement* in = nullptr;
    VstSpeakerArrangement* out = nullptr;
    EXPECT_EQ(effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out), 0);
    EXPECT_EQ(in, nullptr);
    EXPECT_EQ(out, nullptr);
}

TEST_F(HostCalls, EditGestureGoesToTheParameterOfTheCurrentGroup) {
    effect.Device().SetCurrentGroup(2);
    effect.Device().BeginEdit(33);
    effect.Device().EndEdit(33);
    ASSERT_EQ(host.calls.size(), 2u);
    EXPECT_EQ(host.calls[0].opcode, audioMasterBeginEdit);
    EXPECT_EQ(host.calls[0].index, HostIndexOf(233));
    EXPECT_EQ(host.calls[1].opcode, audioMasterEndEdit);
    EXPECT_EQ(host.calls[1].index, HostIndexOf(233));
}

TEST_F(HostCalls, EditGestureEndsWhereItBeganThoughTheGroupHasChanged) {
    effect.Device().SetCurrentGroup(2);
    effect.Device().BeginEdit(33);
    effect.Device().SetCurrentGroup(0);
    effect.Device().EndEdit(33);
    effect.Device().EndEdit(33); // no edit has begun: that of the current group
    ASSERT_EQ(host.calls.size(), 3u);
    EXPECT_EQ(host.calls[1].opcode, audioMasterEndEdit);
    EXPECT_EQ(host.calls[1].index, HostIndexOf(233));
    EXPECT_FALSE(effect.Device().IsEdited(HostIndexOf(233)));
    EXPECT_EQ(host.calls[2].index, HostIndexOf(33));
}

TEST_F(HostCalls, EditGestureOfAParameterWithoutGroupsStaysWithIt) {
    effect.Device().SetCurrentGroup(3);
    effect.Device().BeginEdit(24);
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_EQ(host.calls[0].index, 104);
}

TEST_F(HostCalls, EditGestureOfAnUnknownOrAbsoluteTagSendsTheHostNothing) {
    for (const std::int32_t tag : {0, 38, 99, 100, 132, 337, -4, -68, INT_MIN, INT_MAX}) {
        effect.Device().BeginEdit(tag);
        effect.Device().EndEdit(tag);
    }
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(HostCalls, AParameterIsEditedFromTheBeginningOfItsGestureToTheEnd) {
    const auto edited = [this] {
        std::vector<std::int32_t> indexes;
        for (std::int32_t index = NoHostIndex; index < 109; ++index) {
            if (effect.Device().IsEdited(index)) indexes.push_back(index);
        }
        return indexes;
    };
    using Indexes = std::vector<std::int32_t>;
    EXPECT_EQ(edited(), Indexes{});
    for (int group = 0; group < 4; ++group) {
        effect.Device().SetCurrentGroup(group);
        for (std::int32_t tag = 1; tag <= 37; ++tag) {
            const std::int32_t inGroup = HostIndexOf(100 * group + tag);
            effect.Device().BeginEdit(tag);
            EXPECT_EQ(edited(), Indexes{inGroup != NoHostIndex ? inGroup : HostIndexOf(tag)}) << tag;
            effect.Device().EndEdit(tag);
            EXPECT_EQ(edited(), Indexes{}) << tag;
        }
    }
}

TEST_F(HostCalls, GesturesOfSeveralParametersOverlapAndUnknownOnesShareAFlag) {
    CDeviceDSP& device = effect.Device();
    device.BeginEdit(33);
    device.BeginEdit(24);
    device.BeginEdit(38); // tags 38 and 99 name nothing
    EXPECT_TRUE(device.IsEdited(HostIndexOf(33)));
    EXPECT_TRUE(device.IsEdited(HostIndexOf(24)));
    EXPECT_TRUE(device.IsEdited(NoHostIndex));
    device.EndEdit(33);
    device.EndEdit(99);
    EXPECT_FALSE(device.IsEdited(HostIndexOf(33)));
    EXPECT_TRUE(device.IsEdited(HostIndexOf(24)));
    EXPECT_FALSE(device.IsEdited(NoHostIndex));
    for (const std::int32_t tag : {100, 124, -1, INT_MIN, INT_MAX}) {
        device.EndEdit(tag);
        EXPECT_TRUE(device.IsEdited(HostIndexOf(24))) << "not a relative tag, so no edit ends";
        device.BeginEdit(tag);
        EXPECT_FALSE(device.IsEdited(NoHostIndex)) << "nor does one begin";
    }
    for (const std::int32_t index : {-2, 109, INT_MIN, INT_MAX}) EXPECT_FALSE(device.IsEdited(index));
}

TEST_F(HostCalls, HostsOwnWritesAreNoGesture) {
    for (std::int32_t index = 0; index < 109; ++index) {
        effect.Set(index, 0.5f);
        EXPECT_FALSE(effect.Device().IsEdited(index));
    }
}

TEST_F(HostCalls, NotifyHostReportsTheBaseUnderTheHostIndex) {
    effect.Device().SetParam(33, 0.25f, MacroOffset);
    effect.Device().SetParam(33, 0.5f, RawBase | NotifyHost);
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_EQ(host.calls[0].opcode, audioMasterAutomate);
    EXPECT_EQ(host.calls[0].effect, &effect.Record());
    EXPECT_EQ(host.calls[0].index, 4);
    EXPECT_EQ(host.calls[0].option, 0.5f);
}

TEST_F(HostCalls, NotifyHostReportsTheParameterOfTheCurrentGroup) {
    effect.Device().SetCurrentGroup(2);
    effect.Device().SetParam(33, 0.5f, GroupRelative | NotifyHost);
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_EQ(host.calls[0].index, HostIndexOf(233));
    EXPECT_EQ(host.calls[0].option, 0.5f);
}

TEST_F(HostCalls, HostsOwnWritesAreTheBaseUnderAnOffset) {
    effect.Device().SetParam(33, 0.25f, MacroOffset);
    effect.Set(4, 0.5f);
    EXPECT_EQ(effect.Get(4), 0.5f);
    EXPECT_EQ(effect.Device().GetParam(33, 0), 0.75f);
}

TEST_F(HostCalls, HostsOwnWritesAreNotReportedBack) {
    for (std::int32_t index = 0; index < 109; ++index) effect.Set(index, 0.5f);
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(HostCalls, TagsOutsideTheTableReportNothing) {
    for (const std::int32_t tag : {0, 38, 100, 338, -1, -4, -56, INT_MIN, INT_MAX}) {
        effect.Device().SetParam(tag, 0.5f, NotifyHost);
        effect.Device().SetParameterAutomated(tag, 0.5f);
    }
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(HostCalls, RecordsDelayFollowsWhatTheHostSets) {
    EXPECT_EQ(effect.Record().initialDelay, 0);
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f);
    EXPECT_EQ(effect.Record().initialDelay, 128);
    effect.Set(24, 0.0f); // channels 1 and 2 leave group 1, which is then unused
    effect.Set(28, 0.0f);
    EXPECT_EQ(effect.Record().initialDelay, 128) << "setting a parameter doesn't refresh it";
    effect.Dispatch(effSetBlockSize, 0, 256);
    EXPECT_EQ(effect.Record().initialDelay, 0);
    effect.Set(24, 1.0f);
    char chunk[] = "x";
    effect.Dispatch(effSetChunk, 0, 1, chunk);
    EXPECT_EQ(effect.Record().initialDelay, 128);
    EXPECT_EQ(host.Count(audioMasterIOChanged), 0u);
}

TEST_F(HostCalls, AbsurdRatesAndBlockSizesAreIgnored) {
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f);
    for (const float rate :
        {0.0f, -44100.0f, 1.7e6f, std::numeric_limits<float>::infinity(), std::nanf("")}) {
        effect.Dispatch(effSetSampleRate, 0, 0, nullptr, rate);
        EXPECT_EQ(effect.Device().GetLatency(), 128) << rate;
    }
    for (const std::intptr_t frames :
        {std::intptr_t{0}, std::intptr_t{-1}, std::intptr_t{INT_MIN}, INTPTR_MIN}) {
        effect.Dispatch(effSetBlockSize, 0, frames);
    }
    std::vector<std::vector<float>> channels(2, std::vector<float>(3000, 0.1f));
    effect.Process(channels);
    effect.Dispatch(effSetBlockSize, 0, 16);
    effect.Process(channels);
    effect.Dispatch(effSetBlockSize, 0, INTPTR_MAX);
    effect.Process(channels);
    for (const float x : channels[0]) ASSERT_TRUE(std::isfinite(x));
}

TEST_F(HostCalls, BlockSizesBeyondThirtyTwoBitsAreHeldAndNotWrapped) {
    CHostedEffect roomy(host.Callback());
    roomy.Dispatch(effSetBlockSize, 0, 4096);
    std::vector<std::vector<float>> expected(2, std::vector<float>(3000, 0.5f));
    roomy.Process(expected);
    for (const std::intptr_t frames : {INTPTR_MAX, (std::intptr_t{1} << 32) + 16}) {
        CHostedEffect other(host.Callback());
        other.Dispatch(effSetBlockSize, 0, 16);
        other.Dispatch(effSetBlockSize, 0, frames);
        std::vector<std::vector<float>> channels(2, std::vector<float>(3000, 0.5f));
        other.Process(channels);
        EXPECT_EQ(channels, expected) << frames << ": as one block, with one step of each ramp";
    }
}

TEST_F(HostCalls, ProcessWorksFromSeparateAndFromSharedBuffers) {
    CHostedEffect other(host.Callback());
    std::vector<std::vector<float>> shared(2, std::vector<float>(512));
    for (std::size_t i = 0; i < 512; ++i)
        shared[0][i] = shared[1][i] = std::sin(static_cast<float>(i) * 0.05f);
    const auto inputs = shared;
    std::vector<std::vector<float>> outputs(2, std::vector<float>(512, 99.0f));
    std::vector<float*> in{const_cast<float*>(inputs[0].data()), const_cast<float*>(inputs[1].data())};
    std::vector<float*> out{outputs[0].data(), outputs[1].data()};
    const auto untouched = inputs;
    effect.Process(shared);
    other.Record().processReplacing(&other.Record(), in.data(), out.data(), 512);
    EXPECT_EQ(shared, outputs);
    EXPECT_EQ(inputs, untouched) << "the host's inputs must not change";
}

TEST_F(HostCalls, SetProgramReachesTheFirstProgramOnly) {
    CDeviceDSP& device = effect.Device();
    EXPECT_EQ(device.GetProgram(), 0);
    device.SetProgram(5, true);
    EXPECT_EQ(device.GetProgram(), 0);
    device.SetProgram(-1, true);
    EXPECT_EQ(device.GetProgram(), -1);
    device.SetProgramPlain(0);
    EXPECT_EQ(device.GetProgram(), 0);
}
