#include "device/parameter_table.h"

#include "utils/number.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace KAV {

namespace {

using Values = DeviceParameters;
using ToggleSlot = Utils::CShared<bool>;
using Kind = EParameterKind;
using Law = EParameterLaw;

constexpr std::size_t At(int i) {
    return static_cast<std::size_t>(i);
}

constexpr float Off(int, int) {
    return 0.0f;
}
constexpr float On(int, int) {
    return 1.0f;
}
constexpr float Centre(int, int) {
    return 0.5f;
}
constexpr float Full(int, int) {
    return 1.0f;
}

constexpr SParameterRow ToggleRow(std::int32_t firstTag, int count, bool perGroup, std::string_view name,
    float (*initial)(int, int), ToggleSlot& (*slot)(Values&, int, int)) {
    return {firstTag, count, perGroup, name, Kind::Toggle, "", {}, Law::Linear, 0.0, 1.0, initial, slot,
        nullptr, nullptr};
}

/// A continuous parameter whose text shows its real value.
constexpr SParameterRow LinearRow(std::int32_t firstTag, int count, bool perGroup, std::string_view name,
    std::string_view unit, int decimals, double minimum, double maximum, float (*initial)(int, int),
    DSP::SValueTriple& (*slot)(Values&, int, int)) {
    return {firstTag, count, perGroup, name, Kind::Continuous, unit,
        {maximum - minimum, minimum, decimals, true}, Law::Linear, minimum, maximum, initial, nullptr,
        nullptr, slot};
}

constexpr auto Rows = std::to_array<SParameterRow>({
    LinearRow(32, 1, true, "Input Gain", "dB", 1, -20.0, 0.0, Full,
        [](Values& v, int, int g) -> DSP::SValueTriple& { return v.inputGain[At(g)]; }),
    LinearRow(33, 1, true, "Threshold", "dB", 1, -30.0, 0.0, Full,
        [](Values& v, int, int g) -> DSP::SValueTriple& { return v.threshold[At(g)]; }),
    ToggleRow(35, 1, true, "Auto Release", Off,
        [](Values& v, int, int g) -> ToggleSlot& { return v.autoRelease[At(g)]; }),
    ToggleRow(34, 1, true, "Limiter", On, //
        [](Values& v, int, int g) -> ToggleSlot& { return v.limiter[At(g)]; }),
    // The text that hosts show for the release has always been linear, although the engine's curve is
    // exponential. It stays so, because users have written automation by that text.
    {36, 1, true, "Release", Kind::Continuous, "ms", {999.99, 0.01, 2, false}, Law::Exponential, 0.01, 1000.0,
        [](int, int) { return 0.4f; }, nullptr, nullptr,
        [](Values& v, int, int g) -> DSP::SValueTriple& { return v.release[At(g)]; }},
    LinearRow(37, 1, true, "Output Ceiling", "dB", 1, -30.0, 0.0, Full,
        [](Values& v, int, int g) -> DSP::SValueTriple& { return v.ceiling[At(g)]; }),
    ToggleRow(
        1, 16, true, "ToolCh", [](int n, int g) { return n < 2 && g == 0 ? 1.0f : 0.0f; },
        [](Values& v, int n, int g) -> ToggleSlot& { return v.channelInGroup[At(n)][At(g)]; }),
    ToggleRow(
        17, 4, false, "ToolBtnFx", [](int n, int) { return n == 0 ? 1.0f : 0.0f; },
        [](Values& v, int n, int) -> ToggleSlot& { return v.groupButton[At(n)]; }),
    ToggleRow(21, 1, true, "ToolFxSolo", Off, //
        [](Values& v, int, int g) -> ToggleSlot& { return v.solo[At(g)]; }),
    ToggleRow(22, 1, true, "ToolFxMute", Off, //
        [](Values& v, int, int g) -> ToggleSlot& { return v.mute[At(g)]; }),
    {30, 1, false, "Oversampling", Kind::Selector, "", {}, Law::Linear, 0.0, 3.0, Off, nullptr,
        [](Values& v) -> Utils::CShared<std::int32_t>& { return v.oversampling; }, nullptr},
    ToggleRow(31, 1, false, "Hiqh Quality", Off, //
        [](Values& v, int, int) -> ToggleSlot& { return v.highQuality; }),
    LinearRow(29, 1, false, "Main Output Gain", "dB", 1, -24.0, 24.0, Centre,
        [](Values& v, int, int) -> DSP::SValueTriple& { return v.mainOutputGain; }),
    LinearRow(23, 1, false, "Main Input Gain", "dB", 1, -24.0, 24.0, Centre,
        [](Values& v, int, int) -> DSP::SValueTriple& { return v.mainInputGain; }),
    LinearRow(FirstMacroTag, 5, false, "Macro ", "%", 0, -100.0, 100.0, Centre,
        [](Values& v, int n, int) -> DSP::SValueTriple& { return v.macro[At(n)]; }),
});

constexpr int Copies(const SParameterRow& row) {
    return row.perGroup ? DeviceGroups : 1;
}

constexpr std::size_t CountParameters() {
    std::size_t count = 0;
    for (const auto& row : Rows) count += At(row.count * Copies(row));
    return count;
}

static_assert(CountParameters() == At(HostParameters),
    "hosts keep automation by index: rows may be added at the end only");

/// The numbering in both directions, and the row of each tag.
struct SIndex {
    std::array<std::int32_t, At(HostParameters)> tags{};
    std::array<std::int32_t, At(HighestTag) + 1> hostIndexes{};
    std::array<SParameter, At(HighestTag) + 1> parameters{};
};

constexpr SIndex BuildIndex() {
    SIndex index;
    index.hostIndexes.fill(NoHostIndex);
    std::int32_t next = 0;
    for (const auto& row : Rows) {
        for (int n = 0; n < row.count; ++n) {
            for (int g = 0; g < Copies(row); ++g) {
                const std::int32_t tag = row.firstTag + n + GroupTagStep * g;
                index.tags[At(next)] = tag;
                index.hostIndexes[At(tag)] = next++;
                index.parameters[At(tag)] = {&row, n, g};
            }
        }
    }
    return index;
}

constexpr SIndex Index = BuildIndex();

constexpr std::array<std::string_view, 4> Oversamplings{"OS x1", "OS x2", "OS x4", "OS x8"};

bool IsTag(std::int32_t tag) noexcept {
    return tag >= 0 && tag <= HighestTag;
}

/// Builds a short text piece by piece; whatever doesn't fit is dropped.
template<std::size_t CAPACITY>
class CTextBuilder final {
public:
    CTextBuilder& operator<<(std::string_view piece) noexcept {
        const std::size_t length = std::min(piece.size(), CAPACITY - _length);
        std::copy_n(piece.begin(), length, _text.begin() + static_cast<std::ptrdiff_t>(_length));
        _length += length;
        return *this;
    }
    CTextBuilder& operator<<(int number) noexcept {
        std::array<char, 12> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return *this << std::string_view(digits.data(), end);
    }
    std::string_view Text() const noexcept { return {_text.data(), _length}; }

private:
    std::array<char, CAPACITY> _text{};
    std::size_t _length = 0;
};

} // namespace

