#pragma once

#include <cstdint>
#include <string_view>

namespace KAV::Host {

class CEffect;

/// The host's value at which an effect's own display of a parameter shows `wanted`. The effect is asked by
/// setting the parameter; afterwards it stands at the value that is returned.
///
/// A number, its unit behind it or not, is found by halving, provided that the display shows numbers at both
/// ends and runs one way; the middle of the values that show it is returned. Any other text, and numbers of a
/// display that is no scale, are looked for in steps of a thousandth. Throws CUsageError when the display
/// never shows it.
float FindDisplayed(CEffect& effect, std::int32_t index, std::string_view wanted);

} // namespace KAV::Host
