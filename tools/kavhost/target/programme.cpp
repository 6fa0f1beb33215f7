#include "tools/kavhost/target/programme.h"

#include <algorithm>
#include <cmath>

namespace KAV::Host {

namespace {

constexpr double OffsetLufs = -0.691;
constexpr double AbsoluteGateLufs = -70;
constexpr double RelativeGate = 0.1; // -10 LU
constexpr std::size_t BlockTenths = 4;

double Linear(double decibels) noexcept {
    return std::pow(10.0, decibels / 10);
}

/// The mean energy of the blocks above the gate; 0 if there are none.
double MeanAbove(std::span<const Tenths> files, double gate) {
    double sum = 0;
    std::size_t blocks = 0;
    for (const auto& file : files) {
        for (std::size_t i = BlockTenths; i <= file.size(); ++i) {
            double block = 0;
            for (std::size_t k = i - BlockTenths; k < i; ++k) block += file[k];
            block /= static_cast<double>(BlockTenths);
            if (block < gate) continue;
            sum += block;
            ++blocks;
        }
    }
    return blocks > 0 ? sum / static_cast<double>(blocks) : 0;
}

} // namespace

double EnergyOf(double lufs) noexcept {
    return Linear(lufs - OffsetLufs);
}

double LufsOf(double energy) noexcept {
    return 10 * std::log10(energy) + OffsetLufs;
}

double GatedLufs(std::span<const Tenths> files, double gainDb) {
    const double absolute = EnergyOf(AbsoluteGateLufs - gainDb);
    const double ungated = MeanAbove(files, absolute);
    if (ungated <= 0) return -std::numeric_limits<double>::infinity();
    return LufsOf(MeanAbove(files, std::max(absolute, RelativeGate * ungated))) + gainDb;
}

} // namespace KAV::Host
