#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace KAV::Tests {

/// What a dynamic library declares to the system's loader.
struct SImage {
    enum class EFormat { Elf, Pe };

    EFormat format = EFormat::Elf;
    std::vector<std::string> exports;   ///< names, sorted
    std::vector<std::string> libraries; ///< libraries loaded with it, in its order
    std::vector<std::string> functions; ///< PE: those that it takes from them, as "KERNEL32.dll Sleep"
    int oldestWindows = 0;              ///< PE: the first version that loads it, as 601 for 6.1
    bool bindsToItself = false;         ///< ELF: its own names win over those of the process
    bool staysLoaded = false;           ///< ELF: the loader never unloads it
};

/// Reads a 64-bit little-endian ELF library or a 64-bit PE library. Throws std::runtime_error for anything
/// else, and for one whose tables point outside it.
SImage ReadImage(std::span<const std::byte> file);
SImage ReadImage(const std::filesystem::path& file);

std::vector<std::byte> ReadBytes(const std::filesystem::path& file);

/// Where the library breaks what hosts rely on, one line each: it exports exactly the three entries, loads
/// nothing that isn't part of every system (Windows: from version 7 on), binds to its own names instead of
/// the process's, and can't be unloaded under a thread.
std::vector<std::string> Complaints(const SImage& image);

} // namespace KAV::Tests
