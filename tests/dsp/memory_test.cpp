// How much of the system's memory an instance needs, and when.

#include "dsp/plugin_dsp.h"
#include "tests/support/process_memory.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <vector>

using namespace KAV;

namespace {

using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

/// Sixteen channels of two groups at the highest factor; the same in the first block as in later ones.
class CHost final {
public:
    explicit CHost(std::size_t frames) : _frames(frames), _audio(16, std::vector<float>(frames, 0.5f)) {
        for (auto& channel : _audio) _channels.push_back(channel.data());
    }
    std::unique_ptr<Engine> Build() const {
        auto engine = std::make_unique<Engine>();
        for (std::size_t group = 0; group < 2; ++group) {
            for (int entry = 0; entry < 16; ++entry) {
                engine->routing[group].SetPair(entry, entry, -1);
                engine->parameters.channelInGroup[static_cast<std::size_t>(entry)][group] = true;
            }
            engine->parameters.limiter[group] = true;
        }
        engine->parameters.oversampling = 3;
        engine->SetSampleRate(48000.0f);
        engine->SetBlockSize(static_cast<int>(_frames));
        return engine;
    }
    /// Page faults in the first block, optionally with a crossfade to bypass.
    std::size_t FirstBlock(Engine& engine, bool parallel, bool highQuality) {
        engine.groupsParallel = parallel;
        engine.parameters.highQuality = highQuality;
        engine.hostBypass = true; // it begins with a crossfade
        for (auto& channel : _audio) std::fill(channel.begin(), channel.end(), 0.5f);
        const std::size_t before = Tests::PageFaultsOfThisThread().value_or(0);
        engine.Process(_channels.data(), nullptr, 16, static_cast<int>(_frames));
        return Tests::PageFaultsOfThisThread().value_or(0) - before;
    }

private:
    std::size_t _frames;
    std::vector<std::vector<float>> _audio;
    std::vector<float*> _channels;
};

} // namespace

TEST(EngineMemory, FirstBlockTouchesNoMemoryForTheFirstTime) {
    if (!Tests::PageFaultsOfThisThread()) GTEST_SKIP() << "this system doesn't count a thread's page faults";
    for (const std::size_t frames : {64u, 1024u, 8192u}) {
        CHost host(frames);
        // All engines stay alive, so that none gets memory that another one has touched.
        std::vector<std::unique_ptr<Engine>> engines;
        for (const bool parallel : {false, true}) {
            for (const bool highQuality : {false, true}) {
                host.FirstBlock(*engines.emplace_back(host.Build()), parallel, highQuality); // loads the code
                // A busy system occasionally takes pages away, but not three times in a row.
                std::size_t fewest = std::numeric_limits<std::size_t>::max();
                for (int i = 0; i < 3; ++i) {
                    auto& engine = *engines.emplace_back(host.Build());
                    fewest = std::min(fewest, host.FirstBlock(engine, parallel, highQuality));
                }
                EXPECT_EQ(fewest, 0u)
                    << frames << " frames, parallel " << parallel << ", quality " << highQuality;
            }
        }
    }
}

TEST(EngineMemory, WindowsOfAutomaticGainExistOnlyOnceItIsEnabled) {
    constexpr float Rate = 192000.0f;
    constexpr std::size_t Window = std::size_t{10} * 192000 * sizeof(double); // ten seconds
    const std::size_t before = Tests::ReservedBytes();
    Engine engine;
    engine.SetSampleRate(Rate);
    engine.SetBlockSize(64);
    std::vector<float> samples(64, 0.5f);
    std::array<float*, 1> channels{samples.data()};
    engine.Process(channels.data(), nullptr, 1, 64);
    const std::size_t without = Tests::ReservedBytes();
    EXPECT_LT(without - before, Window);
    engine.SetAutoGainLinks({.enable = true});
    EXPECT_GE(Tests::ReservedBytes() - without, 3 * Window);
}

TEST(EngineMemory, PlaceOfVeryLongBlocksIsTakenOnlyWhenTheyCome) {
    const auto engine = std::make_unique<Engine>();
    const std::size_t before = Tests::ResidentBytes();
    engine->SetBlockSize(Engine::MaxBlockSize);
    constexpr std::size_t Sets = 4; // raised, copies and sums of parallel groups, inputs of a crossfade
    constexpr std::size_t Resident =
        Sets * DSP::CChannelBuffers::Count * DSP::CChannelBuffers::ResidentLength * sizeof(float);
    EXPECT_LT(Tests::ResidentBytes() - before, 2 * Resident);
}
