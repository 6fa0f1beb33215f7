#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/speaker_layout.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <numbers>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

/// The values of a key of ffmpeg's loudness meter, tenth of a second by tenth.
std::vector<double> MeteredByFfmpeg(const std::string& file, const std::string& key) {
    const auto command = "ffmpeg -nostdin -v error -i '" + file +
                         "' -af ebur128=metadata=1,ametadata=mode=print:key=lavfi.r128." + key +
                         ":file=- -f null -";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::vector<double> values;
    char line[256];
    while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
        const std::string_view text(line);
        if (const auto place = text.find("r128." + key + "="); place != std::string_view::npos)
            values.push_back(std::strtod(line + place + 5 + key.size() + 1, nullptr));
    }
    return values;
}

nlohmann::json LevelsOf(const std::string& file) {
    const auto run = RunHost(
        {"render", "-p", Utf8(EffectFile("fader")), file, "-o", file + ".out.wav", "--no-align", "--json"});
    EXPECT_EQ(run.code, 0) << run.errors;
    return nlohmann::json::parse(run.out).at(0).at("before");
}

} // namespace

TEST(AgainstFfmpeg, LoudnessAgreesFromMonoTo51) {
    const auto folder = NewFolder();
    for (const char* layout :
        {"mono", "stereo", "2.1", "3.0", "quad", "quad(side)", "5.0", "5.0(side)", "5.1", "5.1(side)"}) {
        const auto mask = *MaskOf(layout);
        auto audio = Noise(std::popcount(mask), 24000, 0.3f);
        audio.format.mask = mask;
        const auto channels = static_cast<std::size_t>(audio.format.channels);
        for (std::size_t i = 0; i < audio.samples.size(); ++i) // louder to the last channel
            audio.samples[i] *= static_cast<float>(i % channels + 1) / static_cast<float>(channels);
        const auto file = Utf8(folder / "in.wav");
        WriteWav(folder / "in.wav", audio);
        const auto metered = MeteredByFfmpeg(file, "I");
        ASSERT_FALSE(metered.empty()) << layout;
        EXPECT_NEAR(LevelsOf(file)["loudness_lufs"].get<double>(), metered.back(), 0.1) << layout;
    }
}

TEST(AgainstFfmpeg, RangeAndLoudestMomentsAgree) {
    const auto folder = NewFolder();
    auto audio = Noise(2, 48000 * 12, 0.5f);
    for (std::size_t i = 0; i < audio.samples.size(); ++i) {
        const double seconds = static_cast<double>(i / 2) / 48000;
        const double swell = 0.55 + 0.45 * std::sin(2 * std::numbers::pi * seconds / 9);
        audio.samples[i] *= static_cast<float>(swell * swell);
    }
    WriteWav(folder / "in.wav", audio);
    const auto file = Utf8(folder / "in.wav");
    const auto levels = LevelsOf(file);
    EXPECT_NEAR(
        levels["highest_momentary_lufs"].get<double>(), std::ranges::max(MeteredByFfmpeg(file, "M")), 0.1);
    EXPECT_NEAR(
        levels["highest_short_term_lufs"].get<double>(), std::ranges::max(MeteredByFfmpeg(file, "S")), 0.1);
    EXPECT_NEAR(levels["loudness_range_lu"].get<double>(), MeteredByFfmpeg(file, "LRA").back(), 0.2);
}
