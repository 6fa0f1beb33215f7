#pragma once

#include "platform/whole_file.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The user's settings: values of any bytes, each with a name, under keys that form a tree. Windows: the
/// registry. Elsewhere: one small file per key in the user's configuration folder, replaced whole, so that
/// several processes may read and write at once. Texts are UTF-8, keys have slashes between their parts. Any
/// thread; nothing throws.
namespace KAV::Platform {

enum class ESettingsRoot { CurrentUser, ClassesRoot, LocalMachine, Users, CurrentConfig };

/// Null data if there is no such value. A key whose file is damaged has no values.
SBytes ReadSetting(ESettingsRoot root, const std::string& key, const std::string& name) noexcept;

/// Creates the key if it is missing. False if the value could not be stored; then it is unchanged.
bool WriteSetting(ESettingsRoot root, const std::string& key, const std::string& name, const void* data,
    std::size_t size) noexcept;

bool SettingExists(ESettingsRoot root, const std::string& key, const std::string& name) noexcept;

} // namespace KAV::Platform
