#include "tests/tools/kavhost/effects/test_effect.h"

#include "utils/text.h"

#include <array>
#include <cstring>

namespace {

using namespace KAV;

/// A gain without delay that keeps its state in chunks of its own format: four letters, "BANK" or "PROG", and
/// the values. It takes no other bytes. If it is asked for a program past its last one, it crashes, as real
/// effects have done.
class CKeeper final : public Tests::CTestEffect {
public:
    explicit CKeeper(VST::HostCallback host)
        : CTestEffect(host, VST::FourCharacters('t', 'k', 'e', 'p'), Parameters) {
        _record.flags |= VST::effFlagsProgramChunks;
        _record.numPrograms = static_cast<std::int32_t>(_programs.size());
    }

private:
    static constexpr std::size_t Parameters = 3;
    using Values = std::array<float, Parameters>;

    bool TakesChannels(int channels) override { return channels >= 1 && channels <= 16; }
    void Process(float** inputs, float** outputs, std::int32_t frames) override {
        for (int c = 0; c < Channels(); ++c) {
            for (std::int32_t i = 0; i < frames; ++i) outputs[c][i] = inputs[c][i] * _values[0];
        }
    }
    void SetParameter(std::int32_t index, float value) override {
        _values.at(static_cast<std::size_t>(index)) = value;
    }
    float Parameter(std::int32_t index) override { return _values.at(static_cast<std::size_t>(index)); }
    std::string Name() override { return "Test Keeper"; }

    std::intptr_t Answer(
        std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer) override {
        switch (opcode) {
        case VST::effGetChunk:
            std::memcpy(_chunk.data(), index == 0 ? "BANK" : "PROG", 4);
            std::memcpy(_chunk.data() + 4, _values.data(), sizeof _values);
            *static_cast<void**>(pointer) = _chunk.data();
            return static_cast<std::intptr_t>(_chunk.size());
        case VST::effSetChunk:
            if (value != static_cast<std::intptr_t>(_chunk.size()) ||
                std::memcmp(pointer, index == 0 ? "BANK" : "PROG", 4) != 0) {
                return 0;
            }
            std::memcpy(_values.data(), static_cast<const char*>(pointer) + 4, sizeof _values);
            return 1;
        case VST::effSetProgramName:
            _programs[0] = static_cast<const char*>(pointer);
            return 0;
        case VST::effGetProgramName:
            return Give(_programs[0], pointer);
        case VST::effGetProgramNameIndexed:
            return Give(_programs.at(static_cast<std::size_t>(index)), pointer);
        default:
            return 0;
        }
    }
    static std::intptr_t Give(const std::string& text, void* buffer) {
        Utils::CopyText(text, {static_cast<char*>(buffer), VST::kVstMaxProgNameLen});
        return 1;
    }

    Values _values{1, 0, 0};
    std::array<char, 4 + sizeof(Values)> _chunk{};
    std::array<std::string, 3> _programs{"First", "Second", "Third"};
};

} // namespace

KAV_TEST_EXPORT VST::AEffect* VSTPluginMain(VST::HostCallback host) {
    return (new CKeeper(host))->Record();
}
