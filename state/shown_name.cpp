#include "state/shown_name.h"

#include <algorithm>
#include <utility>

namespace KAV {

void CShownName::SetPlace(std::int32_t place) noexcept {
    _place = place;
    const std::int32_t last = Count() - 1;
    _position = last > 0 ? static_cast<float>(place) / static_cast<float>(last) : 0.0f;
}

bool CShownName::SetNames(std::vector<std::u16string> names) {
    if (names.empty()) return false;
    const float nearest = static_cast<float>(names.size() - 1) * _position + 0.5f;
    const auto place = static_cast<std::int32_t>(nearest); // NOLINT(bugprone-incorrect-roundings): never < 0
    const auto& name = names[static_cast<std::size_t>(place)];
    if (names == _names && place == _place && name == _name) return false;
    _name = name;
    _place = place;
    _names = std::move(names);
    return true;
}

bool CShownName::Show(std::u16string_view name) {
    if (name == _name) return false;
    _name = name;
    const auto place = Find(-1, name);
    if (place >= 0) SetPlace(place);
    return true;
}

bool CShownName::Choose(std::int32_t place) {
    if (place < 0 || place >= Count()) return false;
    const auto& name = _names[static_cast<std::size_t>(place)];
    if (place == _place && name == _name) return false;
    SetPlace(place);
    _name = name;
    return true;
}

std::int32_t CShownName::Find(std::int32_t place, std::u16string_view name) const noexcept {
    if (place >= 0 && place < Count() && _names[static_cast<std::size_t>(place)] == name) return place;
    const auto found = std::ranges::find(_names, name);
    return found != _names.end() ? static_cast<std::int32_t>(found - _names.begin()) : -1;
}

} // namespace KAV
