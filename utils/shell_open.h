#pragma once

#include <string_view>

namespace KAV::Utils {

/// Opens a file, a folder or an address with the program that the user has chosen for it, without waiting. On
/// Windows that program gets `arguments`, and a file with the extension "exe" runs as administrator if the
/// user agrees. False for an empty or ill-formed path, or if no program could be started. Any thread but the
/// audio thread.
bool ShellOpen(std::u16string_view path, std::u16string_view arguments = {}) noexcept;

/// The same for a target of any kind, as administrator only if `asAdministrator` is set.
bool OpenUrlOrFile(
    std::u16string_view target, std::u16string_view arguments = {}, bool asAdministrator = false) noexcept;

} // namespace KAV::Utils
