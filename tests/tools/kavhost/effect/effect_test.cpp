#include "tools/kavhost/effect/effect.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/effect/effect_library.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr SStream Stream{48000, 64};

std::string OpenError(const std::filesystem::path& file) {
    try {
        const CEffectLibrary library(file);
        const CEffect effect(library, Stream);
    } catch (const CFailure& failure) {
        return failure.what();
    }
    return "no error";
}

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(EffectLibrary, ReportsWhyAFileIsNotAnEffect) {
    const auto folder = NewFolder();
    std::ofstream(folder / "text.so") << "no library";
    EXPECT_TRUE(Contains(OpenError(folder / "missing.so"), "missing.so: no such file"));
    EXPECT_TRUE(Contains(OpenError(folder), ": not a file"));
    EXPECT_TRUE(Contains(OpenError(folder / "text.so"), "text.so: cannot be loaded as a library: "));
    EXPECT_TRUE(Contains(OpenError(EffectFile("no_entry")), ": not a VST 2 effect: no entry"));
    EXPECT_TRUE(Contains(
        OpenError(EffectFile("returns_null")), ": not a VST 2 effect: its entry point returned nothing"));
    EXPECT_TRUE(Contains(
        OpenError(EffectFile("wrong_mark")), ": not a VST 2 effect: its record lacks the magic number"));
}

TEST(Effect, ReportsItsProperties) {
    const CEffectLibrary library(EffectFile("fader")); // it calls the host from inside its entry
    const CEffect effect(library, Stream);
    EXPECT_EQ(effect.Name(), "Test Fader");
    EXPECT_EQ(effect.Vendor(), "Tests");
    EXPECT_EQ(effect.VstVersion(), 2400);
    EXPECT_EQ(effect.Parameters(), 5);
    EXPECT_EQ(effect.ParameterName(0), "Gain");
    EXPECT_EQ(effect.ParameterDisplay(0), "0.0");
    EXPECT_EQ(effect.ParameterLabel(0), "dB");
    EXPECT_EQ(effect.ReportedDelay(), 256);
}

TEST(Effect, ChangesItsChannelsWhenItCan) {
    const CEffectLibrary library(EffectFile("fader"));
    for (const int channels : {1, 2, 3, 16}) {
        CEffect effect(library, Stream);
        effect.SetChannels(channels);
        EXPECT_EQ(effect.Inputs(), channels);
        EXPECT_EQ(effect.Outputs(), channels);
    }
}

TEST(Effect, OfAFixedSizeTakesOnlyThatSize) {
    const CEffectLibrary library(EffectFile("old_stereo"));
    CEffect effect(library, Stream);
    effect.SetChannels(2);
    for (const int channels : {0, 1, 3, 17, 1000}) {
        try {
            effect.SetChannels(channels);
            FAIL() << channels;
        } catch (const CFailure& failure) {
            EXPECT_TRUE(Contains(failure.what(), "unsupported channel count: ")) << failure.what();
            EXPECT_TRUE(Contains(failure.what(), "(it has 2 in, 2 out)")) << failure.what();
        }
    }
}

TEST(Effect, BeforeVersion24IsFoundByItsOldEntryAndAddsIntoSilence) {
    const CEffectLibrary library(EffectFile("old_stereo"));
    CEffect effect(library, Stream);
    EXPECT_EQ(effect.Name(), "old_stereo"); // it has no name of its own
    effect.Start();
    CPlanarBuffer in(2, 64), out(2, 64);
    in.Channel(0)[0] = 0.5f;
    out.Channel(0)[7] = 9; // left over from before
    effect.Process(in.Pointers(), out.Pointers(), 64);
    EXPECT_EQ(out.Channel(0)[7], -0.5f);
    EXPECT_EQ(out.Channel(1)[7], 0.0f);
}

TEST(HostCallback, AnswersForTheStreamOfEachEffect) {
    const auto ask = [](VST::AEffect* effect, std::int32_t opcode) {
        return HostCallback(effect, opcode, 0, 0, nullptr, 0);
    };
    VST::AEffect first{}, second{};
    RememberEffect(&first, {44100, 128});
    RememberEffect(&second, {96000, 1024});
    EXPECT_EQ(ask(&first, VST::audioMasterGetSampleRate), 44100);
    EXPECT_EQ(ask(&second, VST::audioMasterGetSampleRate), 96000);
    EXPECT_EQ(ask(&second, VST::audioMasterGetBlockSize), 1024);
    ForgetEffect(&first);
    ForgetEffect(&second);
}

TEST(HostCallback, AnswersAnUnknownEffectForTheOneThatIsBeingMade) {
    auto* const unknown =
        reinterpret_cast<VST::AEffect*>(std::uintptr_t{8}); // would crash if it were dereferenced
    EXPECT_EQ(HostCallback(unknown, VST::audioMasterAutomate, 0, 0, nullptr, 0.5f), 0);
    {
        const SStream stream{88200, 256};
        const CEntryScope scope(stream);
        EXPECT_EQ(HostCallback(nullptr, VST::audioMasterGetSampleRate, 0, 0, nullptr, 0), 88200);
        EXPECT_EQ(HostCallback(unknown, VST::audioMasterGetBlockSize, 0, 0, nullptr, 0), 256);
    }
    EXPECT_GT(HostCallback(unknown, VST::audioMasterGetSampleRate, 0, 0, nullptr, 0), 0);
}

TEST(HostCallback, ReportsTheHost) {
    std::array<char, 64> text{};
    EXPECT_EQ(HostCallback(nullptr, VST::audioMasterVersion, 0, 0, nullptr, 0), 2400);
    EXPECT_EQ(HostCallback(nullptr, VST::audioMasterGetProductString, 0, 0, text.data(), 0), 1);
    EXPECT_STREQ(text.data(), "kavhost");
    EXPECT_EQ(HostCallback(nullptr, VST::audioMasterGetVendorString, 0, 0, nullptr, 0), 0);
    char feature[] = "sizeWindow";
    EXPECT_EQ(HostCallback(nullptr, VST::audioMasterCanDo, 0, 0, feature, 0), 0);
    EXPECT_EQ(HostCallback(nullptr, 9999, 0, 0, nullptr, 0), 0);
}
