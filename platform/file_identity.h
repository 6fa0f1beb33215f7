#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace KAV::Platform {

/// What several names of one file have in common.
struct SFileIdentity {
    std::uint64_t volume = 0;
    std::uint64_t file = 0;

    friend bool operator<(const SFileIdentity& a, const SFileIdentity& b) noexcept {
        return a.volume != b.volume ? a.volume < b.volume : a.file < b.file;
    }
};

/// Of what the path leads to, through links; nothing if that doesn't exist or can't be determined.
std::optional<SFileIdentity> IdentityOf(const std::filesystem::path& path) noexcept;

} // namespace KAV::Platform
