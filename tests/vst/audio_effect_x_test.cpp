#include "tests/support/recording_host.h"

#include <array>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;
using namespace KAV::VST;

namespace {

class Boundary : public testing::Test {
protected:
    CRecordingHost host;
    CHostedEffect effect{host.Callback()};

    /// Everything of the instance that a host or the editor can read, as bytes.
    std::string Everything() {
        std::string all(reinterpret_cast<const char*>(&effect.Record()), sizeof(AEffect));
        const auto add = [&all](const auto& value) {
            all.append(reinterpret_cast<const char*>(&value), sizeof(value));
        };
        for (const std::int32_t isPreset : {0, 1}) {
            void* chunk = nullptr;
            const auto size = effect.Dispatch(effGetChunk, isPreset, 0, &chunk);
            all.append(static_cast<const char*>(chunk), static_cast<std::size_t>(size));
        }
        CDeviceDSP& device = effect.Device();
        for (std::int32_t tag = -60; tag <= HighestTag; ++tag) {
            add(device.GetParam(tag, 0));
            add(device.GetParam(tag, BaseValue));
        }
        for (std::int32_t index = NoHostIndex; index < 109; ++index) add(device.IsEdited(index));
        add(device.GetProgram());
        add(device.GetHostBypass());
        add(device.GetLatency());
        add(device.GetCurrentGroup());
        add(device.Channels());
        VstSpeakerArrangement* in = nullptr;
        VstSpeakerArrangement* out = nullptr;
        add(effect.Dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out));
        all += effect.Text(effGetProgramName, 0, 24);
        return all;
    }
};

} // namespace

TEST_F(Boundary, RecordIsFilledAsHostsReadIt) {
    const AEffect& record = effect.Record();
    EXPECT_EQ(record.magic, 0x56737450);
    EXPECT_EQ(record.numPrograms, 0);
    EXPECT_EQ(record.numParams, 109);
    EXPECT_EQ(record.numInputs, 2);
    EXPECT_EQ(record.numOutputs, 2);
    EXPECT_EQ(record.flags, effFlagsCanReplacing | effFlagsProgramChunks);
    EXPECT_EQ(record.initialDelay, 0);
    EXPECT_EQ(record.ioRatio, 1.0f);
    EXPECT_EQ(record.uniqueID, 1936683628);
    EXPECT_EQ(record.version, 1010);
    EXPECT_NE(record.object, nullptr);
    EXPECT_EQ(record.user, nullptr);
    EXPECT_EQ(record.reserved1, 0);
    EXPECT_EQ(record.reserved2, 0);
    EXPECT_NE(record.dispatcher, nullptr);
    EXPECT_NE(record.process, nullptr);
    EXPECT_NE(record.processReplacing, nullptr);
    EXPECT_NE(record.processDoubleReplacing, nullptr);
}

TEST_F(Boundary, OpcodesThatChangeNothingAnswerZero) {
    effect.Set(4, 0.25f); // a state that differs from that of a new instance
    effect.Device().SetHostBypass(true);
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 48000.0f);
    const auto before = Everything();
    host.calls.clear();
    for (const std::int32_t opcode :
        {effOpen, effSetProgram, effMainsChanged, effEditOpen, effEditClose, effEditIdle, effProcessEvents,
            effString2Parameter, effGetInputProperties, effGetOutputProperties, effOfflineNotify,
            effOfflinePrepare, effOfflineRun, effProcessVarIo, effSetBypass, effGetVendorVersion,
            effVendorSpecific, effCanDo, effGetTailSize, effGetParameterProperties, effEditKeyDown,
            effEditKeyUp, effSetEditKnobMode, effGetMidiProgramName, effGetMidiProgramCategory,
            effGetMidiKeyName, effHasMidiProgramsChanged, effBeginSetProgram, effEndSetProgram,
            effShellGetNextPlugin, effStartProcess, effStopProcess, effSetPanLaw, effSetProcessPrecision,
            effBeginLoadBank, effBeginLoadProgram, effGetNumMidiInputChannels, effGetNumMidiOutputChannels}) {
        std::array<char, 1024> memory; // the largest record that any of them could fill
        memory.fill('#');
        memory.back() = '\0'; // the end of a text
        const auto untouched = memory;
        for (const std::int32_t number : {0, 1, 8, 108, -1, INT_MAX}) {
            EXPECT_EQ(effect.Dispatch(opcode, number, number), 0) << opcode;
            EXPECT_EQ(effect.Dispatch(opcode, number, number, memory.data(), 1.0f), 0) << opcode;
        }
        EXPECT_EQ(memory, untouched) << opcode;
        EXPECT_TRUE(host.calls.empty()) << opcode;
        ASSERT_EQ(Everything(), before) << opcode;
        host.calls.clear();
    }
    // Data that can't be read hasn't changed either: the sound is that of an instance without these calls.
    CHostedEffect quiet(host.Callback());
    quiet.Set(4, 0.25f);
    quiet.Device().SetHostBypass(true);
    quiet.Dispatch(effSetSampleRate, 0, 0, nullptr, 48000.0f);
    for (const bool bypass : {true, false}) {
        std::vector<std::vector<float>> sound(2, std::vector<float>(3000, 0.75f));
        auto expected = sound;
        effect.Device().SetHostBypass(bypass);
        quiet.Device().SetHostBypass(bypass);
        effect.Process(sound);
        quiet.Process(expected);
        EXPECT_EQ(sound, expected);
    }
}

