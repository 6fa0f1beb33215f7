#include "tools/kavhost/target/file_levels.h"

#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/measure/level_meter.h"
#include "tools/kavhost/measure/timeline.h"

#include <algorithm>
#include <cmath>

namespace KAV::Host {

SFileLevels MeasureFile(const std::filesystem::path& file, std::span<const double> weights) {
    CAudioReader reader(file);
    const auto channels = static_cast<std::size_t>(reader.Format().channels);
    SFileLevels levels;
    levels.rateHz = reader.Format().rateHz;
    CLevelMeter meter(weights, levels.rateHz, [&](double lufs) { levels.tenths.push_back(EnergyOf(lufs)); });
    std::vector<float> samples(LoudnessStepFrames(levels.rateHz) * channels);
    for (std::size_t read = samples.size() / channels; read == samples.size() / channels;) {
        CheckInterrupt();
        read = reader.Read(samples);
        const auto block = std::span(samples).first(read * channels);
        meter.Add(block);
        float peak = 0;
        for (const float sample : block) {
            if (std::isfinite(sample)) peak = std::max(peak, std::abs(sample));
        }
        levels.tenthPeaksDb.push_back(Decibels(static_cast<double>(peak)));
        levels.frames += read;
    }
    levels.tenthPeaksDb.resize(levels.tenths.size()); // the last tenth may be a part of one
    const auto result = meter.Levels();
    levels.isMeasured = result.loudnessLufs.has_value();
    levels.truePeakDbtp = result.truePeakDbtp.value_or(result.samplePeakDbfs);
    levels.notFinite = result.notFinite;
    return levels;
}

} // namespace KAV::Host
