#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Dynamic libraries that are loaded while the program runs. Any thread.
namespace KAV::Platform {

/// The extension of a loadable library on this system, with the dot.
std::string_view LibrarySuffix() noexcept;

/// Loads the library of that absolute path, with everything it needs. Null if the system refuses; `reason` is
/// then the system's own, in UTF-8 and on one line.
void* OpenLibrary(const std::filesystem::path& file, std::string& reason);

/// The address of an exported name; null if there is no such name.
void* FindSymbol(void* library, const char* name) noexcept;

/// Nothing that came from the library may be used afterwards.
void CloseLibrary(void* library) noexcept;

} // namespace KAV::Platform
