#pragma once

namespace KAV::Utils {

/// The highest number of channels that the product works on. A routing has as many entries, and a group as
/// many toggles.
inline constexpr int MostChannels = 16;

} // namespace KAV::Utils
