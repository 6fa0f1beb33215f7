#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Host {

/// Identifies a file's content by size and a hash. It distinguishes contents that differ by accident, not by
/// design.
struct SFingerprint {
    std::uint64_t size = 0;
    std::uint64_t hash = 0;

    bool operator==(const SFingerprint&) const = default;
};
SFingerprint FingerprintOf(std::string_view content) noexcept;

/// A file that was installed.
struct SInstalledFile {
    std::string place; ///< UTF-8, relative to the documents folder, with forward slashes
    SFingerprint content;

    bool operator==(const SInstalledFile&) const = default;
};

/// A text that remembers which files were installed, one line each.
class CContentManifest final {
public:
    /// A missing file is an empty manifest. Throws CFailure for a file that is not a manifest, because the
    /// files that it may list should be left alone.
    explicit CContentManifest(std::filesystem::path file);

    /// A place can have several contents, while an installation is under way.
    bool Has(std::string_view place, const SFingerprint& content) const;
    /// Each once, sorted.
    std::vector<std::string> Places() const;

    /// Further contents of a place count as well.
    void Add(std::string_view place, const SFingerprint& content);
    /// Forgets the other contents of the place.
    void Settle(std::string_view place, const SFingerprint& content);
    void Forget(std::string_view place);

    /// Replaces the file as a whole; removes it if there is nothing to remember. Throws CFailure.
    void Save() const;

private:
    std::filesystem::path _file;
    std::vector<SInstalledFile> _files;
};

} // namespace KAV::Host
