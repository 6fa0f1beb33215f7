#include "patch/macro.h"

#include <algorithm>

namespace KAV {

void CMacro::ClearMacros() noexcept {
    for (auto& macro : tags) {
        for (auto& tag : macro) tag = NoTag;
    }
    for (auto& macro : sensitivities) {
        for (auto& sensitivity : macro) sensitivity = NoSensitivity;
    }
}

void CMacro::AssignMacro(std::size_t macro, std::int32_t tag, float sensitivity) noexcept {
    auto& slots = tags[macro];
    for (std::size_t slot = 0; slot < Slots; ++slot) {
        if (slots[slot] == tag) sensitivities[macro][slot] = sensitivity;
    }
    const auto find = [&slots](std::int32_t wanted) {
        return std::find_if(
            slots.begin(), slots.end(), [wanted](const auto& slot) { return slot == wanted; });
    };
    const auto held = find(tag);
    if (held != slots.end()) {
        if (sensitivity == NoSensitivity) *held = NoTag;
        return;
    }
    const auto free = find(NoTag);
    if (free == slots.end()) return;
    *free = tag;
    sensitivities[macro][static_cast<std::size_t>(free - slots.begin())] = sensitivity;
}

float CMacro::Sensitivity(std::size_t macro, std::int32_t tag) const noexcept {
    float sensitivity = NoSensitivity;
    for (std::size_t slot = 0; slot < Slots; ++slot) {
        if (tags[macro][slot] == tag) sensitivity = sensitivities[macro][slot];
    }
    return sensitivity;
}

} // namespace KAV
