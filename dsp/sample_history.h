#pragma once

#include "utils/realtime.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV::DSP {

/// The last `length` values of a sequence, always contiguous in memory, with room after them for more. So a
/// run of new values is written, and old ones are read, at plain addresses; values are moved only
/// occasionally.
/// Threads: Reserve() while audio is stopped; the rest on the audio thread, allocates nothing within the
/// reserve.
/// reserve.
template<typename T>
class CSampleHistory final {
public:
    /// The longest run that Next() takes.
    static constexpr std::size_t LongestRun = 512;
    /// A run may write this many values past its end; they are ignored.
    static constexpr std::size_t Overhang = 16;

    /// Makes room for lengths up to `length`; the held values stay.
    void Reserve(std::size_t length) {
        const std::size_t size = length + Line + LongestRun + Overhang;
        if (size > _values.size()) _values.resize(size);
    }
    /// Holds `length` values from now on, all of them `value`.
    KAV_REALTIME void Reset(std::size_t length, T value) {
        Reserve(length);
        _length = length;
        _next = Start();
        std::fill_n(Held(), length, value);
    }
    /// Where to write the next `count` values (at most LongestRun); the held ones end right before it. The
    /// address is valid until the next call. It is at the start of a cache line as long as runs are multiples
    /// of one: values that were just stored as vectors are slow to read back across lines.
    KAV_REALTIME T* Next(std::size_t count) noexcept {
        if (_next + count + Overhang > _values.size()) {
            const auto held = Held();
            _next = Start();
            std::copy_n(held, _length, Held()); // moves down, so the order is right if they overlap
        }
        return _values.data() + _next;
    }
    /// Commits the first `count` values written at Next().
    KAV_REALTIME void Advance(std::size_t count) noexcept { _next += count; }

private:
    static constexpr std::size_t LineBytes = 64;
    static constexpr std::size_t Line = LineBytes / sizeof(T);

    /// The first place for a next value: at the start of a line, with the held values before it.
    std::size_t Start() const noexcept {
        const auto address = reinterpret_cast<std::uintptr_t>(_values.data() + _length);
        return _length + (LineBytes - address % LineBytes) % LineBytes / sizeof(T);
    }
    auto Held() noexcept { return _values.begin() + static_cast<std::ptrdiff_t>(_next - _length); }

    std::vector<T> _values;  // at least _length + Line + LongestRun + Overhang, once there is a length
    std::size_t _length = 0; // held
    std::size_t _next = 0;   // where the next value goes; _length <= _next
};

} // namespace KAV::DSP
