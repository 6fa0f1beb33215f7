#pragma once

#include "routing/routing_document.h"
#include "utils/channels.h"
#include "utils/shared.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace KAV {

/// Entries that a routing can have; each belongs to one channel toggle of its group.
inline constexpr int RoutingEntries = Utils::MostChannels;

/// One entry: the zero-based host channels that the toggle controls, -1 for none.
struct SRoutingPair {
    Utils::CShared<std::int32_t> first{-1};
    Utils::CShared<std::int32_t> second{-1};
};

/// The routing of one group: the document as given, and what the audio thread reads of it. Threads: Set() and
/// the text on one thread at a time. The audio thread also reads type and map, each word on its own, while
/// Set() changes one entry after another.
struct SRoutingRecord {
    std::string text; ///< UTF-8
    Utils::CShared<ERoutingType> type{ERoutingType::None};
    std::array<SRoutingPair, RoutingEntries> map;
    /// Bit k: entry k may name a channel. If it is clear, the entry names none, so the audio thread can skip
    /// most of the map.
    Utils::CShared<std::uint32_t> entriesWithChannels{0};

    /// The routing of a new instance: two entries of one channel each.
    SRoutingRecord();
    /// Takes a document of any bytes. Setting the same document again does nothing; one with the same map
    /// keeps the pairs as they are. Entries after the sixteenth are ignored; those missing from the map get
    /// no channel. Throws std::bad_alloc, and then nothing has changed.
    void Set(std::string_view document);
    /// Assigns two host channels to entry `entry` (0..15); a number below 0 means none.
    void SetPair(int entry, std::int32_t first, std::int32_t second) noexcept;
};

/// The document of a new instance, UTF-8, lines ended by CR LF.
std::string_view DefaultRoutingText() noexcept;

} // namespace KAV
