#include "routing/routing_document.h"

#include "utils/marked_text.h"
#include "utils/number.h"

#include <array>

namespace KAV {

namespace {

constexpr auto LegacyNames =
    std::to_array<std::string_view>({"Mono", "Dual Mono", "Stereo", "Mid/Side", "LRS", "LCR", "LRCS", "Quad",
        "Pentagonal", "5.0", "Hexagonal", "5.1", "6.0", "6.0 (Music)", "5.0.2", "6.1", "6.1 (Music)", "7.0",
        "7.0 (SDDS)", "5.1.2", "8 Multi", "Octagonal", "7.1", "7.1 (SDDS)", "8 Cube", "5.0.4", "7.0.2",
        "8.1 (Music)", "5.0.5", "5.1.4", "7.1.2", "10.0 (Auro)", "5.1.5", "7.0.4", "10.1 (Auro)", "5.1.6",
        "7.0.5", "7.1.4", "7.1.5", "9.0.4", "9.1.4", "9.0.6", "9.1.6", "16 Multi (Pair)"});
static_assert(LegacyNames.size() == 44, "old patches count on the places");

} // namespace

std::string_view RoutingValue(std::string_view document, std::string_view opening) noexcept {
    return Utils::ExtractTag(document, opening, ">", "<");
}

ERoutingType RoutingType(std::string_view name) noexcept {
    if (name == "mid/side") return ERoutingType::MidSide;
    if (name == "stereo") return ERoutingType::Stereo;
    if (name == "mono") return ERoutingType::Mono;
    if (name == "dualmono") return ERoutingType::DualMono;
    return ERoutingType::None;
}

SRoutingNumbers ReadRoutingEntry(std::string_view entry) noexcept {
    const auto comma = entry.find(',');
    const auto second = comma == std::string_view::npos ? std::string_view() : entry.substr(comma + 1);
    return {Utils::ToInt(entry.substr(0, comma)), Utils::ToInt(second.substr(0, second.find(',')))};
}

std::string WriteRoutingDocument(std::string_view fileName, std::span<const SRoutingButton> buttons) {
    std::string map;
    std::string labels;
    for (std::size_t k = 0; k < buttons.size(); ++k) {
        if (!buttons[k].on) continue;
        if (!map.empty()) {
            map += RoutingSeparator;
            labels += RoutingSeparator;
        }
        map += std::to_string(k) + ",-1";
        labels += buttons[k].label;
    }
    std::string document = "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>";
    document += fileName.substr(0, fileName.rfind('.'));
    document += "</name>\r\n\t<map>" + map + "</map>\r\n\t<ch_names>" + labels;
    document += "</ch_names>\r\n</kav_input_routing>";
    return document;
}

std::string_view LegacyRoutingName(std::ptrdiff_t index) noexcept {
    if (index < 0 || static_cast<std::size_t>(index) >= LegacyNames.size()) return {};
    return LegacyNames[static_cast<std::size_t>(index)];
}

} // namespace KAV
