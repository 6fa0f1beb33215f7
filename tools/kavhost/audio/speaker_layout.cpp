#include "tools/kavhost/audio/speaker_layout.h"

#include "tools/kavhost/base/text.h"

#include <array>
#include <charconv>

namespace KAV::Host {

namespace {

using namespace Speakers;

/// By bit.
constexpr std::array<std::string_view, 18> SpeakerNames{"FL", "FR", "FC", "LFE", "BL", "BR", "FLC", "FRC",
    "BC", "SL", "SR", "TC", "TFL", "TFC", "TFR", "TBL", "TBC", "TBR"};

constexpr std::uint32_t Stereo = FrontLeft | FrontRight;
constexpr std::uint32_t Front = Stereo | FrontCentre;
constexpr std::uint32_t Back = BackLeft | BackRight;
constexpr std::uint32_t Side = SideLeft | SideRight;
constexpr std::uint32_t OfCentre = FrontLeftOfCentre | FrontRightOfCentre;
constexpr std::uint32_t TopFront = TopFrontLeft | TopFrontRight;
constexpr std::uint32_t TopBack = TopBackLeft | TopBackRight;

struct SLayout {
    std::string_view name;
    std::uint32_t mask;
};

/// The names are those of the usual command-line tools. Of two names of a mask the first is shown.
constexpr std::array Layouts{
    SLayout{"mono", FrontCentre},
    SLayout{"stereo", Stereo},
    SLayout{"2.1", Stereo | Lfe},
    SLayout{"3.0", Front},
    SLayout{"3.0(back)", Stereo | BackCentre},
    SLayout{"3.1", Front | Lfe},
    SLayout{"4.0", Front | BackCentre},
    SLayout{"quad", Stereo | Back},
    SLayout{"quad(side)", Stereo | Side},
    SLayout{"4.1", Front | Lfe | BackCentre},
    SLayout{"5.0", Front | Back},
    SLayout{"5.0(side)", Front | Side},
    SLayout{"5.1", Front | Lfe | Back},
    SLayout{"5.1(side)", Front | Lfe | Side},
    SLayout{"6.0", Front | BackCentre | Side},
    SLayout{"6.0(front)", Stereo | OfCentre | Side},
    SLayout{"hexagonal", Front | Back | BackCentre},
    SLayout{"6.1", Front | Lfe | BackCentre | Side},
    SLayout{"6.1(back)", Front | Lfe | Back | BackCentre},
    SLayout{"6.1(front)", Stereo | Lfe | OfCentre | Side},
    SLayout{"7.0", Front | Back | Side},
    SLayout{"7.0(front)", Front | OfCentre | Side},
    SLayout{"7.1", Front | Lfe | Back | Side},
    SLayout{"7.1(wide)", Front | Lfe | Back | OfCentre},
    SLayout{"7.1(wide-side)", Front | Lfe | OfCentre | Side},
    SLayout{"octagonal", Front | Back | BackCentre | Side},
    SLayout{"cube", Stereo | Back | TopFront | TopBack},
    SLayout{"5.1.2", Front | Lfe | Back | TopFront},
    SLayout{"5.1.2(side)", Front | Lfe | Side | TopFront},
    SLayout{"5.1.4", Front | Lfe | Back | TopFront | TopBack},
    SLayout{"5.1.4(side)", Front | Lfe | Side | TopFront | TopBack},
    SLayout{"7.1.2", Front | Lfe | Back | Side | TopFront},
    SLayout{"7.1.4", Front | Lfe | Back | Side | TopFront | TopBack},
    SLayout{"lcr", Front},
    SLayout{"lcrs", Front | BackCentre},
    SLayout{"7.1(top)", Front | Lfe | Back | TopFront},
    SLayout{"unspecified", 0},
};

/// The set of speakers whose names are joined by "+".
std::optional<std::uint32_t> MaskOfSpeakers(std::string_view text) noexcept {
    std::uint32_t mask = 0;
    for (;;) {
        const auto name = Trim(text.substr(0, text.find('+')));
        std::uint32_t bit = 0;
        for (std::size_t i = 0; i < SpeakerNames.size(); ++i) {
            if (EqualIgnoringCase(SpeakerNames[i], name)) bit = 1u << i;
        }
        if (bit == 0 || (mask & bit) != 0) return std::nullopt;
        mask |= bit;
        if (text.find('+') == std::string_view::npos) return mask;
        text.remove_prefix(text.find('+') + 1);
    }
}

} // namespace

bool IsMaskNumber(std::string_view text) noexcept {
    return text == "0" || (text.size() > 2 && EqualIgnoringCase(text.substr(0, 2), "0x"));
}

std::optional<std::uint32_t> MaskOf(std::string_view text) {
    text = Trim(text);
    if (IsMaskNumber(text)) {
        const auto digits = text.size() > 2 ? text.substr(2) : text;
        std::uint32_t mask = 0;
        const auto* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, mask, 16);
        if (error != std::errc{} || stop != end) return std::nullopt;
        return mask;
    }
    for (const auto& layout : Layouts) {
        if (EqualIgnoringCase(layout.name, text)) return layout.mask;
    }
    return MaskOfSpeakers(text);
}

std::string LayoutName(std::uint32_t mask) {
    for (const auto& layout : Layouts) {
        if (layout.mask == mask) return std::string(layout.name);
    }
    if (mask >> SpeakerNames.size() != 0) return MaskText(mask);
    std::string names;
    for (std::size_t i = 0; i < SpeakerNames.size(); ++i) {
        if ((mask >> i & 1) != 0) names.append(names.empty() ? "" : "+").append(SpeakerNames[i]);
    }
    return names;
}

std::string MaskText(std::uint32_t mask) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), mask, 16).ptr;
    return "0x" + std::string(digits.data(), end);
}

std::string LayoutNames() {
    std::string names;
    for (const auto& layout : Layouts) names.append(names.empty() ? "" : ", ").append(layout.name);
    return names;
}

} // namespace KAV::Host
