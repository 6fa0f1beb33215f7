#pragma once

#include <cstdint>

namespace KAV::Native {

/// Dots per inch of the system's screen as this process sees it: 96 if the system scales its windows for it.
/// Read once. Any thread.
std::int32_t ScreenDots() noexcept;

struct SHotSpot {
    std::int32_t x = 0;
    std::int32_t y = 0;
};
/// Where in its picture the usual cursor points. Read once. Any thread.
SHotSpot PlainCursorsHotSpot() noexcept;

} // namespace KAV::Native