std::span<const SParameterRow> ParameterRows() noexcept {
    return Rows;
}

std::span<const std::int32_t> HostParamTable() noexcept {
    return Index.tags;
}

std::int32_t HostIndexOf(std::int32_t tag) noexcept {
    return IsTag(tag) ? Index.hostIndexes[At(tag)] : NoHostIndex;
}

SParameter FindParameter(std::int32_t tag) noexcept {
    return IsTag(tag) ? Index.parameters[At(tag)] : SParameter{};
}

void WriteParameterName(const SParameter& parameter, std::span<char> text) noexcept {
    CTextBuilder<TagNameCapacity> name;
    name << parameter.row->name;
    if (parameter.row->count > 1) name << parameter.place + 1;
    if (parameter.row->perGroup) name << " (" << parameter.group + 1 << ")";
    Utils::CopyText(name.Text(), text);
}

void WriteParameterDisplay(
    const SParameter& parameter, DeviceParameters& values, std::span<char> text) noexcept {
    const SParameterRow& row = *parameter.row;
    if (row.kind == Kind::Toggle) {
        Utils::CopyText(row.toggle(values, parameter.place, parameter.group) ? "On" : "Off", text);
        return;
    }
    if (row.kind == Kind::Selector) {
        Utils::CopyText(Oversamplings[At(row.selector(values))], text);
        return;
    }
    const double position =
        static_cast<double>(float{row.continuous(values, parameter.place, parameter.group).final});
    const auto shown = static_cast<float>(row.display.scale * position + row.display.offset);
    std::array<char, Utils::DecimalCapacity> digits{};
    CTextBuilder<Utils::DecimalCapacity + 1> display;
    display << (row.display.plusSign && shown > 0.0f ? "+" : "")
            << Utils::FormatDecimal(shown, row.display.decimals, digits);
    Utils::CopyText(display.Text(), text);
}

std::span<const std::string_view> OversamplingTexts() noexcept {
    return Oversamplings;
}

void InitialiseParameters(DeviceParameters& values) noexcept {
    for (const auto& row : Rows) {
        for (int n = 0; n < row.count; ++n) {
            for (int g = 0; g < Copies(row); ++g) {
                const float initial = row.initial(n, g);
                switch (row.kind) {
                case Kind::Toggle:
                    row.toggle(values, n, g) = initial != 0.0f;
                    break;
                case Kind::Selector:
                    row.selector(values) = static_cast<std::int32_t>(initial);
                    break;
                case Kind::Continuous:
                    row.continuous(values, n, g).SetBase(initial);
                    break;
                }
            }
        }
    }
}

} // namespace KAV
