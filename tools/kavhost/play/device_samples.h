#pragma once

#include <cstddef>
#include <span>

namespace KAV::Host {

/// How a device stores a sample, in the byte order of this processor.
enum class EDeviceSamples { Float32, Int16, Int24, Int32 };

std::size_t BytesOf(EDeviceSamples kind) noexcept;

/// Stores samples of -1 to 1 at `to`; what lies beyond is clipped, unless the form has room for it.
void StoreSamples(std::span<const float> samples, EDeviceSamples kind, unsigned char* to) noexcept;

} // namespace KAV::Host
