#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

using Json = nlohmann::json;

/// What kavhost reports of sounds that it has run through an effect.
class Figures : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    SRun RunOn(const SAudio& audio, std::vector<std::string> arguments) {
        WriteWav(_folder / "in.wav", audio);
        arguments.insert(arguments.begin(), {"render", Path("in.wav"), "-o", Path("out.wav")});
        return RunHost(arguments);
    }

    /// Through an effect that only has a gain.
    Json OfFader(const SAudio& audio, const std::vector<std::string>& more = {}) {
        return Parsed(RunOn(audio, With({"-p", Utf8(EffectFile("fader")), "--json"}, more)));
    }

    /// Through the limiter.
    Json OfLimiter(const SAudio& audio, const std::vector<std::string>& more) {
        return Parsed(RunOn(audio, With(Limiter(), With({"--json"}, more))));
    }

    static std::vector<std::string> Limiter() {
        return {"-p", Utf8(PluginFile()), "--profile", Utf8(PluginProfile())};
    }

    static std::vector<std::string> With(
        std::vector<std::string> arguments, const std::vector<std::string>& more) {
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    static Json Parsed(const SRun& run) {
        EXPECT_EQ(run.code, 0) << run.errors;
        return run.code == 0 ? Json::parse(run.out).at(0) : Json();
    }

    std::filesystem::path _folder = NewFolder();
};

/// A sine in one channel whose level in dBFS depends on the time.
SAudio Tone(int rateHz, double hertz, double seconds, const std::function<double(double)>& levelDb) {
    SAudio audio{{rateHz, 1, ESampleFormat::Float32}, {}};
    for (int n = 0; n < seconds * rateHz; ++n) {
        const double time = static_cast<double>(n) / rateHz;
        audio.samples.push_back(static_cast<float>(
            std::pow(10, levelDb(time) / 20) * std::sin(2 * std::numbers::pi * hertz * time)));
    }
    return audio;
}

double Power(double decibels) {
    return std::pow(10, decibels / 10);
}

constexpr double SineLoudness = -3.01; // of a sine of 997 Hz at full scale in one channel

} // namespace

TEST_F(Figures, HaveTheMakeUpGainAndHowMuchTheLimiterTookAway) {
    // The threshold of -12 dB makes everything up to there 12 dB louder. In the second second the tone is
    // 5 dB above it.
    const auto tone = Tone(48000, 1000, 3, [](double time) { return time >= 1 && time < 2 ? -7.0 : -30.0; });
    const auto report = OfLimiter(tone, {"--set", "Threshold (1)=-12", "--set", "Release (1)=10 ms"});
    ASSERT_EQ(report["makeup_gain_db"].size(), 1u);
    EXPECT_NEAR(report["makeup_gain_db"][0].get<double>(), 12, 0.02);
    const auto& reduction = report["reduction"];
    EXPECT_NEAR(reduction["largest_db"].get<double>(), 5, 0.1);
    EXPECT_GE(reduction["largest_frame"].get<int>(), 48000 - 480);
    EXPECT_LT(reduction["largest_frame"].get<int>(), 2 * 48000 + 480);
    EXPECT_NEAR(reduction["over_1_db"].get<double>(), 1.0 / 3, 0.02);
    EXPECT_NEAR(reduction["over_3_db"].get<double>(), 1.0 / 3, 0.02);
    EXPECT_EQ(reduction["over_6_db"], 0.0);
    EXPECT_NEAR(report["gain"]["lowest_db"].get<double>(), 12 - 5, 0.1);
}

