#include "tests/dsp/reference/scenario.h"

#include "tests/dsp/reference/flush_scope.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace KAV::Reference {
namespace {

constexpr std::uint64_t ScenarioCount = 700;

/// An engine with one fault: each call passes through a hook that a test may replace.
class CAlteredEngine final : public IEngine {
public:
    std::function<float(float)> rate = [](float value) { return value; };
    std::function<void(SSettings&)> settings = [](SSettings&) {};
    std::function<void(float* const*, int, int)> sound = [](float* const*, int, int) {};
    std::function<int(int)> latency = [](int value) { return value; };
    std::function<double(double)> gain = [](double value) { return value; };
    std::function<float(int, float)> meter = [](int, float value) { return value; };
    bool takesLatch = true;
    bool slices = true;
    bool restoresFlush = true;

    void SetSampleRate(float value) override { _engine.SetSampleRate(rate(value)); }
    void SetBlockSize(int frames) override { _engine.SetBlockSize(slices ? frames : 100000); }
    void Apply(const SSettings& given) override {
        SSettings altered = given;
        settings(altered);
        _engine.Apply(altered);
    }
    void Process(float* const* channels, int channelCount, int frames) override {
        _engine.Process(channels, channelCount, frames);
        if (channels == nullptr || channelCount <= 0 || frames <= 0) return;
        sound(channels, channelCount, frames);
        if (!restoresFlush) WriteFlushBits(FlushBits);
    }
    int GetLatency() override { return latency(_engine.GetLatency()); }
    double ReportedGain(int group) override { return gain(_engine.ReportedGain(group)); }
    float Meter(int tag) override { return meter(tag, _engine.Meter(tag)); }
    void SetLatch(int group) override {
        if (takesLatch) _engine.SetLatch(group);
    }

private:
    CCoverage _coverage;
    std::unique_ptr<IEngine> _owned = MakeReferenceEngine(_coverage);
    IEngine& _engine = *_owned;
};

/// The differences that the first 60 scenarios find for a fault; empty if none of them noticed it.
std::string Noticed(const std::function<void(CAlteredEngine&)>& plant) {
    CCoverage coverage;
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        const std::unique_ptr<IEngine> reference = MakeReferenceEngine(coverage);
        CAlteredEngine subject;
        plant(subject);
        const SRunResult result = RunScenario(seed, *reference, subject);
        if (!result.equal) return result.difference;
    }
    return {};
}

TEST(ReferenceScenario, MeetsEveryCaseTwentyTimesAndAgreesWithItself) {
    CCoverage coverage;
    CCoverage unused;
    for (std::uint64_t seed = 1; seed <= ScenarioCount; ++seed) {
        const std::unique_ptr<IEngine> first = MakeReferenceEngine(coverage);
        const std::unique_ptr<IEngine> second = MakeReferenceEngine(unused);
        const SRunResult result = RunScenario(seed, *first, *second);
        ASSERT_TRUE(result.equal) << result.difference;
    }
    EXPECT_TRUE(coverage.UncoveredBelow(20).empty()) << coverage.Table();
}

TEST(ReferenceScenario, NamesThePlaceOfTheFirstDifference) {
    const std::string text = Noticed([](CAlteredEngine& engine) {
        engine.sound = [](float* const* channels, int, int) { channels[0][0] = 0.75f; };
    });
    EXPECT_EQ(text.rfind("scenario 1, block 0, channel 0, sample 0 of ", 0), 0u) << text;
    EXPECT_NE(text.find("subject 0x1.8p-1"), std::string::npos) << text;
}

TEST(ReferenceScenario, NoticesTheLastBitOfOneSample) {
    int blocks = 0;
    const std::string text = Noticed([&blocks](CAlteredEngine& engine) {
        engine.sound = [&blocks](float* const* channels, int channelCount, int frames) {
            float& sample = channels[channelCount - 1][frames - 1];
            if (++blocks == 500) sample = std::nextafter(sample, 10.0f);
        };
    });
    EXPECT_NE(text, "");
}

