#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace KAV::Host {

/// The lowest and the highest of some values; empty if there are none.
struct SSpan {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -std::numeric_limits<double>::infinity();

    bool IsEmpty() const noexcept { return lowest > highest; }
    void Add(double value) noexcept; ///< not-a-number counts as no value
    void Add(const SSpan& other) noexcept;
    bool operator==(const SSpan&) const noexcept = default;
};

/// The lowest and highest of a value over time, in memory that does not grow with the time. Equal steps of
/// time are collected in bins, and whenever there are too many bins each pair of neighbours is merged. A
/// merged bin equals one that had collected its steps from the start.
class CMinMaxSeries final {
public:
    static constexpr std::size_t UsualMostBins = 4096;

    /// `mostBins` is even.
    explicit CMinMaxSeries(std::size_t mostBins = UsualMostBins) : _mostBins(mostBins) {}

    void Add(const SSpan& step);

    std::span<const SSpan> Bins() const noexcept { return _bins; }      ///< the last one may lack steps
    std::uint64_t StepsPerBin() const noexcept { return _stepsPerBin; } ///< a power of two
    std::uint64_t Steps() const noexcept { return _steps; }

private:
    void Halve();

    std::size_t _mostBins;
    std::vector<SSpan> _bins;
    std::uint64_t _stepsPerBin = 1;
    std::uint64_t _steps = 0;
    std::uint64_t _room = 0; ///< steps that the last bin can still take
};

} // namespace KAV::Host
