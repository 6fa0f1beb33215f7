#include "tests/dsp/reference/flush_scope.h"
#include "tests/dsp/reference/frame.h"
#include "tests/dsp/reference/scenario.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace KAV::Reference {

namespace {

constexpr std::size_t GuardLength = 8;
constexpr float GuardValue = 12345.678f;

bool SameSample(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

bool SameGain(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::string Hex(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}

/// The sound of one engine, with a guard after each channel that no engine may write to.
class CHostBuffers final {
public:
    explicit CHostBuffers(const std::vector<std::vector<float>>& audio) : _audio(audio) {
        for (std::vector<float>& channel : _audio) {
            channel.insert(channel.end(), GuardLength, GuardValue);
            _pointers.push_back(channel.data());
        }
    }

    /// Returns the flush bits the engine left behind.
    unsigned int Run(IEngine& engine, const SHostBlock& block) {
        const int count = static_cast<int>(_pointers.size());
        const unsigned int before = ReadFlushBits();
        WriteFlushBits(block.flushedHost ? FlushBits : 0u);
        if (block.emptyCalls) {
            engine.Process(nullptr, count, block.frames);
            engine.Process(_pointers.data(), 0, block.frames);
            engine.Process(_pointers.data(), count, 0);
            engine.Process(_pointers.data(), count, -1);
        }
        engine.Process(_pointers.data(), count, block.frames);
        const unsigned int after = ReadFlushBits();
        WriteFlushBits(before);
        return after;
    }

    const std::vector<float>& Channel(std::size_t k) const { return _audio[k]; }

private:
    std::vector<std::vector<float>> _audio;
    std::vector<float*> _pointers;
};

void Prepare(IEngine& engine, const SHostBlock& block) {
    if (block.rate) engine.SetSampleRate(*block.rate);
    if (block.announced) engine.SetBlockSize(*block.announced);
    engine.Apply(block.settings);
    for (int g = 0; g < 4; ++g) {
        if (block.latch[static_cast<std::size_t>(g)]) engine.SetLatch(g);
    }
}

std::string CompareLatency(IEngine& reference, IEngine& subject) {
    const int expected = reference.GetLatency();
    const int actual = subject.GetLatency();
    if (expected == actual) return {};
    return "latency: reference " + std::to_string(expected) + ", subject " + std::to_string(actual);
}

std::string CompareGains(IEngine& reference, IEngine& subject) {
    for (int g = 0; g < 4; ++g) {
        const double expected = reference.ReportedGain(g);
        const double actual = subject.ReportedGain(g);
        if (SameGain(expected, actual)) continue;
        return "reported gain of group " + std::to_string(g) + ": reference " + Hex(expected) + ", subject " +
               Hex(actual);
    }
    return {};
}

std::string CompareMeters(IEngine& reference, IEngine& subject) {
    for (int tag = -4; tag >= -55; --tag) {
        const float expected = reference.Meter(tag);
        const float actual = subject.Meter(tag);
        if (SameSample(expected, actual)) continue;
        return "meter " + std::to_string(tag) + ": reference " + Hex(static_cast<double>(expected)) +
               ", subject " + Hex(static_cast<double>(actual));
    }
    return {};
}

std::string CompareSound(
    const CHostBuffers& reference, const CHostBuffers& subject, const SHostBlock& block) {
    for (std::size_t k = 0; k < block.audio.size(); ++k) {
        const std::vector<float>& expected = reference.Channel(k);
        const std::vector<float>& actual = subject.Channel(k);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (SameSample(expected[i], actual[i])) continue;
            std::ostringstream text;
            text << "channel " << k << ", sample " << i << " of " << block.frames << ": reference "
                 << Hex(static_cast<double>(expected[i])) << ", subject "
                 << Hex(static_cast<double>(actual[i]));
            return text.str();
        }
    }
    return {};
}

std::string RunBlock(const SHostBlock& block, IEngine& reference, IEngine& subject) {
    Prepare(reference, block);
    Prepare(subject, block);
    if (std::string text = CompareLatency(reference, subject); !text.empty()) {
        return "before the block, " + text;
    }
    CHostBuffers expected(block.audio);
    CHostBuffers actual(block.audio);
    expected.Run(reference, block);
    if (actual.Run(subject, block) != (block.flushedHost ? FlushBits : 0u)) {
        return "the host's flush-to-zero and denormals-are-zero bits were not restored";
    }
    if (std::string text = CompareSound(expected, actual, block); !text.empty()) return text;
    if (std::string text = CompareLatency(reference, subject); !text.empty()) return text;
    if (std::string text = CompareMeters(reference, subject); !text.empty()) return text;
    return CompareGains(reference, subject);
}

} // namespace

SRunResult RunScenario(std::uint64_t seed, IEngine& reference, IEngine& subject) {
    CScenario scenario(seed);
    for (int number = 0; !scenario.IsOver(); ++number) {
        const std::string difference = RunBlock(scenario.Next(), reference, subject);
        if (difference.empty()) continue;
        const std::string place = "scenario " + std::to_string(seed) + ", block " + std::to_string(number);
        return {false, place + ", " + difference};
    }
    return {};
}

std::unique_ptr<IEngine> MakeReferenceEngine(CCoverage& coverage) {
    return std::make_unique<CFrame>(coverage);
}

} // namespace KAV::Reference
