#include "platform/resource.h"

namespace KAV::Platform {

std::span<const std::uint8_t> Resource(std::string_view) noexcept {
    return {};
}

void RestResource(std::span<const std::uint8_t>) noexcept {}

void RestResources() noexcept {}

} // namespace KAV::Platform
