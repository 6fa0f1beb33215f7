#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Dynamic libraries that are loaded while the program runs. Any thread.
namespace KAV::Platform {

/// How the file name of a loadable library ends on this system, with the point.
std::string_view LibrarySuffix() noexcept;

/// Loads the library of that absolute path, with all that it needs. Null when the system refuses; `reason` is
/// then the system's own, in UTF-8 and on one line.
void* OpenLibrary(const std::filesystem::path& file, std::string& reason);

/// The address of an exported name; null when there is none.
void* FindSymbol(void* library, const char* name) noexcept;

/// Nothing that came from the library may be used afterwards.
void CloseLibrary(void* library) noexcept;

} // namespace KAV::Platform
