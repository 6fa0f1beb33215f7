#pragma once

#include "utils/realtime.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace KAV::DSP {

/// Mean of the last `size` values by a running sum. The sum is never made anew, so rounding errors stay in
/// it; they stay below 1e-12 for gains of 0..1 in any session's length that counts. Threads: Reserve() while
/// audio is stopped; the rest on the audio thread, allocates nothing within the reserve.
class BoxAverage final {
public:
    void Reserve(std::size_t size) {
        if (size > _buffer.size()) _buffer.resize(size, 1.0);
    }
    /// Averages over `size` values (at least 1) from now on, as if that many ones had been pushed.
    KAV_REALTIME void Reset(std::size_t size) {
        Reserve(size);
        _size = size;
        _index = 0;
        _sum = static_cast<double>(size);
        std::fill_n(_buffer.begin(), size, 1.0);
    }
    KAV_REALTIME double Push(double value) noexcept {
        _sum = _sum - _buffer[_index] + value;
        _buffer[_index] = value;
        if (++_index == _size) _index = 0;
        return _sum / static_cast<double>(_size);
    }

private:
    std::vector<double> _buffer; // its length is the capacity
    std::size_t _size = 0;       // _size <= _buffer.size()
    std::size_t _index = 0;      // of the oldest value; 0 <= _index < _size
    double _sum = 0.0;           // of the window, in the order in which the values came and went
};

} // namespace KAV::DSP
