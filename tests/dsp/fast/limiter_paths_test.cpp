// The limiter's paths compared with each other, sample for sample and bit for bit.

#include "dsp/fast/exact_quotient.h"
#include "dsp/flush_denormals.h"
#include "dsp/lookahead_limiter.h"
#include "tests/dsp/processor_paths.h"

#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

using namespace KAV;
using namespace KAV::DSP;

namespace {

/// Random use of a limiter: one side is always on the plain path, the other on any path, which changes while
/// it runs.
class CSession {
public:
    explicit CSession(unsigned seed) : _random(seed) {}

    void Run(const std::vector<EProcessorPath>& paths) {
        constexpr std::array rates{8000.0, 44100.0, 48000.0, 96000.0, 192000.0, 384000.0, 1536000.0};
        const double rate = rates[_random() % rates.size()];
        for (LookaheadLimiter* limiter : {&_plain, &_subject}) {
            limiter->Reserve(rate);
            limiter->SetRate(rate);
        }
        const std::size_t longest = LookaheadLength(rate) * 3;
        std::size_t channels = 1 + _random() % 16;
        auto path = paths[_random() % paths.size()];
        for (int block = 0; block < 25; ++block) {
            if (Chance(6)) path = paths[_random() % paths.size()];
            if (Chance(8)) channels = 1 + _random() % 16;
            if (block == 0 || Chance(5)) SetParams();
            if (Chance(4)) _kind = static_cast<int>(_random() % 6);
            const std::size_t length = Chance(4) ? 16 * (1 + _random() % 40) : 1 + _random() % longest;
            const bool latch = Chance(3);
            if (latch) _plain.Latch();
            if (latch) _subject.Latch();
            ASSERT_NO_FATAL_FAILURE(RunBlock(channels, length, path));
            ASSERT_EQ(std::bit_cast<std::uint64_t>(_plain.ReportedGain()),
                std::bit_cast<std::uint64_t>(_subject.ReportedGain()));
        }
    }

private:
    bool Chance(unsigned one) { return _random() % one == 0; }
    float Unit() { return static_cast<float>(_random() % 65536) / 32768.0f - 1.0f; }

    void SetParams() {
        const float threshold = Chance(3) ? 1.0f : static_cast<float>(_random() % 100) / 100.0f;
        const float ceiling = Chance(3) ? 1.0f : static_cast<float>(_random() % 100) / 100.0f;
        const float release = Chance(3) ? 0.0f : static_cast<float>(_random() % 100) / 100.0f;
        const bool automatic = Chance(2);
        _plain.SetParams(threshold, ceiling, release, automatic);
        _subject.SetParams(threshold, ceiling, release, automatic);
    }

    float Sample() {
        switch (_kind) {
        case 0: // nothing to limit, whatever the threshold
            return 0.02f * Unit();
        case 1:
            return 4.0f * Unit();
        case 2: // lone peaks
            return _random() % 200 == 0 ? 8.0f * Unit() : 0.01f * Unit();
        case 3: // values that spoil a sound, among other samples
            if (_random() % 300 == 0) {
                return std::array{std::numeric_limits<float>::quiet_NaN(),
                    std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                    std::numeric_limits<float>::max()}[_random() % 4];
            }
            return Unit();
        case 4:
            return 1e-39f * Unit();
        default:
            return 0.75f;
        }
    }

    void RunBlock(std::size_t count, std::size_t length, EProcessorPath path) {
        std::vector<std::vector<float>> plain(count, std::vector<float>(length));
        for (auto& channel : plain) {
            for (float& x : channel) x = Sample();
        }
        auto subject = plain;
        std::vector<float*> plainChannels;
        std::vector<float*> subjectChannels;
        for (auto& channel : plain) plainChannels.push_back(channel.data());
        for (auto& channel : subject) subjectChannels.push_back(channel.data());
        {
            const CFlushDenormals flushing;
            _plain.Process(plainChannels, length, EProcessorPath::Plain);
            _subject.Process(subjectChannels, length, path);
        }
        for (std::size_t c = 0; c < count; ++c) {
            for (std::size_t i = 0; i < length; ++i) {
                if (std::isnan(plain[c][i]) && std::isnan(subject[c][i])) continue;
                ASSERT_EQ(
                    std::bit_cast<std::uint32_t>(plain[c][i]), std::bit_cast<std::uint32_t>(subject[c][i]))
                    << Tests::NameOf(path) << ", channel " << c << " of " << count << ", sample " << i
                    << " of " << length << ": " << plain[c][i] << " and " << subject[c][i];
            }
        }
    }

    std::mt19937 _random;
    LookaheadLimiter _plain;
    LookaheadLimiter _subject;
    int _kind = 1;
};

} // namespace

TEST(LimiterPaths, GiveTheSameBitsHoweverTheyTakeTurns) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_NO_FATAL_FAILURE(CSession(seed).Run(Tests::ProcessorPaths()));
    }
}

TEST(LimiterPaths, ABufferThatComesTwiceIsDrivenTwiceOnAnyPath) {
    for (const auto path : Tests::ProcessorPaths()) {
        LookaheadLimiter limiter;
        limiter.SetParams(0.8f, 1.0f, 0.4f, false); // 6 dB of drive
        std::vector<float> once(300, 0.1f);
        std::array<float*, 2> channels{once.data(), once.data()};
        limiter.Process(channels, 300, path);
        // Driven twice, it leaves the first delay and then passes through the second.
        const double drive = 1.0 / std::pow(10.0, (30.0 * static_cast<double>(0.8f) - 30.0) / 20.0);
        EXPECT_EQ(once[127], 0.0f) << Tests::NameOf(path);
        EXPECT_NEAR(once[128], 0.1 * drive * drive, 1e-6) << Tests::NameOf(path);
    }
}

TEST(LimiterPaths, SettleOnceNothingIsLimitedAndComeBackToLife) {
    // At rest for long enough that the averages are skipped, in a state where rounding has stopped the
    // recovery.
    for (const auto path : Tests::ProcessorPaths()) {
        LookaheadLimiter plain;
        LookaheadLimiter subject;
        for (const bool automatic : {false, true}) {
            plain.SetParams(1.0f, 1.0f, 0.45f, automatic);
            subject.SetParams(1.0f, 1.0f, 0.45f, automatic);
            for (const float level : {3.0f, 0.5f, 3.0f, 0.25f}) {
                std::vector<float> expected(200000, level);
                auto samples = expected;
                std::array<float*, 1> a{expected.data()};
                std::array<float*, 1> b{samples.data()};
                plain.Process(a, expected.size());
                subject.Process(b, samples.size(), path);
                ASSERT_EQ(samples, expected) << Tests::NameOf(path) << (automatic ? ", auto" : "");
            }
        }
    }
}

TEST(ExactQuotient, RoundsAsADivisionForEveryWindowThatOccurs) {
    std::mt19937_64 random(1);
    for (std::size_t lookahead = 64; lookahead <= LookaheadLength(1.6e6 * 8.0); lookahead += 64) {
        const double size = static_cast<double>(lookahead / 2 + 1);
        for (int i = 0; i < 3000; ++i) {
            double sum = static_cast<double>(random() >> 11) * 0x1p-53 * size;
            if (i % 3 == 0) { // next to where the rounding changes
                const double gain = static_cast<double>(random() >> 11) * 0x1p-53;
                sum = std::nextafter(gain * size, i % 2 == 0 ? 0.0 : 2.0 * size);
            }
            ASSERT_EQ(ExactQuotient(sum, size, 1.0 / size), sum / size) << size;
        }
    }
}
