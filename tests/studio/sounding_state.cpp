#include "tests/studio/sounding_state.h"

#include "utils/shared.h"
#include "utils/turn.h"

#include <bit>
#include <functional>
#include <utility>

namespace KAV::Tests {

namespace {

/// Each is a number of single precision: switches, selectors, tags and positions all fit.
struct SWord {
    std::string name;
    std::function<float(CDeviceDSP&)> read;
    std::function<void(CDeviceDSP&, float)> write;
};

template<typename T>
float Read(const Utils::CShared<T>& word) {
    return static_cast<float>(T{word});
}

template<typename T>
void Write(Utils::CShared<T>& word, float value) {
    word = static_cast<T>(value);
}

/// `find` returns the shared word of a device.
template<typename TFind>
SWord Plain(std::string name, TFind find) {
    return {std::move(name), [find](CDeviceDSP& device) { return Read(find(device)); },
        [find](CDeviceDSP& device, float value) { Write(find(device), value); }};
}

void AddParameter(std::vector<SWord>& words, const SParameter& parameter) {
    std::array<char, TagNameCapacity> text{};
    WriteParameterName(parameter, text);
    const std::string name = text.data();
    const auto& row = *parameter.row;
    switch (row.kind) {
    case EParameterKind::Toggle:
        words.push_back(Plain(
            name, [&row, parameter ](CDeviceDSP & device) -> auto& {
                return row.toggle(device.parameters, parameter.place, parameter.group);
            }));
        break;
    case EParameterKind::Selector:
        words.push_back(Plain(
            name, [&row](CDeviceDSP & device) -> auto& { return row.selector(device.parameters); }));
        break;
    case EParameterKind::Continuous: {
        // The value that is heard follows from these two.
        const auto triple = [&row, parameter ](CDeviceDSP & device) -> auto& {
            return row.continuous(device.parameters, parameter.place, parameter.group);
        };
        words.push_back({name, [triple](CDeviceDSP& device) { return Read(triple(device).base); },
            [triple](CDeviceDSP& device, float value) { triple(device).SetBase(value); }});
        words.push_back({"what macros add to " + name,
            [triple](CDeviceDSP& device) { return Read(triple(device).offset); },
            [triple](CDeviceDSP& device, float value) { triple(device).SetOffset(value); }});
        break;
    }
    }
}

std::vector<SWord> MakeWords() {
    std::vector<SWord> words;
    for (const std::int32_t tag : HostParamTable()) AddParameter(words, FindParameter(tag));
    words.push_back(Plain(
        "vector code", [](CDeviceDSP & device) -> auto& { return device.simd; }));
    words.push_back(Plain(
        "groups in parallel", [](CDeviceDSP & device) -> auto& { return device.groupsParallel; }));
    words.push_back(Plain(
        "several solos", [](CDeviceDSP & device) -> auto& { return device.severalSolos; }));
    words.push_back(Plain(
        "host bypass", [](CDeviceDSP & device) -> auto& { return device.hostBypass; }));
    words.push_back(Plain(
        "current group", [](CDeviceDSP & device) -> auto& { return device.currentGroup; }));
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            const auto name = "slot " + std::to_string(slot + 1) + " of macro " + std::to_string(macro + 1);
            words.push_back(Plain(
                name, [ macro, slot ](CDeviceDSP & device) -> auto& { return device.tags[macro][slot]; }));
            words.push_back(Plain(
                "sensitivity of " + name,
                [ macro, slot ](CDeviceDSP & device) -> auto& { return device.sensitivities[macro][slot]; }));
        }
    }
    return words;
}

const std::vector<SWord>& Words() {
    static const auto words = MakeWords();
    return words;
}

} // namespace

SSoundingState SoundingStateOf(CDeviceDSP& device) {
    const Utils::CTurn turn(device.State().Turns());
    SSoundingState state;
    const auto& words = Words();
    state.words.reserve(words.size());
    for (const auto& word : words) state.words.push_back(std::bit_cast<std::uint32_t>(word.read(device)));
    for (int group = 0; group < DeviceGroups; ++group)
        state.routings[static_cast<std::size_t>(group)] = device.State().GetRouting(group);
    return state;
}

const std::string& WordName(std::size_t word) {
    return Words().at(word).name;
}

void WriteWord(CDeviceDSP& device, std::size_t word, std::uint32_t bits) {
    Words().at(word).write(device, std::bit_cast<float>(bits));
}

} // namespace KAV::Tests
