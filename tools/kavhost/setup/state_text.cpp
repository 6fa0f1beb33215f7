#include "tools/kavhost/setup/state_text.h"

#include "tools/kavhost/base/text.h"
#include "utils/marked_text.h"

#include <algorithm>
#include <bitset>

namespace KAV::Host {

namespace {

using Utils::CPieces;
using Utils::ExtractTag;
using Utils::FindMark;

constexpr std::string_view LineEnd = "\r\n";
constexpr std::string_view RoutingOpening = "<kav_input_routing>";
constexpr std::string_view RoutingEnd = "</kav_input_routing>";

std::string_view UpToZero(std::string_view bytes) noexcept {
    return bytes.substr(0, bytes.find('\0'));
}

/// Every end of a line as CR LF, whichever way it was.
std::string WithLineEnds(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) result.push_back('\r');
        result.push_back(text[i]);
    }
    return result;
}

/// The text with `part`, a view into it, replaced.
std::string Replaced(std::string_view text, std::string_view part, std::string_view by) {
    const auto begin = static_cast<std::size_t>(part.data() - text.data());
    return std::string(text.substr(0, begin)).append(by).append(text.substr(begin + part.size()));
}

/// The block of the first group, from its opening to its closing element.
std::optional<std::string_view> FirstGroupsBlock(std::string_view text) noexcept {
    for (;;) {
        const auto begin = FindMark(text, RoutingOpening);
        if (begin == std::string_view::npos) return std::nullopt;
        text.remove_prefix(begin);
        const auto end = FindMark(text, RoutingEnd);
        if (end == std::string_view::npos) return std::nullopt;
        const auto block = text.substr(0, end + RoutingEnd.size());
        if (ExtractTag(block, "<fx", ">", "<") == "0") return block;
        text.remove_prefix(block.size());
    }
}

/// In a state the group's number is on its own line, after the opening of the document.
std::string FirstGroupsBlock(const SRouting& routing) {
    return std::string(RoutingOpening)
        .append("\r\n\t<fx>0</fx>")
        .append(routing.document, RoutingOpening.size(), std::string::npos);
}

/// The number of a line's parameter, when it is one of the first group's toggles: these count from 1.
std::size_t ToggleOf(std::string_view line) noexcept {
    if (ExtractTag(line, "<param ", ">", "</").empty()) return 0;
    const auto tag = ReadIndex(ExtractTag(line, "tag=", "\"", "\""));
    const bool isToggle = tag && *tag >= 1 && static_cast<std::size_t>(*tag) <= MostRoutingEntries;
    return isToggle ? static_cast<std::size_t>(*tag) : 0;
}

/// The text with the first `entries` toggles on and the others off; nothing when it lacks one of the former.
std::optional<std::string> WithToggles(std::string_view text, std::size_t entries) {
    std::string result;
    result.reserve(text.size());
    std::bitset<MostRoutingEntries + 1> found;
    CPieces lines(text, LineEnd);
    for (bool isFirst = true; lines.Next(); isFirst = false) {
        if (!isFirst) result += LineEnd;
        const auto line = lines.Piece();
        const auto toggle = ToggleOf(line);
        if (toggle == 0) {
            result += line;
            continue;
        }
        found.set(toggle);
        const auto value = ExtractTag(line, "<param ", ">", "</");
        result += Replaced(line, value, toggle <= entries ? "1.000000" : "0.000000");
    }
    for (std::size_t toggle = 1; toggle <= entries; ++toggle) {
        if (!found[toggle]) return std::nullopt;
    }
    return result;
}

} // namespace

std::optional<SRouting> ReadRouting(std::string_view bytes) {
    const auto text = Trim(UpToZero(bytes));
    if (!text.starts_with(RoutingOpening) || !text.ends_with(RoutingEnd)) return std::nullopt;
    const auto inside = text.substr(RoutingOpening.size());
    // A state contains several of these, each with its group, next to parameters. A document that contains
    // such marks itself would be read as more than one.
    for (const auto mark : {RoutingOpening, std::string_view("<fx"), std::string_view("<param ")}) {
        if (FindMark(inside, mark) != std::string_view::npos) return std::nullopt;
    }
    if (FindMark(inside, RoutingEnd) + RoutingEnd.size() != inside.size()) return std::nullopt;
    SRouting routing{WithLineEnds(text), 0};
    CPieces entries(ExtractTag(routing.document, "<map", ">", "<"), ListSeparator);
    while (entries.Next()) ++routing.entries;
    if (routing.entries == 0) return std::nullopt;
    return routing;
}

SRouting RoutingOfChannels(int channels) {
    std::string map, labels;
    for (int channel = 0; channel < channels; ++channel) {
        const auto separator = channel == 0 ? std::string_view() : ListSeparator;
        map.append(separator).append(std::to_string(channel)).append(",-1");
        labels.append(separator).append(std::to_string(channel + 1));
    }
    std::string document(RoutingOpening);
    document.append("\r\n\t<kvt_version>1.0</kvt_version>")
        .append("\r\n\t<name>")
        .append(std::to_string(channels))
        .append(" Channels</name>")
        .append("\r\n\t<map>")
        .append(map)
        .append("</map>")
        .append("\r\n\t<ch_names>")
        .append(labels)
        .append("</ch_names>\r\n")
        .append(RoutingEnd);
    return {std::move(document), static_cast<std::size_t>(std::max(channels, 0))};
}

std::optional<CStateText> CStateText::Read(std::string bytes) {
    if (!std::string_view(bytes).starts_with(StateOpening)) return std::nullopt;
    const auto length = UpToZero(bytes).size();
    auto rest = bytes.substr(length);
    bytes.resize(length);
    return CStateText(std::move(bytes), std::move(rest));
}

bool CStateText::SetRouting(const SRouting& routing) {
    auto text = WithToggles(_text, std::min(routing.entries, MostRoutingEntries));
    if (!text) return false;
    const auto block = FirstGroupsBlock(*text);
    if (!block) return false;
    _text = Replaced(*text, *block, FirstGroupsBlock(routing));
    return true;
}

bool CStateText::SetSimd(bool isOn) {
    return SetElement("<simd", isOn ? "1" : "0");
}

bool CStateText::SetWidth(int width) {
    return SetElement("<gui_width", std::to_string(width));
}

bool CStateText::SetElement(std::string_view name, std::string_view content) {
    const auto present = ExtractTag(_text, name, ">", "</");
    if (present.empty()) return false;
    _text = Replaced(_text, present, content);
    return true;
}

} // namespace KAV::Host
