#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/bench/bench.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace KAV::Host {

namespace {

constexpr double Peak = 0.7; // -3 dBFS
constexpr double NoteSeconds = 0.25;
constexpr int Voices = 3;
constexpr int Partials = 4;
constexpr double Noise = 0.2;
constexpr double BeatsPerSecond = 2;

/// Adds a note that begins at `first` and dies away.
void AddNote(std::span<float> channel, std::size_t first, double frequency, double level, int rateHz,
    CRandom& random) {
    const auto frames = std::min(channel.size() - first, static_cast<std::size_t>(4 * NoteSeconds * rateHz));
    for (int partial = 1; partial <= Partials && partial * frequency < 0.45 * rateHz; ++partial) {
        const double step = 2 * std::numbers::pi * partial * frequency / rateHz;
        const double phase = 2 * std::numbers::pi * random.Unit();
        for (std::size_t i = 0; i < frames; ++i) {
            const double seconds = static_cast<double>(i) / rateHz;
            const double envelope = std::min(1.0, seconds / 0.005) * std::exp(-seconds / NoteSeconds);
            channel[first + i] += static_cast<float>(
                level / partial * envelope * std::sin(phase + step * static_cast<double>(i)));
        }
    }
}

void AddBeats(std::span<float> channel, int rateHz, CRandom& random) {
    for (std::size_t i = 0; i < channel.size(); ++i) {
        const double beats = BeatsPerSecond * static_cast<double>(i) / rateHz;
        const double envelope = 0.1 + std::exp(-8 * (beats - std::floor(beats)));
        channel[i] += static_cast<float>(Noise * envelope * random.Bipolar());
    }
}

void Normalise(CPlanarBuffer& audio) {
    float peak = 0;
    for (std::size_t c = 0; c < audio.Channels(); ++c) {
        for (const float sample : audio.Channel(c)) peak = std::max(peak, std::abs(sample));
    }
    if (peak <= 0) return;
    for (std::size_t c = 0; c < audio.Channels(); ++c) {
        for (float& sample : audio.Channel(c)) sample *= static_cast<float>(Peak) / peak;
    }
}

void MakeLouder(CPlanarBuffer& audio, double gainDb) {
    const auto gain = static_cast<float>(std::pow(10.0, gainDb / 20));
    for (std::size_t c = 0; c < audio.Channels(); ++c) {
        for (float& sample : audio.Channel(c)) sample *= gain;
    }
}

std::size_t FramesOf(double seconds, int rateHz) {
    return std::max<std::size_t>(1, static_cast<std::size_t>(seconds * rateHz));
}

} // namespace

SMaterial MakeMaterial(const SBenchOptions& options) {
    const int rate = options.rateHz;
    SMaterial material{rate, {static_cast<std::size_t>(options.channels), FramesOf(options.seconds, rate)}};
    auto& audio = material.audio;
    CRandom score, performance;
    const auto noteFrames = FramesOf(NoteSeconds, rate);
    for (std::size_t first = 0; first < audio.Frames(); first += noteFrames) {
        for (int voice = 0; voice < Voices; ++voice) {
            const double frequency = 55 * std::exp2(std::floor(36 * score.Unit()) / 12 + voice);
            const double level = 0.3 + 0.7 * score.Unit();
            for (std::size_t c = 0; c < audio.Channels(); ++c) {
                AddNote(audio.Channel(c), first, frequency, level, rate, performance);
            }
        }
    }
    for (std::size_t c = 0; c < audio.Channels(); ++c) AddBeats(audio.Channel(c), rate, performance);
    Normalise(audio);
    MakeLouder(audio, options.gainDb);
    return material;
}

SMaterial ReadMaterial(const SBenchOptions& options) {
    CAudioReader reader(options.input);
    const auto channels = static_cast<std::size_t>(reader.Format().channels);
    std::vector<float> samples(FramesOf(options.seconds, reader.Format().rateHz) * channels);
    samples.resize(reader.Read(samples) * channels);
    if (samples.empty()) throw CFailure(Utf8(options.input) + ": no audio to measure with");
    SMaterial material{reader.Format().rateHz, {channels, samples.size() / channels}};
    material.audio.TakeInterleaved(samples);
    MakeLouder(material.audio, options.gainDb);
    return material;
}

} // namespace KAV::Host
