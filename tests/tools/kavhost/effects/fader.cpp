#include "tests/tools/kavhost/effects/test_effect.h"
#include "utils/number.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace KAV;

/// A gain with several traps for hosts: it delays by 64 frames and reports 256, fades in over a quarter of a
/// second, and calls the host from inside its entry.
class CFader final : public Tests::CTestEffect {
public:
    explicit CFader(VST::HostCallback host)
        : CTestEffect(host, VST::FourCharacters('t', 'f', 'a', 'd'), Parameters) {
        _record.initialDelay = 256;
        host(&_record, VST::audioMasterAutomate, Gain, 0, nullptr, 0.5f);
        if (host(&_record, VST::audioMasterGetBlockSize, 0, 0, nullptr, 0) <= 0) _record.initialDelay = -1;
    }

private:
    enum EParameter { Gain, Mode, Time, Switch, Slow, Parameters };
    static constexpr std::size_t Delay = 64;

    void SetRate(double rate) override { _fadeFrames = rate / 4; }
    void Activate() override {
        _frame = 0;
        _lines.assign(static_cast<std::size_t>(Channels()), std::vector<float>(Delay));
        _place = 0;
    }
    bool TakesChannels(int channels) override { return channels >= 1 && channels <= 16; }

    void Process(float** inputs, float** outputs, std::int32_t frames) override {
        if (_values[Slow] >= 0.5f) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const double gain = std::pow(10.0, (48 * static_cast<double>(_values[Gain]) - 24) / 20);
        for (std::int32_t i = 0; i < frames; ++i) {
            const double fade = std::min(1.0, static_cast<double>(_frame++) / _fadeFrames);
            for (std::size_t c = 0; c < _lines.size(); ++c) {
                const float late = std::exchange(_lines[c][_place], inputs[c][i]);
                outputs[c][i] = static_cast<float>(static_cast<double>(late) * gain * fade);
                inputs[c][i] = 99; // an effect may use its inputs as scratch
            }
            _place = (_place + 1) % Delay;
        }
    }

    void SetParameter(std::int32_t index, float value) override {
        _values.at(static_cast<std::size_t>(index)) = value;
    }
    float Parameter(std::int32_t index) override { return _values.at(static_cast<std::size_t>(index)); }
    std::string Name() override { return "Test Fader"; }
    std::string ParameterName(std::int32_t index) override {
        return std::array{"Gain", "Mode", "Time", "Switch", "Slow"}.at(static_cast<std::size_t>(index));
    }
    std::string ParameterLabel(std::int32_t index) override {
        return std::array{"dB", "", "ms", "", ""}.at(static_cast<std::size_t>(index));
    }
    std::string ParameterDisplay(std::int32_t index) override {
        const float value = Parameter(index);
        std::array<char, Utils::DecimalCapacity> buffer{};
        switch (index) {
        case Gain:
            return std::string(Utils::FormatDecimal(48 * value - 24, 1, buffer));
        case Mode:
            return std::array{"Soft", "Medium", "Hard"}.at(static_cast<std::size_t>(value * 2 + 0.5f));
        case Time:
            return std::string(Utils::FormatDecimal(1000 - 999.99f * value, 2, buffer)); // falls
        case Switch:
            return std::array{"1", "2", "4", "8"}.at(static_cast<std::size_t>(value * 3 + 0.5f));
        default:
            return value >= 0.5f ? "On" : "Off";
        }
    }

    std::array<float, Parameters> _values{0.5f, 0, 0.5f, 0, 0};
    double _fadeFrames = 11025;
    std::int64_t _frame = 0;
    std::vector<std::vector<float>> _lines{2, std::vector<float>(Delay)};
    std::size_t _place = 0;
};

} // namespace

KAV_TEST_EXPORT VST::AEffect* VSTPluginMain(VST::HostCallback host) {
    if (host(nullptr, VST::audioMasterVersion, 0, 0, nullptr, 0) == 0) return nullptr;
    return (new CFader(host))->Record();
}
