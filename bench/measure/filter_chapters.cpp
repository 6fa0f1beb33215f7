#include "bench/measure/chapters.h"
#include "bench/measure/meters.h"
#include "dsp/biquad_cascade.h"

#include <array>
#include <cmath>
#include <ostream>

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

} // namespace

void FilterResponses(std::ostream& out) {
    out << R"(## Oversampling filters

The response of one filter (there are two, for up-sampling and down-sampling), from its impulse response in plain
arithmetic. Frequencies are relative to the base Nyquist frequency: 1 is 24 kHz at 48 kHz. A frequency f between 1
and 2 appears at 2 - f at the base rate. A signal passes both filters, so the attenuation in dB is twice these
figures.

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

An impulse at -40 dB through the engine at 48 kHz; the delay is the position of the largest output sample. The
look-ahead is the delay that the host is given, divided by the factor. The delay of the filters is not reported to the
host.

| pair | factor | look-ahead, samples | measured, samples | of the filters |
|---|---|---|---|---|
)";
    for (const auto& pair : Pairs) {
        for (const int factor : {1, 2, 4, 8}) {
            CRig rig({.factor = factor, .highQuality = pair.highQuality}, 1);
            Audio audio(1, std::vector<float>(4096));
            audio[0][100] = 0.01f;
            rig.Run(audio);
            std::size_t peak = 0;
            for (std::size_t i = 0; i < audio[0].size(); ++i) {
                if (std::fabs(audio[0][i]) > std::fabs(audio[0][peak])) peak = i;
            }
            const double measured = static_cast<double>(peak) - 100.0;
            out << "| " << pair.name << " | " << factor << " | " << rig.LookaheadDelay() << " | " << measured
                << " | " << measured - rig.LookaheadDelay() << " |\n";
        }
    }
    out << '\n';
}

} // namespace KAV::Measure
