#include "platform/clipboard.h"

#include "tests/support/display.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV::Platform;
using namespace KAV::Tests;

namespace {

std::string Read(const std::string& format) {
    const SBytes bytes = ReadClipboard(format);
    return bytes.data != nullptr ? std::string(bytes.data.get(), bytes.size) : std::string("(nothing)");
}

bool Write(const std::string& format, const std::string& data) {
    return WriteClipboard(format, data.data(), data.size());
}

} // namespace

TEST(Clipboard, ReturnsWhatWasWrittenUnderTheSameFormat) {
    const CDisplay display;
    const std::string bytes("patch\0with\xFF bytes", 17);
    ASSERT_TRUE(Write("clipboard:KAV test", bytes));
    EXPECT_EQ(Read("clipboard:KAV test"), bytes);
    EXPECT_EQ(Read("clipboard:KAV test"), bytes);
    EXPECT_EQ(Read("clipboard:another"), "(nothing)");
}

TEST(Clipboard, HoldsTheLastOfSeveralFormats) {
    const CDisplay display;
    ASSERT_TRUE(Write("clipboard:first", "one"));
    ASSERT_TRUE(Write("clipboard:second", "two"));
    EXPECT_EQ(Read("clipboard:second"), "two");
    EXPECT_EQ(Read("clipboard:first"), "(nothing)");
}

TEST(Clipboard, TakesAMegabyte) {
    const CDisplay display;
    std::string large(1 << 20, '\0');
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 7 + i / 256);
    ASSERT_TRUE(Write("clipboard:large", large));
    EXPECT_EQ(Read("clipboard:large"), large);
}
