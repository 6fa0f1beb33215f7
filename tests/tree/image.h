#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace KAV::Tests {

/// What a dynamic library tells the system's loader.
struct SImage {
    enum class EFormat { Elf, Pe };

    EFormat format = EFormat::Elf;
    std::vector<std::string> exports;   ///< names, sorted
    std::vector<std::string> libraries; ///< that are loaded with it, in its order
    bool bindsToItself = false;         ///< ELF: its own names win over those of the process
    bool staysLoaded = false;           ///< ELF: the loader never takes it out again
};

/// Reads a 64-bit little-endian ELF library or a 64-bit PE library. Throws std::runtime_error on anything
/// else, and on one whose tables lead outside it.
SImage ReadImage(std::span<const std::byte> file);
SImage ReadImage(const std::filesystem::path& file);

std::vector<std::byte> ReadBytes(const std::filesystem::path& file);

/// Where the library is not what hosts may count on, one line each: exactly the three entries, nothing loaded
/// that is not part of every system, safe from names of the host's process, and safe from being unloaded
/// under a thread.
std::vector<std::string> Complaints(const SImage& image);

} // namespace KAV::Tests