TEST(ReferenceScenario, NoticesTheSignOfAZero) {
    EXPECT_NE(Noticed([](CAlteredEngine& engine) {
        engine.sound = [](float* const* channels, int, int frames) {
            for (int i = 0; i < frames; ++i) channels[0][i] += 0.0f;
        };
    }),
        "");
}

TEST(ReferenceScenario, NoticesAWritePastTheBlock) {
    EXPECT_NE(Noticed([](CAlteredEngine& engine) {
        engine.sound = [](float* const* channels, int, int frames) { channels[0][frames] = 0.0f; };
    }),
        "");
}

TEST(ReferenceScenario, TakesOneNanForAnother) {
    EXPECT_EQ(Noticed([](CAlteredEngine& engine) {
        engine.sound = [](float* const* channels, int, int frames) {
            for (int i = 0; i < frames; ++i) {
                if (std::isnan(channels[0][i])) channels[0][i] = -std::numeric_limits<float>::quiet_NaN();
            }
        };
    }),
        "");
}

TEST(ReferenceScenario, NoticesLatencyGainMetersAndControlWord) {
    EXPECT_NE(Noticed([](CAlteredEngine& engine) {
        engine.latency = [](int value) { return value == 256 ? 255 : value; };
    }),
        "");
    EXPECT_NE(Noticed([](CAlteredEngine& engine) {
        engine.gain = [](double value) { return value < 1.0 ? std::nextafter(value, 1.0) : value; };
    }),
        "");
    EXPECT_NE(Noticed([](CAlteredEngine& engine) { engine.restoresFlush = false; }), "");
    for (const int altered : {-4, -23, -24, -55}) {
        EXPECT_NE(Noticed([altered](CAlteredEngine& engine) {
            engine.meter = [altered](int tag, float value) {
                return tag == altered && value > 0.0f ? std::nextafter(value, 0.0f) : value;
            };
        }),
            "")
            << altered;
    }
}

TEST(ReferenceScenario, NoticesACallThatIsNotHeeded) {
    EXPECT_NE(Noticed([](CAlteredEngine& engine) { engine.takesLatch = false; }), "");
    EXPECT_NE(Noticed([](CAlteredEngine& engine) { engine.slices = false; }), "");
    EXPECT_NE(Noticed([](CAlteredEngine& engine) {
        engine.rate = [](float value) { return std::nextafter(value, 1.0f); };
    }),
        "");
}

/// One setting that is read wrongly.
class ReferenceScenarioSetting : public testing::TestWithParam<void (*)(SSettings&)> {};

TEST_P(ReferenceScenarioSetting, IsNoticedWhenReadWrongly) {
    EXPECT_NE(Noticed([](CAlteredEngine& engine) { engine.settings = GetParam(); }), "");
}

INSTANTIATE_TEST_SUITE_P(All, ReferenceScenarioSetting,
    testing::Values([](SSettings& s) { s.channelInGroup[5][3] = false; },
        [](SSettings& s) { s.solo[1] = false; }, [](SSettings& s) { s.mute[2] = false; },
        [](SSettings& s) { s.inputGain[3] = std::nextafter(s.inputGain[3], 0.5f); },
        [](SSettings& s) { s.threshold[2] = std::nextafter(s.threshold[2], 0.5f); },
        [](SSettings& s) { s.release[1] = std::nextafter(s.release[1], 0.5f); },
        [](SSettings& s) { s.ceiling[0] = std::nextafter(s.ceiling[0], 0.5f); },
        [](SSettings& s) { s.autoRelease[3] = false; }, [](SSettings& s) { s.limiter[2] = true; },
        [](SSettings& s) { s.mainInput = std::nextafter(s.mainInput, 0.25f); },
        [](SSettings& s) { s.mainOutput = std::nextafter(s.mainOutput, 0.25f); },
        [](SSettings& s) { s.hostBypass = false; }, [](SSettings& s) { s.groupsParallel = false; },
        [](SSettings& s) { s.map[1][3][1] = -1; }, [](SSettings& s) { s.type[2] = 0; },
        [](SSettings& s) { s.oversampling = s.oversampling == 3 ? 2 : s.oversampling; },
        [](SSettings& s) { s.highQuality = false; }, [](SSettings& s) { s.editedGroup = 0; }));

} // namespace
} // namespace KAV::Reference
