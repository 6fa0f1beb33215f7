#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace KAV::Utils {

/// Calls `visit(n)` for each bit n that is set in `bits`, from the lowest to the highest.
template<typename TVisit>
void ForEachBit(std::uint32_t bits, TVisit&& visit) {
    for (; bits != 0; bits &= bits - 1) visit(static_cast<std::size_t>(std::countr_zero(bits)));
}

} // namespace KAV::Utils
