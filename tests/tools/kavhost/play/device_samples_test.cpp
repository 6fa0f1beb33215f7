#include "tools/kavhost/play/device_samples.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace KAV::Host;

namespace {

template<typename SAMPLE>
std::vector<SAMPLE> Stored(const std::vector<float>& samples, EDeviceSamples kind) {
    std::vector<unsigned char> bytes(samples.size() * BytesOf(kind) + 1, 0xA5);
    StoreSamples(samples, kind, bytes.data());
    EXPECT_EQ(bytes.back(), 0xA5); // not a byte more
    std::vector<SAMPLE> stored(samples.size());
    std::memcpy(stored.data(), bytes.data(), stored.size() * sizeof(SAMPLE));
    return stored;
}

} // namespace

TEST(DeviceSamples, KeepFloatingPointNumbersAsTheyAre) {
    const std::vector<float> samples{0, 0.1f, -1, 1.5f};
    EXPECT_EQ(Stored<float>(samples, EDeviceSamples::Float32), samples);
}

TEST(DeviceSamples, AreWholeNumbersOf16BitsAndClipped) {
    const std::vector<float> samples{0, 0.5f, -0.5f, 1, -1, 7, -7, std::numeric_limits<float>::quiet_NaN()};
    const std::vector<std::int16_t> expected{0, 16384, -16384, 32767, -32768, 32767, -32768, 0};
    EXPECT_EQ(Stored<std::int16_t>(samples, EDeviceSamples::Int16), expected);
}

TEST(DeviceSamples, AreRoundedToTheNearest) {
    const std::vector<float> samples{1.4f / 32768, 1.6f / 32768, -1.6f / 32768};
    EXPECT_EQ(Stored<std::int16_t>(samples, EDeviceSamples::Int16), (std::vector<std::int16_t>{1, 2, -2}));
}

TEST(DeviceSamples, AreWholeNumbersOf32Bits) {
    const std::vector<float> samples{0.5f, -1, 1, 2};
    constexpr auto most = std::numeric_limits<std::int32_t>::max();
    const std::vector<std::int32_t> expected{1 << 30, std::numeric_limits<std::int32_t>::min(), most, most};
    EXPECT_EQ(Stored<std::int32_t>(samples, EDeviceSamples::Int32), expected);
}

TEST(DeviceSamples, TakeThreeBytesFor24Bits) {
    const std::vector<float> samples{0.5f, -1, 1.0f / (1 << 23)};
    std::vector<unsigned char> bytes(9);
    StoreSamples(samples, EDeviceSamples::Int24, bytes.data());
    EXPECT_EQ(bytes, (std::vector<unsigned char>{0, 0, 0x40, 0, 0, 0x80, 1, 0, 0}));
}