TEST_F(Boundary, CallsThatSetSomethingAnswerZero) {
    char name[] = "name";
    EXPECT_EQ(effect.Dispatch(effSetProgramName, 0, 0, name), 0);
    EXPECT_EQ(effect.Text(effGetProgramName, 0, 24), "name");
    EXPECT_EQ(effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 192000.0f), 0);
    EXPECT_EQ(effect.Record().initialDelay, 256);
    EXPECT_EQ(effect.Dispatch(effSetBlockSize, 0, 256), 0);
}

TEST_F(Boundary, OpcodesWithAFixedAnswerGiveIt) {
    EXPECT_EQ(effect.Dispatch(effGetProgram), 0);
    for (const std::int32_t index : {-1, 0, 108, 109, INT_MIN, INT_MAX}) {
        EXPECT_EQ(effect.Dispatch(effCanBeAutomated, index), 1);
    }
    EXPECT_EQ(effect.Dispatch(effGetPlugCategory), 1);
    EXPECT_EQ(effect.Dispatch(effGetVstVersion), 2400);
    EXPECT_EQ(effect.Dispatch(effGetCurrentMidiProgram), -1);
    EXPECT_EQ(effect.Dispatch(effSetTotalSampleToProcess, 0, 12345), 12345);
}

TEST_F(Boundary, UnknownAndRetiredOpcodesAnswerZero) {
    std::array<char, 64> text{};
    for (const std::int32_t opcode : {9, 16, 17, 18, 20, 21, 22, 28, 30, 31, 32, 36, 37, 43, 46, 53, 54, 55,
             57, 80, 1000, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(effect.Dispatch(opcode), 0) << opcode;
        EXPECT_EQ(effect.Dispatch(opcode, INT_MAX, INT_MAX, text.data(), 1e30f), 0) << opcode;
    }
}

TEST_F(Boundary, NullPointersWherePointersAreExpectedGiveADefinedAnswer) {
    for (const std::int32_t opcode : {effSetProgramName, effGetProgramName, effGetParamLabel,
             effGetParamDisplay, effGetParamName, effGetChunk, effSetChunk, effSetSpeakerArrangement,
             effGetSpeakerArrangement, effCanDo, effEditGetRect, effEditOpen}) {
        EXPECT_EQ(effect.Dispatch(opcode), 0) << opcode;
    }
    EXPECT_EQ(effect.Dispatch(effGetProgramNameIndexed), 1);
    EXPECT_EQ(effect.Dispatch(effGetEffectName), 1);
    EXPECT_EQ(effect.Dispatch(effGetVendorString), 1);
    EXPECT_EQ(effect.Dispatch(effGetProductString), 1);
    effect.Record().processReplacing(&effect.Record(), nullptr, nullptr, 64);
    std::array<float, 4> samples{1.0f, 1.0f, 1.0f, 1.0f};
    std::array<float*, 2> channels{samples.data(), nullptr};
    effect.Record().processReplacing(&effect.Record(), channels.data(), channels.data(), 4);
    effect.Record().processReplacing(&effect.Record(), channels.data(), nullptr, 4);
    EXPECT_EQ(samples[0], 1.0f) << "a block with a missing channel is left alone";
}

TEST_F(Boundary, BlocksWithoutSoundAreLeftAloneWhicheverPartIsMissing) {
    CHostedEffect quiet(host.Callback());
    std::array<float, 4> left{0.5f, 0.5f, 0.5f, 0.5f};
    auto right = left;
    std::array<float, 4> leftOut{0.25f, 0.25f, 0.25f, 0.25f};
    auto rightOut = leftOut;
    const auto inputBefore = left;
    const auto outputBefore = leftOut;
    std::array<float*, 2> inputs{left.data(), right.data()};
    std::array<float*, 2> outputs{leftOut.data(), rightOut.data()};
    const auto process = [this](float** in, float** out, std::int32_t frames) {
        effect.Record().processReplacing(&effect.Record(), in, out, frames);
    };
    process(nullptr, outputs.data(), 4);
    process(inputs.data(), nullptr, 4);
    process(nullptr, nullptr, 4);
    for (const std::int32_t frames : {0, -1, INT_MIN}) process(inputs.data(), outputs.data(), frames);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        auto fewer = inputs;
        fewer[channel] = nullptr;
        process(fewer.data(), outputs.data(), 4);
        fewer = outputs;
        fewer[channel] = nullptr;
        process(inputs.data(), fewer.data(), 4);
    }
    for (const auto& each : {left, right}) EXPECT_EQ(each, inputBefore);
    for (const auto& each : {leftOut, rightOut}) EXPECT_EQ(each, outputBefore);
    // None of them has passed through the engine.
    std::vector<std::vector<float>> sound(2, std::vector<float>(256, 0.75f));
    auto expected = sound;
    effect.Process(sound);
    quiet.Process(expected);
    EXPECT_EQ(sound, expected);
}

