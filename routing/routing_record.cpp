#include "routing/routing_record.h"

#include "utils/marked_text.h"

#include <algorithm>

namespace KAV {

SRoutingRecord::SRoutingRecord() {
    Set(DefaultRoutingText());
}

void SRoutingRecord::Set(std::string_view document) {
    if (document == text) return;
    std::string old(document);
    old.swap(text);
    type = RoutingType(RoutingValue(text, "<type"));
    const std::string_view newMap = RoutingValue(text, "<map");
    if (newMap == RoutingValue(old, "<map")) return;
    Utils::CPieces entries(newMap, RoutingSeparator);
    for (int entry = 0; entry < RoutingEntries; ++entry) {
        const auto numbers = entries.Next() ? ReadRoutingEntry(entries.Piece()) : SRoutingNumbers{-1, -1};
        SetPair(entry, numbers.first, numbers.second);
    }
}

void SRoutingRecord::SetPair(int entry, std::int32_t first, std::int32_t second) noexcept {
    auto& pair = map[static_cast<std::size_t>(entry)];
    const std::uint32_t bit = std::uint32_t{1} << entry;
    // Set before the pair and cleared after it, because the audio thread may read the entry in between.
    entriesWithChannels = entriesWithChannels | bit;
    pair.first = std::max(first, -1);
    pair.second = std::max(second, -1);
    if (first < 0 && second < 0) entriesWithChannels = entriesWithChannels & ~bit;
}

std::string_view DefaultRoutingText() noexcept {
    return "<kav_input_routing>\r\n"
           "\t<kvt_version>1.0</kvt_version>\r\n"
           "\t<name>Not found</name>\r\n"
           "\t<map>0,-1|*|1,-1</map>\r\n"
           "\t<ch_names>L|*|R</ch_names>\r\n"
           "</kav_input_routing>";
}

} // namespace KAV
