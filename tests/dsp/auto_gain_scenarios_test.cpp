// The automatic gain stage on its own, switched on, compared with a plain model of it: the same bits over
// random sessions.

#include "dsp/auto_gain.h"
#include "dsp/flush_denormals.h"
#include "tests/dsp/reference/auto_gain.h"
#include "tests/dsp/reference/random.h"

#include <array>
#include <bit>
#include <gtest/gtest.h>

using namespace KAV;

namespace {

using Channels = Reference::CAutoGain::CChannels;

/// Both stages, and the operations that treat them alike.
class CPair final {
public:
    explicit CPair(std::uint64_t seed) : _random(seed) {
        const float rate = _random.OneOf({8000.0f, 11025.0f, 44100.0f, 48000.0f});
        model.SetRate(rate);
        stage.SetRate(rate);
        stage.Reserve(MaxFrames);
        _channels = static_cast<std::size_t>(_random.Integer(1, 5));
        Choose();
    }

    /// One block; false if the two differ.
    bool Run() {
        if (_random.Chance(0.1)) Choose();
        if (_random.Chance(0.05)) _disabled = !_disabled;
        if (_random.Chance(0.05)) _autoOn = !_autoOn;
        if (_random.Chance(0.05))
            _level = static_cast<float>(_random.OneOf({0.0, 1e-9, 1e-4, 0.02, 0.5, 4.0}));
        if (_random.Chance(0.05))
            _change = static_cast<float>(_random.OneOf({0.05, 0.5, 0.9, 1.0, 1.1, 3.0}));
        if (_random.Chance(0.05)) _position = _modelPosition = static_cast<float>(_random.Unit());
        const auto frames = static_cast<std::size_t>(_random.Integer(1, MaxFrames));
        Channels expected(_channels, std::vector<float>(frames));
        for (auto& channel : expected) {
            for (float& x : channel) x = _random.Signed(_level);
        }
        Channels actual = expected;
        std::array<float*, 16> pointers{};
        for (std::size_t k = 0; k < _channels; ++k) pointers[k] = actual[k].data();
        const auto channels = std::span<float* const>(pointers).first(_channels);
        const DSP::CFlushDenormals flushing;
        model.Prepare(_disabled, _autoOn, expected);
        stage.Prepare(_settings, _disabled, _autoOn, channels, frames);
        if (stage.TakeRefresh() != std::exchange(model.refresh, false)) return false;
        if (!_disabled) {
            std::vector<bool> used(_channels);
            std::array<bool, 16> usedArray{};
            for (std::size_t k = 0; k < _channels; ++k) usedArray[k] = used[k] = _random.Chance(0.9);
            for (auto* side : {&expected, &actual}) { // what the groups do
                for (auto& channel : *side) {
                    for (float& x : channel) x *= _change;
                }
            }
            model.Run(expected, used, _modelPosition);
            stage.Run(
                _settings, channels, std::span<const bool>(usedArray).first(_channels), frames, _position);
        }
        return expected == actual && Same(_position, _modelPosition) && Same(stage.Ratio(), model.ratio) &&
               Same(stage.CorrectedRatio(), model.correctedRatio) && Same(stage.Gain(), model.gain) &&
               stage.IsAdjusting() == (!model.disabled && model.autoOn && model.adjusting);
    }

    Reference::CAutoGain model;
    DSP::AutoGain stage;

private:
    static constexpr int MaxFrames = 64;

    static bool Same(double a, double b) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    }

    void Choose() {
        auto& s = model.settings;
        s.filter = _random.Integer(0, 1);
        s.suspendDb = _random.OneOf({0.0, -60.0, -30.0});
        if (_random.Chance(0.3)) s.rmsTimeMs = _random.OneOf({-5.0, 0.0, 1.0, 3.0, 10.0, 50.0, 600.0, 1e9});
        s.toleranceDb = _random.OneOf({0.0, 1.0, 6.0});
        s.maximumGainDb = _random.OneOf({0.0, 2.0, 20.0});
        s.maximumCutDb = _random.OneOf({1.0, 6.0, 20.0});
        _settings.filter = static_cast<std::uint8_t>(s.filter);
        _settings.suspendLevel = s.suspendDb;
        _settings.rmsTime = s.rmsTimeMs;
        _settings.tolerance = s.toleranceDb;
        _settings.maximumGain = s.maximumGainDb;
        _settings.maximumCut = s.maximumCutDb;
    }

    Reference::CRandom _random;
    DSP::AutoGainSettings _settings;
    std::size_t _channels = 1;
    bool _disabled = false;
    bool _autoOn = true;
    float _level = 0.5f;
    float _change = 1.0f;
    float _position = 0.5f;
    float _modelPosition = 0.5f;
};

} // namespace

TEST(AutoGainScenarios, EqualThePlainModelBitForBit) {
    std::array<int, 6> sums{};
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        CPair pair(seed);
        for (int block = 0; block < 60; ++block)
            ASSERT_TRUE(pair.Run()) << "scenario " << seed << ", block " << block;
        const auto& m = pair.model;
        const std::array<int, 6> counts{
            m.adjusted, m.held, m.clampedUp, m.clampedDown, m.suspended, m.wrapped};
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += counts[i];
    }
    for (const int sum : sums) EXPECT_GT(sum, 1000) << "some branch was taken too rarely";
}