TEST_F(Figures, CountTheTimeOverEachStepByItself) {
    // 2, 4 and 7 dB above the threshold, a second each, and one below it.
    const auto tone = Tone(48000, 1000, 4, [](double time) {
        constexpr double levels[] = {-30, -10, -8, -5};
        return levels[static_cast<std::size_t>(time)];
    });
    const auto run =
        RunOn(tone, With(Limiter(), {"--set", "Threshold (1)=-12", "--set", "Release (1)=10 ms"}));
    EXPECT_NE(run.out.find("  make-up gain          +12.0"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("  largest reduction     7.0"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(" dB at 0:03."), std::string::npos) << run.out;
    const auto report = OfLimiter(tone, {"--set", "Threshold (1)=-12", "--set", "Release (1)=10 ms"});
    EXPECT_NEAR(report["reduction"]["over_1_db"].get<double>(), 3.0 / 4, 0.02);
    EXPECT_NEAR(report["reduction"]["over_3_db"].get<double>(), 2.0 / 4, 0.02);
    EXPECT_NEAR(report["reduction"]["over_6_db"].get<double>(), 1.0 / 4, 0.02);
}

TEST_F(Figures, CallNoGainAReductionThatAnEffectAlwaysHas) {
    const auto report = OfFader(Noise(2, 48000, 0.5f), {"--set", "0:-6"});
    for (const auto& gain : report["makeup_gain_db"]) EXPECT_NEAR(gain.get<double>(), -6, 0.001);
    EXPECT_EQ(report["makeup_gain_db"].size(), 2u);
    EXPECT_LT(report["reduction"]["largest_db"].get<double>(), 0.001);
}

TEST_F(Figures, HaveNoGainsOfAFileThatIsNotAligned) {
    const auto report = OfFader(Noise(2, 48000, 0.5f), {"--no-align"});
    EXPECT_TRUE(report["makeup_gain_db"].is_null());
    EXPECT_TRUE(report["reduction"].is_null());
    EXPECT_TRUE(report["gain"].is_null());
    EXPECT_TRUE(report["after"]["sample_peak_dbfs"].is_number());
}

TEST_F(Figures, HaveTheLoudestMomentAndTheLoudestThreeSeconds) {
    const auto tone = Tone(8000, 997, 9, [](double time) { return time >= 4 && time < 4.4 ? -10.0 : -30.0; });
    const auto report = OfFader(tone, {"--set", "0:-6"});
    const double ofThree = 10 * std::log10((Power(-10) * 0.4 + Power(-30) * 2.6) / 3);
    for (const auto& [when, gain] : {std::pair{"before", 0.0}, {"after", -6.0}}) {
        const auto& levels = report[when];
        EXPECT_NEAR(levels["highest_momentary_lufs"].get<double>(), -10 + SineLoudness + gain, 0.1) << when;
        EXPECT_NEAR(levels["highest_short_term_lufs"].get<double>(), ofThree + SineLoudness + gain, 0.1);
    }
}

TEST_F(Figures, HaveTheLoudnessRange) {
    const auto tone = Tone(8000, 997, 24, [](double time) { return time < 12 ? -20.0 : -30.0; });
    const auto report = OfFader(tone, {"--no-align"});
    EXPECT_NEAR(report["before"]["loudness_range_lu"].get<double>(), 10, 0.5);
    EXPECT_NEAR(report["after"]["loudness_range_lu"].get<double>(), 10, 0.5);
}

TEST_F(Figures, LeaveOutWhatAFileIsTooShortFor) {
    const auto second = OfFader(Tone(48000, 997, 1, [](double) { return -10.0; }), {"--no-align"})["before"];
    EXPECT_NEAR(second["highest_momentary_lufs"].get<double>(), -13, 0.1);
    EXPECT_TRUE(second["highest_short_term_lufs"].is_null());
    EXPECT_TRUE(second["loudness_range_lu"].is_null());
    const auto moment =
        OfFader(Tone(48000, 997, 0.3, [](double) { return -10.0; }), {"--no-align"})["before"];
    EXPECT_TRUE(moment["highest_momentary_lufs"].is_null());
    const auto silence =
        OfFader(Tone(48000, 997, 1, [](double) { return -1000.0; }), {"--no-align"})["before"];
    EXPECT_TRUE(silence["loudness_lufs"].is_null());
    EXPECT_TRUE(silence["highest_momentary_lufs"].is_null());
}

TEST_F(Figures, OfARateWithoutLoudnessHaveTheRest) {
    auto audio = Noise(1, 10, 0.5f);
    audio.format.rateHz = 8; // the library needs 16 Hz
    const auto levels = OfFader(audio, {"--no-align", "--no-preroll"})["before"];
    EXPECT_TRUE(levels["loudness_lufs"].is_null());
    EXPECT_TRUE(levels["highest_momentary_lufs"].is_null());
    EXPECT_TRUE(levels["sample_peak_dbfs"].is_number());
    EXPECT_TRUE(levels["true_peak_dbtp"].is_number());
}

TEST_F(Figures, WeighChannelsByTheirSpeakers) {
    // BS.1770: the sum over the channels of weight times power. Behind is 1 wherever there are sides.
    constexpr double s = 1.41;
    struct SCase {
        std::uint32_t mask;
        std::vector<double> weights;
        const char* layout;
    };
    for (const auto& [mask, weights, layout] :
        {SCase{0x70F, {1, 1, 1, 0, 1, s, s}, "6.1"}, SCase{0x63F, {1, 1, 1, 0, 1, 1, s, s}, "7.1"},
            SCase{0x2D63F, {1, 1, 1, 0, 1, 1, s, s, 1, 1, 1, 1}, "7.1.4"},
            SCase{0x13F, {1, 1, 1, 0, s, s, 1}, "6.1(back)"}}) {
        const auto channels = weights.size();
        SAudio audio{{48000, static_cast<int>(channels), ESampleFormat::Float32, mask}, {}};
        double power = 0;
        std::vector<double> amplitudes;
        for (std::size_t c = 0; c < channels; ++c) {
            amplitudes.push_back(0.02 * static_cast<double>((5 * c + 3) % 11 + 1)); // each another
            power += weights[c] * amplitudes[c] * amplitudes[c] / 2;
        }
        for (int n = 0; n < 48000; ++n) {
            const double sine = std::sin(2 * std::numbers::pi * 997 * n / 48000);
            for (const double amplitude : amplitudes)
                audio.samples.push_back(static_cast<float>(amplitude * sine));
        }
        const auto report = OfFader(audio, {"--no-align"});
        EXPECT_NEAR(report["before"]["loudness_lufs"].get<double>(), 10 * std::log10(power), 0.03) << layout;
        EXPECT_NEAR(report["after"]["loudness_lufs"].get<double>(), 10 * std::log10(power), 0.03) << layout;
        EXPECT_EQ(report["loudness_weights"]["channels"], weights);
        EXPECT_EQ(report["loudness_weights"]["from"], "mask");
        EXPECT_EQ(report["loudness_weights"]["layout"], layout);
    }
}

TEST_F(Figures, WeighChannelsByTheRoutingWhereThereIsNoMask) {
    WriteBytes(_folder / "film.kvt",
        "<kav_input_routing>\n\t<kvt_version>1.0</kvt_version>\n\t<name>F</name>\n"
        "\t<map>0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1</map>\n"
        "\t<ch_names>L|*|C|*|R|*|Ls|*|Rs|*|LFE</ch_names>\n</kav_input_routing>\n");
    auto audio = Noise(6, 24000, 0.1f);
    const auto usual = OfLimiter(audio, {"--no-align"});
    EXPECT_EQ(usual["loudness_weights"]["channels"], (std::vector<double>{1, 1, 1, 0, 1.41, 1.41}));
    EXPECT_EQ(usual["loudness_weights"]["from"], "usual");
    const auto routed = OfLimiter(audio, {"--no-align", "--routing", Path("film.kvt")});
    EXPECT_EQ(routed["loudness_weights"]["channels"], (std::vector<double>{1, 1, 1, 1.41, 1.41, 0}));
    EXPECT_EQ(routed["loudness_weights"]["from"], "routing");
    EXPECT_EQ(routed["loudness_weights"]["layout"], "L C R Ls Rs LFE");
    const auto given =
        OfLimiter(audio, {"--no-align", "--routing", Path("film.kvt"), "--layout", "5.1(side)"});
    EXPECT_EQ(given["loudness_weights"]["from"], "mask");
    const auto text = RunOn(audio, With(Limiter(), {"--no-align", "--routing", Path("film.kvt")})).out;
    EXPECT_NE(text.find("loudness weights      no speaker mask; by the routing: L C R Ls Rs LFE\n"),
        std::string::npos)
        << text;
}

TEST_F(Figures, SayByHowMuchSamplesWereClipped) {
    // Half a dB and 6 dB above full scale, of 16 bits.
    SAudio audio{{48000, 1, ESampleFormat::Float32}, std::vector<float>(1000, 0.25f)};
    audio.samples[10] = static_cast<float>(std::pow(10, 0.5 / 20));
    audio.samples[20] = -2.0f;
    audio.samples[30] = 1.0f; // a step beyond the highest number, not more
    const auto run = RunOn(audio, {"-p", Utf8(EffectFile("fader")), "--format", "16"});
    EXPECT_NE(run.out.find("clipped samples       2, by up to 6.02 dB\n"), std::string::npos) << run.out;
    const auto report = OfFader(audio, {"--format", "16"});
    EXPECT_EQ(report["clipped"], 2);
    EXPECT_NEAR(report["clipped_by_db"].get<double>(), 20 * std::log10(2), 1e-6);
    EXPECT_EQ(report["clipped_by_steps"], 32768.0);
    audio.samples[10] = audio.samples[20] = 1 + 0.5f / 32768;
    const auto little = RunOn(audio, {"-p", Utf8(EffectFile("fader")), "--format", "16"});
    EXPECT_NE(little.out.find("clipped samples       2, by up to 1.5 steps of 16 bits\n"), std::string::npos)
        << little.out;
    EXPECT_EQ(OfFader(audio)["clipped"], 0); // single precision clips nothing
}

TEST_F(Figures, AreLeftOutOnRequest) {
    auto audio = Noise(2, 30000, 0.5f);
    audio.samples[7] = std::nanf("");
    const auto measured = OfFader(audio);
    const auto measuredBytes = BytesOf(_folder / "out.wav");
    const auto report = OfFader(audio, {"--no-measure"});
    EXPECT_EQ(BytesOf(_folder / "out.wav"), measuredBytes);
    for (const char* when : {"before", "after"}) {
        EXPECT_EQ(report[when]["not_finite"], 1);
        for (const char* level : {"sample_peak_dbfs", "true_peak_dbtp", "loudness_lufs", "loudness_range_lu",
                 "highest_momentary_lufs", "highest_short_term_lufs"}) {
            ASSERT_TRUE(report[when].contains(level)) << level;
            EXPECT_TRUE(report[when][level].is_null()) << level;
        }
    }
    for (const char* gone : {"gain", "makeup_gain_db", "reduction", "loudness_weights"})
        EXPECT_TRUE(report.at(gone).is_null()) << gone;
    EXPECT_EQ(report["delay"], measured["delay"]);
    EXPECT_EQ(report["frames"], 30000);
    const auto text = RunOn(audio, {"-p", Utf8(EffectFile("fader")), "--no-measure"}).out;
    EXPECT_EQ(text.find("dBFS"), std::string::npos) << text;
    EXPECT_NE(text.find(" times real time\n"), std::string::npos) << text;
    for (const char* plot : {"--plot", "--plot-data"})
        EXPECT_EQ(
            RunOn(audio, {"-p", Utf8(EffectFile("fader")), "--no-measure", plot, Path("plot.csv")}).code, 2);
}

TEST_F(Figures, HaveTheSpeedOfTheWholeJob) {
    // This effect takes at least 5 ms for each of the 36 blocks of silence before the file, which has three.
    const auto report =
        OfFader(Noise(1, 3 * 4096, 0.5f), {"--set", "4:on", "--block", "4096", "--no-align", "--no-measure"});
    const double seconds = 3 * 4096 / 48000.0 / report["real_time_factor"].get<double>();
    EXPECT_GT(seconds, 36 * 0.005);
}
