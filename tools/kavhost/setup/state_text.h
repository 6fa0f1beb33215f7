#pragma once

#include "utils/channels.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// States that are text: lines that look like XML but aren't, without nesting or quoting, in which each
/// element is found by plain search. A host edits in them what is not a parameter. Any bytes can be read;
/// threads: any.
namespace KAV::Host {

/// How a state that is text begins; nothing else distinguishes it from other bytes.
inline constexpr std::string_view StateOpening = "<patch_format>textual</patch_format>";

/// Between the names of a list.
inline constexpr std::string_view ListSeparator = "|*|";

/// Toggles of a group, each of which stands for one entry of its routing.
inline constexpr std::size_t MostRoutingEntries = Utils::MostChannels;

/// Which channels a group can take: a document with one entry per toggle.
struct SRouting {
    std::string document; ///< from its opening to its closing element, lines ended by CR LF
    std::size_t entries;  ///< 1 or more
};

/// The document in a file's bytes: alone in there, white space and zeros around it aside. Nothing when there
/// is no whole one, or it names no entry, or it would be taken for more than a routing inside a state.
std::optional<SRouting> ReadRouting(std::string_view bytes);

/// One entry for each of `channels` channels, labelled by its number from 1.
SRouting RoutingOfChannels(int channels);

/// The routing of a group as a state has it.
struct SGroupRouting {
    std::string name;
    std::string type; ///< empty for most
    std::string map;  ///< one entry per toggle, each of two channels from 0 or below that for none

    /// The channels of each entry that a toggle can switch.
    std::vector<std::vector<int>> Entries() const;
    bool IsMidSide() const noexcept { return type == "mid/side"; }
    bool operator==(const SGroupRouting&) const = default;
};

/// A state with the elements that a host edits. A zero ends the text; what follows it stays as it is. Groups
/// and toggles count from 0.
class CStateText final {
public:
    /// Nothing for a state that isn't text.
    static std::optional<CStateText> Read(std::string bytes);

    /// Gives a group this routing and switches its toggles: on for the entries that the routing has, off for
    /// the others. False, and nothing has changed, when the text has no routing of this group or no toggle
    /// for one of the entries.
    bool SetRouting(int group, const SRouting& routing);

    /// The toggles of a group: on for the first `entries`, off for the others. False, and nothing has
    /// changed, when the text lacks one of the former.
    bool SetToggles(int group, std::size_t entries);

    /// Whether the groups run side by side. False, and nothing has changed, when the text doesn't say.
    bool SetParallel(bool isParallel);

    /// The switch of vector code. False, and nothing has changed, when the text has none.
    bool SetSimd(bool isOn);

    /// The width of the editor in pixels. False, and nothing has changed, when the text has none.
    bool SetWidth(int width);

    /// Groups that have a routing: those from 0 on, without a gap.
    int Groups() const;
    /// Nothing for a group without one.
    std::optional<SGroupRouting> Routing(int group) const;
    /// What a parameter of this number has, as the effect stores it; nothing for one that isn't there.
    std::optional<double> Value(int tag) const;
    bool IsToggled(int group, std::size_t toggle) const;
    bool IsParallel() const { return Element("groups_parallel") == "1"; }
    /// The content of an element; empty if it isn't there.
    std::string_view Element(std::string_view name) const;
    std::string_view Text() const noexcept { return _text; }

    /// The state as bytes.
    std::string Bytes() const { return _text + _rest; }

private:
    CStateText(std::string text, std::string rest) : _text(std::move(text)), _rest(std::move(rest)) {}

    bool SetElement(std::string_view name, std::string_view content);

    std::string _text;
    std::string _rest; ///< the zero that ends the text, and what follows it
};

/// The number by which states know a parameter of a group, from its number in the first group.
constexpr int TagOf(int group, int tag) noexcept {
    return tag + 100 * group;
}

} // namespace KAV::Host
