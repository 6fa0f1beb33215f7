#include "pixels/resample.h"

#include "pixels/resample_weights.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <emmintrin.h>
#include <new>
#include <vector>

// The work is done row by row: source rows are premultiplied as they are reached, the rows under one kernel
// are added up to one row of the new height, and that one is scaled to the new width. So besides the result
// only a few rows are in memory, and they stay in the processor's cache. Sums are whole numbers, because
// 16-bit products in pairs are what every x86-64 processor does fastest.

namespace KAV::Pixels {

namespace {

constexpr std::int32_t MaxScaledSide = 65535; // of a scaled picture: more isn't meant seriously
constexpr int FractionBits = 6; // of the values between the two passes, which fit 16 bits with overshoots

/// Premultiplies `count` bytes: (colour x alpha + 127) / 255 without a division. x / 255 is
/// (x + 1 + x / 256) / 256 for every x below 65535.
void PremultiplyRow(const std::uint8_t* from, std::uint8_t* to, std::size_t count) noexcept {
    const __m128i zero = _mm_setzero_si128();
    const __m128i one = _mm_set1_epi16(1);
    const __m128i rounding = _mm_set1_epi16(127);
    const __m128i alphaFactor = _mm_set_epi16(255, 0, 0, 0, 255, 0, 0, 0);
    const __m128i colours = _mm_set_epi16(0, -1, -1, -1, 0, -1, -1, -1);
    const auto two = [&](__m128i pixels) { // of 16 bits each
        __m128i alpha = _mm_shufflelo_epi16(pixels, _MM_SHUFFLE(3, 3, 3, 3));
        alpha = _mm_shufflehi_epi16(alpha, _MM_SHUFFLE(3, 3, 3, 3));
        const __m128i factors = _mm_or_si128(_mm_and_si128(alpha, colours), alphaFactor);
        const __m128i products = _mm_add_epi16(_mm_mullo_epi16(pixels, factors), rounding);
        const __m128i quotient = _mm_add_epi16(_mm_add_epi16(products, one), _mm_srli_epi16(products, 8));
        return _mm_srli_epi16(quotient, 8);
    };
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i),
            _mm_packus_epi16(two(_mm_unpacklo_epi8(pixels, zero)), two(_mm_unpackhi_epi8(pixels, zero))));
    }
    for (; i < count; i += 4) {
        const int alpha = from[i + 3];
        for (std::size_t c = 0; c < 3; ++c)
            to[i + c] = static_cast<std::uint8_t>((from[i + c] * alpha + 127) / 255);
        to[i + 3] = from[i + 3];
    }
}

void CopyRow(const SBitmap& from, std::int32_t y, std::int32_t width, std::uint8_t* to) noexcept {
    const auto* const row =
        from.bytes.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(from.stride);
    const std::size_t count = 4 * static_cast<std::size_t>(width);
    if (from.alpha == EAlpha::Straight) {
        PremultiplyRow(row, to, count);
        return;
    }
    std::memcpy(to, row, count);
    if (from.alpha == EAlpha::None)
        for (std::size_t i = 3; i < count; i += 4) to[i] = 255;
}

/// The last source rows, premultiplied, as many as lie under one kernel.
class CRows final {
public:
    CRows(const SBitmap& from, std::int32_t width, std::int32_t count)
        : _from(from), _width(width), _count(count),
          _pitch((4 * static_cast<std::size_t>(width) + 15) / 16 * 16),
          _bytes(_pitch * static_cast<std::size_t>(count)) {}

    /// No row above this one is needed any more.
    void Skip(std::int32_t y) noexcept { _next = std::max(_next, y); }
    const std::uint8_t* At(std::int32_t y) noexcept {
        for (; _next <= y; ++_next) CopyRow(_from, _next, _width, Slot(_next));
        return Slot(y);
    }
    /// Bytes from row to row, in whole registers.
    std::size_t Pitch() const noexcept { return _pitch; }

private:
    std::uint8_t* Slot(std::int32_t y) noexcept {
        return _bytes.data() + _pitch * static_cast<std::size_t>(y % _count);
    }

    const SBitmap& _from;
    std::int32_t _width;
    std::int32_t _count;
    std::int32_t _next = 0; // the first row that hasn't been read
    std::size_t _pitch;
    std::vector<std::uint8_t> _bytes;
};

__m128i Pair(const std::int16_t* weights) noexcept {
    std::int32_t both = 0;
    std::memcpy(&both, weights, sizeof both);
    return _mm_set1_epi32(both);
}