TEST_F(Boundary, EntriesWithoutARecordAnswerZero) {
    const AEffect& record = effect.Record();
    EXPECT_EQ(record.dispatcher(nullptr, effGetVstVersion, 0, 0, nullptr, 0.0f), 0);
    EXPECT_EQ(record.getParameter(nullptr, 0), 0.0f);
    record.setParameter(nullptr, 0, 0.5f);
    record.processReplacing(nullptr, nullptr, nullptr, 1);
}

TEST_F(Boundary, CanDoKnowsNoText) {
    for (const char* text : {"receiveVstTimeInfo", "receiveVstEvents", "bypass", "offline", ""}) {
        EXPECT_EQ(effect.Dispatch(effCanDo, 0, 0, const_cast<char*>(text)), 0) << text;
    }
}

TEST_F(Boundary, SetProgramLeavesTheProgramAlone) {
    for (const std::intptr_t program : {0, 1, -1, INT_MAX, INT_MIN}) {
        effect.Dispatch(effSetProgram, 0, program);
        EXPECT_EQ(effect.Dispatch(effGetProgram), 0);
    }
}

TEST_F(Boundary, TextsHaveTheInterfacesSizes) {
    EXPECT_EQ(effect.Text(effGetEffectName, 0, 64), "KAV Sorrel Limiter");
    EXPECT_EQ(effect.Text(effGetVendorString, 0, 64), "Kavelin");
    EXPECT_EQ(effect.Text(effGetProductString, 0, 64), "KAV Sorrel Limiter");
    EXPECT_EQ(effect.Text(effGetProgramName, 0, 24), "No KVP patches found!");
}

TEST_F(Boundary, ProgramNameBeyondTheListIsEmptyAndStillAnsweredWithOne) {
    for (const std::int32_t index : {1, 5000, -1, INT_MIN, INT_MAX}) {
        std::array<char, 24> text;
        text.fill('#');
        EXPECT_EQ(effect.Dispatch(effGetProgramNameIndexed, index, 0, text.data()), 1);
        EXPECT_EQ(text[0], '\0');
        EXPECT_EQ(text[1], '#');
    }
}

TEST_F(Boundary, BadIndexesWriteExactlyOneZeroByte) {
    for (const std::int32_t index : {-1, 109, INT_MIN, INT_MAX}) {
        for (const std::int32_t opcode : {effGetParamName, effGetParamLabel, effGetParamDisplay}) {
            EXPECT_EQ(effect.Text(opcode, index, 8), "");
        }
        effect.Set(index, 0.25f);
        EXPECT_EQ(effect.Get(index), 0.0f);
    }
    for (std::int32_t index = 0; index < 109; ++index) EXPECT_NE(effect.Get(index), 0.25f);
}

