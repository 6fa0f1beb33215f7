#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// What all editors of a user share. Threads: any but the audio thread.
namespace KAV::GUI {

/// A number that is stored under a name; none unless it has four bytes.
std::optional<std::uint32_t> StoredNumber(std::u16string_view a_sName) noexcept;
void StoreNumber(std::u16string_view a_sName, std::uint32_t a_nNumber) noexcept;

/// For tests: the place of the settings of this process from now on, which outlives its use; null means the
/// user's.
void UseSettingsAt(const char16_t* a_psLocation) noexcept;

} // namespace KAV::GUI