/// Adds up the rows under one kernel; `to` gets values with FractionBits after the point.
void AddRows(const std::vector<const std::uint8_t*>& rows, const std::int16_t* weights, int weightBits,
    std::size_t pitch, std::int16_t* to) noexcept {
    const __m128i zero = _mm_setzero_si128();
    const __m128i rounding = _mm_set1_epi32(1 << (weightBits - FractionBits - 1));
    const __m128i shift = _mm_cvtsi32_si128(weightBits - FractionBits);
    for (std::size_t i = 0; i < pitch; i += 16) {
        __m128i sums[4] = {rounding, rounding, rounding, rounding};
        for (std::size_t k = 0; k < rows.size(); k += 2) {
            const __m128i weight = Pair(weights + k);
            const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k] + i));
            const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k + 1] + i));
            const __m128i low = _mm_unpacklo_epi8(upper, lower);
            const __m128i high = _mm_unpackhi_epi8(upper, lower);
            const auto add = [&](int n, __m128i bytes) {
                sums[n] = _mm_add_epi32(sums[n], _mm_madd_epi16(bytes, weight));
            };
            add(0, _mm_unpacklo_epi8(low, zero));
            add(1, _mm_unpackhi_epi8(low, zero));
            add(2, _mm_unpacklo_epi8(high, zero));
            add(3, _mm_unpackhi_epi8(high, zero));
        }
        for (auto& sum : sums) sum = _mm_sra_epi32(sum, shift);
        auto* const place = reinterpret_cast<__m128i*>(to + i);
        _mm_storeu_si128(place, _mm_packs_epi32(sums[0], sums[1]));
        _mm_storeu_si128(place + 1, _mm_packs_epi32(sums[2], sums[3]));
    }
}

/// One pixel: the weighted sum of `count` pixels, an even number. Overshoots end at 0 and 255, and no colour
/// exceeds its alpha.
void AddPixels(const std::int16_t* from, const std::int16_t* weights, std::int32_t count, __m128i rounding,
    __m128i shift, std::uint8_t* to) noexcept {
    __m128i sum = rounding;
    for (std::int32_t k = 0; k < count; k += 2) {
        const __m128i both = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 4 * k));
        const __m128i byChannel = _mm_unpacklo_epi16(both, _mm_srli_si128(both, 8));
        sum = _mm_add_epi32(sum, _mm_madd_epi16(byChannel, Pair(weights + k)));
    }
    const __m128i words = _mm_packs_epi32(_mm_sra_epi32(sum, shift), sum);
    const __m128i alpha = _mm_shufflelo_epi16(words, _MM_SHUFFLE(3, 3, 3, 3));
    const std::int32_t pixel = _mm_cvtsi128_si32(_mm_packus_epi16(_mm_min_epi16(words, alpha), words));
    std::memcpy(to, &pixel, sizeof pixel);
}

void ScaleRow(const std::int16_t* from, std::int32_t columns, const SWeights& weights, std::uint8_t* to) {
    const int bits = weights.bits + FractionBits;
    const __m128i rounding = _mm_set1_epi32(1 << (bits - 1));
    const __m128i shift = _mm_cvtsi32_si128(bits);
    for (std::int32_t column = 0; column < columns;
         ++column, from += 4 * static_cast<std::ptrdiff_t>(weights.from)) {
        for (std::int32_t x = 0; x < weights.to; ++x, to += 4) {
            AddPixels(from + 4 * static_cast<std::ptrdiff_t>(weights.first[static_cast<std::size_t>(x)]),
                weights.Of(x), weights.taps, rounding, shift, to);
        }
    }
}

SBitmap Scaled(const SBitmap& from, const SImageGrid& grid, const SWeights& across, const SWeights& down) {
    SBitmap to = TransparentBitmap(grid.columns * across.to, grid.rows * down.to);
    CRows rows(from, grid.columns * across.from, down.taps);
    std::vector<std::int16_t> between(
        rows.Pitch() + 8); // a tap beyond the last pixel is read, and weighs nothing
    std::vector<const std::uint8_t*> under(static_cast<std::size_t>(down.taps));
    auto* place = to.bytes.data();
    for (std::int32_t row = 0; row < grid.rows; ++row) {
        const std::int32_t top = row * down.from;
        for (std::int32_t y = 0; y < down.to; ++y, place += to.stride) {
            const std::int32_t first = top + down.first[static_cast<std::size_t>(y)];
            rows.Skip(first);
            for (std::int32_t k = 0; k < down.taps; ++k)
                under[static_cast<std::size_t>(k)] = rows.At(std::min(first + k, top + down.from - 1));
            AddRows(under, down.Of(y), down.bits, rows.Pitch(), between.data());
            ScaleRow(between.data(), grid.columns, across, place);
        }
    }
    return to;
}

} // namespace

SBitmap Resampled(
    const SBitmap& from, const SImageGrid& grid, std::int32_t cellWidth, std::int32_t cellHeight) {
    if (std::max(std::int64_t{grid.columns} * cellWidth, std::int64_t{grid.rows} * cellHeight) >
        MaxScaledSide)
        throw std::bad_alloc();
    if (grid.columns * cellWidth == from.width && grid.rows * cellHeight == from.height)
        return Premultiplied(from);
    const std::int32_t width = from.width / grid.columns;
    const std::int32_t height = from.height / grid.rows;
    // The bits that still leave 32 bits enough for the sum of a kernel: of bytes, and of what lies between
    // the passes.
    return Scaled(from, grid, CubicWeights(width, cellWidth, 16), CubicWeights(height, cellHeight, 22));
}

SBitmap Premultiplied(const SBitmap& from) {
    SBitmap to = TransparentBitmap(from.width, from.height);
    for (std::int32_t y = 0; y < to.height; ++y)
        CopyRow(from, y, to.width, to.bytes.data() + static_cast<std::ptrdiff_t>(y) * to.stride);
    return to;
}

} // namespace KAV::Pixels
