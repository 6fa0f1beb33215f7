#include "dsp/min_tree.h"

#include <algorithm>

namespace KAV::DSP {

namespace {

constexpr double Padding = 1e6; // above any gain, so that it never wins

} // namespace

std::size_t MinTree::NodesFor(std::size_t length) {
    std::size_t nodes = 0;
    std::size_t entries = length;
    do {
        nodes += Padded(entries);
        entries = Padded(entries) / Fan;
    } while (entries > 1);
    return nodes + 1;
}

void MinTree::Reserve(std::size_t length) {
    const std::size_t nodes = NodesFor(length);
    if (nodes > _nodes.size()) _nodes.resize(nodes, 1.0);
}

void MinTree::Reset(std::size_t length) {
    Reserve(length);
    _length = length;
    _write = 0;
    _levels = 0;
    std::size_t start = 0;
    std::size_t entries = length;
    do {
        const std::size_t padded = Padded(entries);
        _starts[_levels++] = start;
        std::fill_n(_nodes.begin() + static_cast<std::ptrdiff_t>(start), padded, Padding);
        std::fill_n(_nodes.begin() + static_cast<std::ptrdiff_t>(start), entries, 1.0);
        start += padded;
        entries = padded / Fan;
    } while (entries > 1);
    _root = start;
    _nodes[_root] = 1.0;
}

double MinTree::Push(double value) noexcept {
    _nodes[_write] = value;
    std::size_t entry = _write;
    if (++_write == _length) _write = 0;
    for (std::size_t level = 0; level < _levels; ++level) {
        const std::size_t parent = entry / Fan;
        const double* block = _nodes.data() + _starts[level] + parent * Fan;
        double minimum = block[0];
        for (std::size_t i = 1; i < Fan; ++i) minimum = std::min(minimum, block[i]);
        const std::size_t next = level + 1 < _levels ? _starts[level + 1] : _root;
        _nodes[next + parent] = minimum;
        entry = parent;
    }
    return _nodes[_root];
}

} // namespace KAV::DSP
