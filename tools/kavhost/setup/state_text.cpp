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

/// The block of a group, from its opening to its closing element.
std::optional<std::string_view> BlockOf(int group, std::string_view text) noexcept {
    for (;;) {
        const auto begin = FindMark(text, RoutingOpening);
        if (begin == std::string_view::npos) return std::nullopt;
        text.remove_prefix(begin);
        const auto end = FindMark(text, RoutingEnd);
        if (end == std::string_view::npos) return std::nullopt;
        const auto block = text.substr(0, end + RoutingEnd.size());
        if (ReadIndex(ExtractTag(block, "<fx", ">", "<")) == group) return block;
        text.remove_prefix(block.size());
    }
}

/// In a state the group's number is on its own line, after the opening of the document.
std::string BlockWith(int group, const SRouting& routing) {
    return std::string(RoutingOpening)
        .append("\r\n\t<fx>")
        .append(std::to_string(group))
        .append("</fx>")
        .append(routing.document, RoutingOpening.size(), std::string::npos);
}

std::string_view ValueIn(std::string_view line) noexcept {
    return ExtractTag(line, "<param ", ">", "</");
}

/// The number of a line's parameter.
std::optional<int> TagIn(std::string_view line) noexcept {
    if (ValueIn(line).empty()) return std::nullopt;
    return ReadIndex(ExtractTag(line, "tag=", "\"", "\""));
}

/// The number of a line's parameter, when it is one of the group's toggles: these count from 1.
std::size_t ToggleOf(int group, std::string_view line) noexcept {
    const auto tag = TagIn(line);
    if (!tag || *tag < TagOf(group, 1)) return 0;
    const auto toggle = static_cast<std::size_t>(*tag - TagOf(group, 0));
    return toggle <= MostRoutingEntries ? toggle : 0;
}

/// The text with the first `entries` toggles on and the others off; nothing when it lacks one of the former.
std::optional<std::string> WithToggles(std::string_view text, int group, std::size_t entries) {
    std::string result;
    result.reserve(text.size());
    std::bitset<MostRoutingEntries + 1> found;
    CPieces lines(text, LineEnd);
    for (bool isFirst = true; lines.Next(); isFirst = false) {
        if (!isFirst) result += LineEnd;
        const auto line = lines.Piece();
        const auto toggle = ToggleOf(group, line);
        if (toggle == 0) {
            result += line;
            continue;
        }
        found.set(toggle);
        result += Replaced(line, ValueIn(line), toggle <= entries ? "1.000000" : "0.000000");
    }
    for (std::size_t toggle = 1; toggle <= entries; ++toggle) {
        if (!found[toggle]) return std::nullopt;
    }
    return result;
}

std::optional<int> ChannelIn(std::string_view number) noexcept {
    const auto channel = ReadIndex(Trim(number));
    return channel && *channel >= 0 ? channel : std::nullopt;
}

} // namespace

std::vector<std::vector<int>> SGroupRouting::Entries() const {
    std::vector<std::vector<int>> entries;
    CPieces pieces(map, ListSeparator);
    while (entries.size() < MostRoutingEntries && pieces.Next()) {
        auto& channels = entries.emplace_back();
        CPieces numbers(pieces.Piece(), ",");
        for (int i = 0; i < 2 && numbers.Next(); ++i) {
            if (const auto channel = ChannelIn(numbers.Piece())) channels.push_back(*channel);
        }
    }
    return entries;
}

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

bool CStateText::SetRouting(int group, const SRouting& routing) {
    auto text = WithToggles(_text, group, std::min(routing.entries, MostRoutingEntries));
    if (!text) return false;
    const auto block = BlockOf(group, *text);
    if (!block) return false;
    _text = Replaced(*text, *block, BlockWith(group, routing));
    return true;
}

bool CStateText::SetToggles(int group, std::size_t entries) {
    auto text = WithToggles(_text, group, std::min(entries, MostRoutingEntries));
    if (!text) return false;
    _text = *std::move(text);
    return true;
}

bool CStateText::SetParallel(bool isParallel) {
    return SetElement("groups_parallel", isParallel ? "1" : "0");
}

bool CStateText::SetSimd(bool isOn) {
    return SetElement("simd", isOn ? "1" : "0");
}

bool CStateText::SetWidth(int width) {
    return SetElement("gui_width", std::to_string(width));
}

int CStateText::Groups() const {
    int groups = 0;
    while (BlockOf(groups, _text)) ++groups;
    return groups;
}

std::optional<SGroupRouting> CStateText::Routing(int group) const {
    const auto block = BlockOf(group, _text);
    if (!block) return std::nullopt;
    const auto value = [&](std::string_view opening) {
        return std::string(ExtractTag(*block, opening, ">", "<"));
    };
    return SGroupRouting{value("<name"), value("<type"), value("<map")};
}

std::optional<double> CStateText::Value(int tag) const {
    std::optional<double> value;
    CPieces lines(_text, LineEnd);
    while (lines.Next()) {
        const auto line = lines.Piece();
        if (TagIn(line) != tag) continue;
        if (const auto number = ReadNumber(ValueIn(line))) value = number->value; // the last one counts
    }
    return value;
}

bool CStateText::IsToggled(int group, std::size_t toggle) const {
    return Value(TagOf(group, 1) + static_cast<int>(toggle)).value_or(0) >= 0.5;
}

std::string_view CStateText::Element(std::string_view name) const {
    return ExtractTag(_text, std::string("<").append(name), ">", "</");
}

bool CStateText::SetElement(std::string_view name, std::string_view content) {
    const auto present = Element(name);
    if (present.empty()) return false;
    _text = Replaced(_text, present, content);
    return true;
}

} // namespace KAV::Host
