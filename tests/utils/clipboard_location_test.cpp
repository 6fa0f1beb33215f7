#include "tests/support/display.h"
#include "utils/location.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV::Utils;
using namespace KAV::Tests;
using namespace std::string_literals;

TEST(UniversalClipboard, KeepsBytesUnderTheWholeLocation) {
    const CDisplay display;
    const auto bytes = "a\0\xFF"s;
    std::size_t size = 77;
    EXPECT_EQ(WriteUniversal(u"clipboard:KAV \xE4", bytes.data(), bytes.size()), 3u);
    const auto data = ReadUniversal(u"clipboard:KAV \xE4", size);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::string(data.get(), size), bytes);
    EXPECT_EQ(data[size], 0);
    EXPECT_EQ(data[size + 1], 0);
    size = 77;
    EXPECT_EQ(ReadUniversal(u"clipboard:KAV", size), nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_FALSE(ExistsUniversal(u"clipboard:KAV \xE4")); // looked up as a path, which it isn't
}
