#pragma once

#include <span>
#include <string_view>

namespace KAV::Host {

/// The settings of a state that are no parameters, by their names in the text.
std::span<const std::string_view> SettingNames() noexcept;

/// Such a name, and a value of it, in words. An unknown name and a value without a word of its own come back
/// as they are.
std::string_view SettingWords(std::string_view name) noexcept;
std::string_view SettingValueWords(std::string_view name, std::string_view value) noexcept;

} // namespace KAV::Host