TEST_F(Boundary, ChunksThatAreNoneChangeNothing) {
    void* before = nullptr;
    const auto size = effect.Dispatch(effGetChunk, 0, 0, &before);
    const std::string state(static_cast<const char*>(before), static_cast<std::size_t>(size));
    char chunk[] = "anything";
    for (const std::intptr_t length : {0, 8, -1, 1})
        EXPECT_EQ(effect.Dispatch(effSetChunk, 1, length, chunk), 0);
    EXPECT_EQ(effect.Dispatch(effSetChunk, 0, 8, nullptr), 0);
    EXPECT_EQ(effect.Dispatch(effGetChunk, 0, 0, nullptr), 0);
    void* after = nullptr;
    ASSERT_EQ(effect.Dispatch(effGetChunk, 0, 0, &after), size);
    EXPECT_EQ(std::string(static_cast<const char*>(after), state.size()), state);
}

TEST_F(Boundary, AccumulatingAndDoubleEntriesDoNothing) {
    std::array<float, 8> samples{};
    samples.fill(0.5f);
    std::array<float*, 2> channels{samples.data(), samples.data()};
    effect.Record().process(&effect.Record(), channels.data(), channels.data(), 8);
    for (const float x : samples) EXPECT_EQ(x, 0.5f);
    std::array<double, 8> wide{};
    wide.fill(0.5);
    std::array<double*, 2> wideChannels{wide.data(), wide.data()};
    effect.Record().processDoubleReplacing(&effect.Record(), wideChannels.data(), wideChannels.data(), 8);
    for (const double x : wide) EXPECT_EQ(x, 0.5);
}

TEST(Instance, CloseAnswersOneAndDestroysTheInstance) {
    CRecordingHost host;
    AEffect* record = (new CDeviceDSP(host.Callback()))->Record();
    EXPECT_EQ(
        record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f), 1); // the leak checker detects the rest
}

TEST(Instance, WorksWithoutAHostCallback) {
    CHostedEffect effect(nullptr);
    EXPECT_TRUE(effect.SetChannels(4, 4));
    effect.Device().SetParam(33, 0.5f, NotifyHost);
    effect.Device().BeginEdit(33);
    effect.Device().EndEdit(33);
    EXPECT_EQ(effect.Get(4), 0.5f);
    std::vector<std::vector<float>> channels(4, std::vector<float>(256, 0.1f));
    effect.Process(channels);
}

TEST(Instance, HostThatAnswersGarbageDoesNoHarm) {
    CRecordingHost host;
    host.answer = [](AEffect*, std::int32_t opcode, std::int32_t, void* pointer, float) -> std::intptr_t {
        if (opcode == audioMasterGetVendorString || opcode == audioMasterGetProductString) {
            std::memset(pointer, 0xFF, 64); // no closing zero, not UTF-8
        }
        return INTPTR_MIN;
    };
    CHostedEffect effect(host.Callback());
    EXPECT_EQ(effect.Device().HostSurvey().vendor.size(), 63u);
    EXPECT_EQ(effect.Device().HostSurvey().version, "0");
    EXPECT_EQ(effect.Dispatch(effGetVstVersion), 2400);
}

TEST(Instance, HostThatCallsBackFromInsideAutomationDoesNoHarm) {
    CRecordingHost host;
    int depth = 0;
    host.answer = [&depth](AEffect* effect, std::int32_t opcode, std::int32_t index, void*,
                      float option) -> std::intptr_t {
        if (opcode == audioMasterAutomate && depth < 3) {
            ++depth;
            effect->setParameter(effect, index, option * 0.5f);
            effect->getParameter(effect, index);
            effect->dispatcher(effect, effSetSampleRate, 0, 0, nullptr, 48000.0f);
            effect->setParameter(effect, 12, 0.0f);
            --depth;
        }
        return 0;
    };
    CHostedEffect effect(host.Callback());
    effect.Device().SetParam(33, 0.8f, NotifyHost);
    EXPECT_EQ(effect.Get(4), 0.4f);
    EXPECT_EQ(effect.Get(12), 0.0f);
}
