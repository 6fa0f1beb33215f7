#include "tools/kavhost/tags/tag_set.h"

#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <array>

namespace KAV::Host {

const std::string* STagSet::Find(std::string_view key) const noexcept {
    const auto found = std::ranges::find(fields, key, &STagField::key);
    return found == fields.end() ? nullptr : &found->value;
}

void STagSet::AddMissing(std::string_view key, std::string value) {
    if (value.empty() || Find(key) != nullptr) return;
    fields.push_back({std::string(key), std::move(value)});
}

std::string STagSet::Take(std::string_view key) {
    std::string joined;
    for (const auto& field : fields) {
        if (field.key != key) continue;
        if (!joined.empty()) joined += "; ";
        joined += field.value;
    }
    std::erase_if(fields, [key](const STagField& field) { return field.key == key; });
    return joined;
}

bool IsOutdatedByRendering(std::string_view key) {
    // Comments that have a name of their own: "COMMENT:iTunNORM".
    if (constexpr std::string_view comment = "COMMENT:";
        EqualIgnoringCase(key.substr(0, comment.size()), comment)) {
        key.remove_prefix(comment.size());
    }
    // Gain that a player should add; the levels of a coder's undo; how much silence a coder has added.
    constexpr std::array<std::string_view, 3> prefixes{"REPLAYGAIN_", "R128_", "MP3GAIN_"};
    constexpr std::array<std::string_view, 2> names{"ITUNNORM", "ITUNSMPB"};
    const auto begins = [key](std::string_view prefix) {
        return EqualIgnoringCase(key.substr(0, prefix.size()), prefix);
    };
    const auto is = [key](std::string_view name) { return EqualIgnoringCase(key, name); };
    return std::ranges::any_of(prefixes, begins) || std::ranges::any_of(names, is);
}

} // namespace KAV::Host
