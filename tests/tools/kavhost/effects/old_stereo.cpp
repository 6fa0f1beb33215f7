#include "tests/tools/kavhost/effects/test_effect.h"

#include <vector>

namespace {

using namespace KAV;

/// An effect from before version 2.4: its entry is called "main", it adds to its outputs, and it has two
/// channels and takes no others. It inverts the signal and delays it by 7 frames without reporting that.
class COldStereo final : public Tests::CTestEffect {
public:
    explicit COldStereo(VST::HostCallback host)
        : CTestEffect(host, VST::FourCharacters('t', 'o', 'l', 'd'), 0) {
        _record.process = _record.processReplacing;
        _record.processReplacing = nullptr;
        _record.flags = 0;
    }

private:
    static constexpr std::size_t Delay = 7;

    void Process(float** inputs, float** outputs, std::int32_t frames) override {
        for (std::int32_t i = 0; i < frames; ++i) {
            for (std::size_t c = 0; c < 2; ++c) {
                outputs[c][i] -= _lines[c][_place];
                _lines[c][_place] = inputs[c][i];
            }
            _place = (_place + 1) % Delay;
        }
    }
    std::string Name() override { return {}; }

    std::vector<std::vector<float>> _lines{2, std::vector<float>(Delay)};
    std::size_t _place = 0;
};

} // namespace

KAV_TEST_EXPORT VST::AEffect* OldEntry(VST::HostCallback host) __asm__("main");
KAV_TEST_EXPORT VST::AEffect* OldEntry(VST::HostCallback host) {
    return (new COldStereo(host))->Record();
}
