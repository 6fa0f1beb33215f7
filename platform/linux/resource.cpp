#include "platform/resource.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace {

struct SStoredFile {
    const char* name;
    const std::uint8_t* bytes;
    std::size_t size;
};

} // namespace

/// The table that resources/ assembles.
extern "C" {
// NOLINTBEGIN(readability-identifier-naming,modernize-avoid-c-arrays)
extern const SStoredFile kav_resources[];
extern const std::size_t kav_resource_count;
// NOLINTEND(readability-identifier-naming,modernize-avoid-c-arrays)
}

namespace KAV::Platform {

namespace {

constexpr char Upper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace

std::span<const std::uint8_t> Resource(std::string_view name) noexcept {
    for (const SStoredFile& file : std::span(&kav_resources[0], kav_resource_count)) {
        const std::string_view stored = file.name;
        if (std::equal(stored.begin(), stored.end(), name.begin(), name.end(),
                [](char a, char b) { return Upper(a) == Upper(b); }))
            return {file.bytes, file.size};
    }
    return {};
}

void RestResource(std::span<const std::uint8_t> bytes) noexcept {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(bytes.data());
    const auto skipped = (page - address % page) % page;
    if (bytes.size() < skipped + page) return;
    // Constant, without addresses that the loader would have entered: the file has the same. Where the host
    // has locked its memory, the system refuses, and they stay.
    auto* const first = const_cast<std::uint8_t*>(bytes.data() + skipped); // NOLINT: nothing is written
    madvise(first, (bytes.size() - skipped) / page * page, MADV_DONTNEED);
}

void RestResources() noexcept {
    const std::span files(&kav_resources[0], kav_resource_count);
    const auto* const begin = std::ranges::min(files, {}, &SStoredFile::bytes).bytes;
    const auto& last = std::ranges::max(files, {}, &SStoredFile::bytes);
    RestResource({begin, last.bytes + last.size});
}

} // namespace KAV::Platform
