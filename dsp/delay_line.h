#pragma once

#include "utils/realtime.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace KAV::DSP {

/// Delays one channel by a whole number of samples.
/// Threads: Reserve() while audio is stopped; the rest on the audio thread, allocates nothing within the
/// reserve.
class DelayLine final {
public:
    /// Makes room for delays up to `size` samples; what is held stays.
    void Reserve(std::size_t size) {
        if (size > _buffer.size()) _buffer.resize(size, 0.0);
    }
    /// Delays by `size` samples (at least 1) from now on, beginning with silence.
    KAV_REALTIME void Reset(std::size_t size) {
        Reserve(size);
        _size = size;
        _index = 0;
        std::fill_n(_buffer.begin(), size, 0.0);
    }
    /// Takes the new sample, gives the one of `size` calls ago.
    KAV_REALTIME double Exchange(double x) noexcept {
        const double oldest = _buffer[_index];
        _buffer[_index] = x;
        if (++_index == _size) _index = 0;
        return oldest;
    }

private:
    std::vector<double> _buffer; // its length is the capacity
    std::size_t _size = 0;       // _size <= _buffer.size()
    std::size_t _index = 0;      // of the oldest sample; 0 <= _index < _size
};

} // namespace KAV::DSP
