#include "pixels/resample_weights.h"

#include <algorithm>
#include <cmath>

namespace KAV::Pixels {

namespace {

/// The cubic of Catmull and Rom.
double Cubic(double x) noexcept {
    x = std::abs(x);
    if (x < 1.0) return (1.5 * x - 2.5) * x * x + 1.0;
    if (x < 2.0) return ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0;
    return 0.0;
}

/// The exact weights of one pixel.
struct SKernel {
    std::int32_t first = 0;
    std::vector<double> values;
};

SKernel Kernel(std::int32_t pixel, std::int32_t from, std::int32_t to) {
    const double step = static_cast<double>(from) / to;
    const double widening = std::max(step, 1.0);
    const double centre = (pixel + 0.5) * step - 0.5;
    const auto lowest = static_cast<std::int32_t>(std::ceil(centre - 2.0 * widening));
    const auto highest = static_cast<std::int32_t>(std::floor(centre + 2.0 * widening));
    SKernel kernel;
    kernel.first = std::clamp(lowest, 0, from - 1);
    kernel.values.resize(static_cast<std::size_t>(std::clamp(highest, 0, from - 1) - kernel.first + 1));
    double sum = 0.0;
    for (std::int32_t i = lowest; i <= highest; ++i) {
        const double weight = Cubic((i - centre) / widening);
        kernel.values[static_cast<std::size_t>(std::clamp(i, 0, from - 1) - kernel.first)] += weight;
        sum += weight;
    }
    for (double& value : kernel.values) value /= sum;
    return kernel;
}

/// As whole numbers with exactly the right sum, so that an even area stays even.
void Round(const SKernel& kernel, int bits, std::int16_t* to) {
    std::int32_t left = 1 << bits;
    std::size_t largest = 0;
    for (std::size_t i = 0; i < kernel.values.size(); ++i) {
        to[i] = static_cast<std::int16_t>(std::lround(std::ldexp(kernel.values[i], bits)));
        left -= to[i];
        if (kernel.values[i] > kernel.values[largest]) largest = i;
    }
    to[largest] = static_cast<std::int16_t>(to[largest] + left);
}

} // namespace

SWeights CubicWeights(std::int32_t from, std::int32_t to, int maxBits) {
    SWeights weights;
    weights.from = from;
    weights.to = to;
    std::vector<SKernel> kernels;
    kernels.reserve(static_cast<std::size_t>(to));
    double highest = 0.0;
    for (std::int32_t i = 0; i < to; ++i) {
        const auto& kernel = kernels.emplace_back(Kernel(i, from, to));
        weights.taps = std::max(weights.taps, static_cast<std::int32_t>(kernel.values.size()));
        highest = std::max(highest, *std::max_element(kernel.values.begin(), kernel.values.end()));
    }
    weights.taps += weights.taps % 2;
    while (weights.bits < maxBits && std::ldexp(highest, weights.bits + 1) < 32000.0) ++weights.bits;
    weights.values.resize(static_cast<std::size_t>(to) * static_cast<std::size_t>(weights.taps));
    for (std::int32_t i = 0; i < to; ++i) {
        auto& kernel = kernels[static_cast<std::size_t>(i)];
        // A kernel at the end of the row begins earlier instead of reaching past it.
        const std::int32_t first = std::min(kernel.first, std::max(from - weights.taps, 0));
        kernel.values.insert(kernel.values.begin(), static_cast<std::size_t>(kernel.first - first), 0.0);
        weights.first.push_back(first);
        Round(kernel, weights.bits, weights.values.data() + i * static_cast<std::ptrdiff_t>(weights.taps));
    }
    return weights;
}

} // namespace KAV::Pixels
