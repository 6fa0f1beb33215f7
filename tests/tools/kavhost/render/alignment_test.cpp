#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

/// Soft tones between 100 Hz and a sixth of the rate, with their phases spread.
SAudio SoftTones(int rateHz) {
    SAudio audio{{rateHz, 1, ESampleFormat::Float32}, std::vector<float>(8000)};
    for (std::size_t n = 0; n < audio.samples.size(); ++n) {
        double sum = 0;
        for (int k = 1; 97 * k < rateHz / 6; ++k)
            sum += std::sin(2 * std::numbers::pi * 97 * k * static_cast<double>(n) / rateHz + k * k);
        audio.samples[n] = static_cast<float>(0.001 * sum);
    }
    return audio;
}

/// Sum over the middle of in[n] out[n + lag].
double Product(const SAudio& in, const SAudio& out, std::ptrdiff_t lag) {
    double sum = 0;
    for (std::ptrdiff_t n = 1000; n < 7000; ++n) {
        sum += static_cast<double>(in.samples[static_cast<std::size_t>(n)]) *
               static_cast<double>(out.samples[static_cast<std::size_t>(n + lag)]);
    }
    return sum;
}

} // namespace

TEST(Alignment, LinesTheSoundUpAtTheSteepestFiltersToo) {
    const auto folder = NewFolder();
    // The filters delay the sound by 13.05 frames, and the highest sample of an impulse by 14.
    for (const auto& [rateHz, delay] : {std::pair{44100, 64 + 13}, {48000, 72 + 13}}) {
        const auto in = SoftTones(rateHz);
        WriteWav(folder / "in.wav", in);
        const auto run = RunHost({"render", "-p", Utf8(PluginFile()), "--profile", Utf8(PluginProfile()),
            Utf8(folder / "in.wav"), "-o", Utf8(folder / "out.wav"), "--os", "8", "--hq", "on", "--json"});
        ASSERT_EQ(run.code, 0) << run.errors;
        const auto removed = nlohmann::json::parse(run.out)[0]["delay"];
        EXPECT_EQ(removed["frames"], delay);
        EXPECT_NEAR(removed["exact_frames"].get<double>(), delay + 0.05, 0.01);
        const auto out = ReadWav(folder / "out.wav");
        for (const std::ptrdiff_t lag : {-2, -1, 1, 2})
            EXPECT_GT(Product(in, out, 0), Product(in, out, lag)) << rateHz << " Hz, lag " << lag;
    }
}
