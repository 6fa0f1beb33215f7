// Files that are nearly PNG pictures, by any head and any pixels. What can be decoded has the size that the
// head tells, and is scaled to any other.

#include "pixels/image_name.h"
#include "pixels/png_reader.h"
#include "pixels/resample.h"
#include "tests/support/chance.h"

#include <algorithm>
#include <cstdlib>
#include <vector>
#include <zlib.h>

using namespace KAV::Pixels;

namespace {

using Bytes = std::vector<std::uint8_t>;

void Require(bool holds) {
    if (!holds) std::abort();
}

std::uint32_t BigEndian(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

/// Puts the right sum after each chunk, as far as the chunks' lengths lead: no fuzzer finds sums by itself.
void MakeSumsRight(Bytes& file) {
    constexpr std::size_t Signature = 8;
    constexpr std::size_t Frame = 12; // length, name, sum
    for (std::size_t at = Signature; at + Frame <= file.size();) {
        const std::size_t length = BigEndian(&file[at]);
        if (length > file.size() - at - Frame) return;
        const auto sum = crc32(0, &file[at + 4], static_cast<uInt>(length + 4));
        for (std::size_t n = 0; n < 4; ++n)
            file[at + 8 + length + n] = static_cast<std::uint8_t>(sum >> (24 - 8 * n));
        at += Frame + length;
    }
}

void Scale(const SBitmap& picture, KAV::Tests::CChance& chance) {
    const SImageGrid whole;
    const SImageGrid grid{2, 2, 1};
    const auto width = chance.Between(1, 40);
    const auto height = chance.Between(1, 40);
    const auto& cut = picture.width >= grid.columns && chance.OneIn(2) ? grid : whole;
    const auto scaled = Resampled(picture, cut, width, height);
    Require(scaled.width == cut.columns * width && scaled.height == cut.rows * height);
    for (std::int32_t y = 0; y < scaled.height; ++y) {
        const auto* row =
            &scaled.bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(scaled.stride)];
        for (std::int32_t x = 0; x < scaled.width; ++x, row += 4)
            Require(std::max({row[0], row[1], row[2]}) <= row[3]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t Decisions = 3;
    if (size < Decisions) return 0;
    KAV::Tests::CChance chance({data, Decisions});
    Bytes file(data + Decisions, data + size);
    MakeSumsRight(file);
    const auto told = PngSize(file);
    const auto picture = ReadPng(file);
    Require(told || !picture);
    if (!picture) return 0;
    Require(picture->width == told->width && picture->height == told->height);
    if (std::int64_t{picture->width} * picture->height <= 1 << 16) Scale(*picture, chance);
    return 0;
}
