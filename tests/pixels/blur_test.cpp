#include "pixels/blur.h"

#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

using namespace KAV::Pixels;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct SShape {
    int width = 0;
    int height = 0;
    int pixelBytes = 4;
    int padding = 0; ///< bytes after each row

    int Stride() const { return width * pixelBytes + padding; }
};

Bytes Noise(const SShape& shape) {
    std::mt19937 random(7);
    Bytes bytes(static_cast<std::size_t>(shape.Stride() * shape.height));
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// The same method, channel by channel and pixel by pixel.
Bytes Reference(Bytes bytes, const SShape& shape, int radius, int channels) {
    const auto at = [&](int x, int y, int channel) -> std::uint8_t& {
        x = x < 0 ? 0 : x >= shape.width ? shape.width - 1 : x;
        y = y < 0 ? 0 : y >= shape.height ? shape.height - 1 : y;
        return bytes[static_cast<std::size_t>(y * shape.Stride() + x * shape.pixelBytes + channel)];
    };
    for (int channel = 0; channel < channels; ++channel) {
        for (int r = 1; r <= radius; ++r) {
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    at(x, y, channel) =
                        static_cast<std::uint8_t>((at(x - r, y - r, channel) + at(x + r, y - r, channel) +
                                                      at(x - r, y + r, channel) + at(x + r, y + r, channel)) /
                                                  4);
                }
            }
        }
    }
    return bytes;
}

Bytes Blurred(Bytes bytes, const SShape& shape, int radius, bool alpha) {
    Blur(bytes, shape.width, shape.height, radius, shape.Stride(), alpha);
    return bytes;
}

/// One row of grey pixels, three bytes each, as the brightness of each pixel.
Bytes BlurredRow(const Bytes& greys, int radius) {
    Bytes bytes;
    for (const auto grey : greys) bytes.insert(bytes.end(), 3, grey);
    const SShape shape{static_cast<int>(greys.size()), 1, 3};
    bytes = Blurred(bytes, shape, radius, false);
    Bytes result;
    for (std::size_t i = 0; i < bytes.size(); i += 3) result.push_back(bytes[i]);
    return result;
}

} // namespace

TEST(Blur, EqualsThePlainMethodAtEverySizeAndRadius) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 5}, {3, 3}, {17, 9}, {8, 31}}) {
        for (const int radius : {0, 1, 2, 3, 4, 8, 40}) {
            for (const bool alpha : {false, true}) {
                const SShape shape{width, height};
                EXPECT_EQ(Blurred(Noise(shape), shape, radius, alpha),
                    Reference(Noise(shape), shape, radius, alpha ? 4 : 3))
                    << width << " x " << height << ", radius " << radius << ", alpha " << alpha;
            }
        }
    }
}

TEST(Blur, ReadsWhatThePassHasWritten) {
    // A single row reads its own left and right neighbours, twice each, and the left one is new already.
    EXPECT_EQ(BlurredRow({0, 0, 200, 0, 0}, 1), (Bytes{0, 100, 50, 25, 12}));
}

TEST(Blur, RunsOnePassForEachDistanceUpToTheRadius) {
    // 0 0 0 240 0 0 0: distance 1 makes 0 0 120 60 30 15 7, and distance 2 this:
    EXPECT_EQ(BlurredRow({0, 0, 0, 240, 0, 0, 0}, 2), (Bytes{60, 60, 45, 37, 26, 22, 16}));
}

TEST(Blur, TakesPixelsOutsideAsTheNearestInside) {
    EXPECT_EQ(BlurredRow({80, 0}, 1), (Bytes{40, 20}));
    // Distance 1 makes 40 60, distance 2 makes 50 55.
    EXPECT_EQ(BlurredRow({0, 80}, 3), (Bytes{52, 53}));
}

TEST(Blur, RoundsDown) {
    EXPECT_EQ(BlurredRow({1, 0}, 1), (Bytes{0, 0}));
    EXPECT_EQ(BlurredRow({255, 254}, 1), (Bytes{254, 254}));
}

TEST(Blur, LeavesAlphaAloneUnlessAsked) {
    const SShape shape{6, 5};
    const auto before = Noise(shape);
    const auto without = Blurred(before, shape, 3, false);
    const auto with = Blurred(before, shape, 3, true);
    int moved = 0;
    for (std::size_t i = 3; i < before.size(); i += 4) {
        EXPECT_EQ(without[i], before[i]);
        if (with[i] != before[i]) ++moved;
    }
    EXPECT_GT(moved, 20);
}

TEST(Blur, TakesTheSizeOfAPixelFromTheStride) {
    const SShape shape{9, 7, 3};
    EXPECT_EQ(Blurred(Noise(shape), shape, 4, false), Reference(Noise(shape), shape, 4, 3));
    // There is no fourth channel to blur: it would be the next pixel's first.
    EXPECT_EQ(Blurred(Noise(shape), shape, 4, true), Reference(Noise(shape), shape, 4, 3));
}

TEST(Blur, LeavesTheBytesAfterEachRowAlone) {
    const SShape shape{9, 7, 4, 3};
    EXPECT_EQ(Blurred(Noise(shape), shape, 4, true), Reference(Noise(shape), shape, 4, 4));
}

TEST(Blur, OfNothingIsNothing) {
    Bytes bytes{1, 2, 3, 4};
    Blur(bytes, 0, 1, 3, 4, true);
    Blur(bytes, 1, 0, 3, 4, true);
    Blur(bytes, -1, -1, 3, 4, true);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4}));
}

TEST(Blur, OfOnePixelKeepsIt) {
    Bytes bytes{1, 2, 3, 4};
    Blur(bytes, 1, 1, 8, 4, true);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4}));
}
