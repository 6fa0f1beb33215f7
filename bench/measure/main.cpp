// Measures the engine as an engineer would and writes the result as Markdown: kav_measure MUSIC OUTPUT.

#include "bench/measure/chapters.h"
#include "tools/kavhost/audio/audio_file.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iomanip>

using namespace KAV::Measure;

namespace {

/// Ten seconds from the middle of a file.
Audio Middle(KAV::Host::CAudioReader& file) {
    const auto channels = static_cast<std::size_t>(file.Format().channels);
    const auto wanted = static_cast<std::size_t>(file.Format().rateHz) * 10;
    const auto frames = static_cast<std::size_t>(file.Frames());
    const std::size_t skipped = frames > wanted ? (frames - wanted) / 2 : 0;
    std::vector<float> interleaved(channels * (skipped + wanted));
    const std::size_t read = file.Read(interleaved);
    Audio audio(channels, std::vector<float>(read - skipped));
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < audio[c].size(); ++i)
            audio[c][i] = interleaved[(skipped + i) * channels + c];
    }
    return audio;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 3) {
            std::fputs("kav_measure MUSIC OUTPUT\n", stderr);
            return 2;
        }
        KAV::Host::CAudioReader file(argv[1]);
        const auto music = Middle(file);
        std::ofstream out(argv[2]);
        out << std::fixed << std::setprecision(3) << R"(# Measurements

This page shows what the engine does, measured from outside. `bench/measure/run` writes it. The figures are those of the
algorithm, good or bad. Input and output are single precision, at 48 kHz unless stated otherwise.

)";
        StepResponse(out);
        ReleaseTimes(out);
        Distortion(out);
        FilterResponses(out);
        Delays(out);
        Peaks(out, music, static_cast<float>(file.Format().rateHz));
        Speed(out);
        out.close();
        if (!out) throw std::runtime_error("the output can't be written");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kav_measure: %s\n", error.what());
        return 1;
    }
}
