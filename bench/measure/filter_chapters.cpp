#include "bench/measure/chapters.h"
#include "bench/measure/meters.h"
#include "dsp/biquad_cascade.h"
#include "tools/kavhost/measure/delay.h"

#include <array>
#include <cmath>
#include <ostream>
#include <stdexcept>

namespace KAV::Measure {

namespace {

struct SPair {
    const char* name;
    std::size_t order;
    double corner; ///< relative to the base Nyquist frequency
    bool highQuality;
};
constexpr std::array Pairs{SPair{"standard", 4, 0.9, false}, SPair{"high quality", 32, 0.99, true}};

/// The frequency, relative to base Nyquist, at which the response is -3.01 dB, found by bisection.
double Corner(const std::vector<float>& impulse, int factor) {
    double low = 0.5;
    double high = 1.0;
    for (int i = 0; i < 40; ++i) {
        const double middle = (low + high) / 2.0;
        (Response(impulse, middle * 0.5 / factor) > std::sqrt(0.5) ? low : high) = middle;
    }
    return low;
}

/// Where the largest output sample of an impulse is.
double ImpulseDelay(const SSettings& settings) {
    CRig rig(settings, 1);
    Audio audio(1, std::vector<float>(4096));
    audio[0][100] = 0.01f;
    rig.Run(audio);
    std::size_t peak = 0;
    for (std::size_t i = 0; i < audio[0].size(); ++i) {
        if (std::fabs(audio[0][i]) > std::fabs(audio[0][peak])) peak = i;
    }
    return static_cast<double>(peak) - 100.0;
}

/// The lag at which noise that has passed the engine correlates most with itself.
double SoundDelay(const SSettings& settings) {
    constexpr double peak = 0.01;
    const auto noise = Host::DelayNoise(static_cast<double>(settings.rateHz), peak);
    CRig rig(settings, 1);
    Audio audio(1, noise);
    audio[0].resize(noise.size() + 1000);
    rig.Run(audio);
    const auto match = Host::FindSignal(noise, audio[0]);
    if (!match) throw std::runtime_error("the noise is not in the output");
    return match->exactLag;
}

} // namespace

void FilterResponses(std::ostream& out) {
    out << R"(## Oversampling filters

The table shows the response of one filter, calculated from its impulse response in plain arithmetic. There are two
filters, for up-sampling and down-sampling. A signal passes both, so the attenuation in dB is twice these figures.
Frequencies are relative to the base Nyquist frequency: 1 is 24 kHz at 48 kHz. A frequency f between 1 and 2 appears at
2 - f at the base rate.

| pair | factor | at 0.5, dB | at 0.8, dB | corner (-3.01 dB) | at 1, dB | at 1.1, dB | at 1.5, dB |
|---|---|---|---|---|---|---|---|
)";
    for (const auto& pair : Pairs) {
        for (const int factor : {2, 4, 8}) {
            DSP::BiquadCascade cascade(pair.order);
            cascade.Design(pair.corner * 0.5 / factor);
            std::vector<float> impulse(1 << 16);
            impulse[0] = 1.0f;
            float* const channel = impulse.data();
            cascade.Process(std::span<float* const>(&channel, 1), impulse.size());
            const auto at = [&](double part) { return Db(Response(impulse, part * 0.5 / factor)); };
            out << "| " << pair.name << " | " << factor << " | " << at(0.5) << " | " << at(0.8) << " | "
                << Corner(impulse, factor) << " | " << at(1.0) << " | " << at(1.1) << " | " << at(1.5)
                << " |\n";
        }
    }
    out << R"(
Figures below about -140 dB show only that the impulse response is rounded to single precision.

)";
}

void Delays(std::ostream& out) {
    out << R"(## Delay

Noise between 50 Hz and a sixth of the rate, with peaks at -40 dB, passes the engine. The delay is the lag at which output
and input correlate most. kavhost aligns files by this delay, rounded. The highest sample of an impulse may be a sample
later, because the filters delay frequencies near their corner by more. The look-ahead is the delay that the plug-in
reports to the host, divided by the factor. The plug-in doesn't report the delay of the filters.

| rate, kHz | pair | factor | look-ahead, samples | measured, samples | of the filters | impulse, samples |
|---|---|---|---|---|---|---|
)";
    for (const float rateHz : {48000.0f, 44100.0f}) {
        for (const auto& pair : Pairs) {
            for (const int factor : {1, 2, 4, 8}) {
                const SSettings settings{.rateHz = rateHz, .factor = factor, .highQuality = pair.highQuality};
                const double lookahead = CRig(settings, 1).LookaheadDelay();
                const double measured = SoundDelay(settings);
                const double ofFilters = factor == 1 ? 0.0 : measured - lookahead; // there are none at 1
                out << "| " << rateHz / 1000.0f << " | " << pair.name << " | " << factor << " | " << lookahead
                    << " | " << measured << " | " << ofFilters << " | " << ImpulseDelay(settings) << " |\n";
            }
        }
    }
    out << '\n';
}

} // namespace KAV::Measure
