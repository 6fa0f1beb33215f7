#pragma once

#include <cstdint>
#include <string_view>

namespace KAV::Host {

class CEffect;

/// The host's value at which an effect's own display of a parameter shows `wanted`. The search sets the
/// parameter; afterwards it has the value that is returned.
///
/// A number, with or without its unit, is found by bisection if the display shows numbers at both ends and is
/// monotonic; the middle of the values that show it is returned. Any other text, and numbers of a display
/// that is not such a scale, are searched for in steps of a thousandth. Throws CUsageError if the display
/// never shows it.
float FindDisplayed(CEffect& effect, std::int32_t index, std::string_view wanted);

} // namespace KAV::Host
