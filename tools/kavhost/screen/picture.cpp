#include "tools/kavhost/screen/picture.h"

#include <algorithm>

namespace KAV::Host {

bool IsPlain(const SPicture& picture) noexcept {
    return std::ranges::all_of(
        picture.pixels, [&](std::uint32_t pixel) { return pixel == picture.pixels.front(); });
}

} // namespace KAV::Host
