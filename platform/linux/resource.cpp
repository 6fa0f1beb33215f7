#include "platform/resource.h"

#include <algorithm>
#include <cstddef>

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

} // namespace KAV::Platform
