#include "tests/tools/kavhost/effects/test_effect.h"

#include <cmath>

namespace {

using namespace KAV;

/// Plays a tone and ignores its input; it reports a delay of 100 frames.
class CGenerator final : public Tests::CTestEffect {
public:
    explicit CGenerator(VST::HostCallback host)
        : CTestEffect(host, VST::FourCharacters('t', 'g', 'e', 'n'), 0) {
        _record.initialDelay = 100;
    }

private:
    bool TakesChannels(int channels) override { return channels == 1 || channels == 2; }
    void Process(float**, float** outputs, std::int32_t frames) override {
        for (std::int32_t i = 0; i < frames; ++i) {
            const auto tone = static_cast<float>(0.5 * std::sin(0.05 * static_cast<double>(_frame++)));
            for (int c = 0; c < Channels(); ++c) outputs[c][i] = tone;
        }
    }
    std::string Name() override { return "Test Generator"; }

    std::int64_t _frame = 0;
};

} // namespace

KAV_TEST_EXPORT VST::AEffect* VSTPluginMain(VST::HostCallback host) {
    return (new CGenerator(host))->Record();
}
