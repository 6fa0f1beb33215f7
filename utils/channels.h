#pragma once

namespace KAV::Utils {

/// Channels that the product works on at most. A routing has as many entries, and a group as many toggles.
inline constexpr int MostChannels = 16;

} // namespace KAV::Utils
