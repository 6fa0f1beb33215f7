#pragma once

#include "utils/realtime.h"

#include <array>
#include <cstddef>
#include <vector>

namespace KAV::DSP {

/// Minimum of the last `length` values by an 8-ary tournament tree, in O(log8 length) per value.
/// Threads: Reserve() while audio is stopped; the rest on the audio thread, allocates nothing within the
/// reserve.
class MinTree final {
public:
    void Reserve(std::size_t length);
    /// Covers `length` values (at least 1) from now on, as if that many ones had been pushed.
    KAV_REALTIME void Reset(std::size_t length);
    /// Takes a value and returns the minimum of the last `length`.
    KAV_REALTIME double Push(double value) noexcept;

private:
    static constexpr std::size_t Fan = 8;        // entries that one entry of the next level covers
    static constexpr std::size_t MaxLevels = 21; // 8^21 values: more than memory can hold

    static std::size_t Padded(std::size_t entries) { return (entries + Fan - 1) / Fan * Fan; }
    static std::size_t NodesFor(std::size_t length); // all levels and the root

    std::vector<double> _nodes;                   // levels one after another, the root last
    std::array<std::size_t, MaxLevels> _starts{}; // where each level begins in _nodes
    std::size_t _levels = 0;                      // levels below the root
    std::size_t _root = 0;                        // index of the root; _root < _nodes.size()
    std::size_t _length = 0;                      // of the window
    std::size_t _write = 0;                       // next entry of level 0 to write; 0 <= _write < _length
};

} // namespace KAV::DSP
