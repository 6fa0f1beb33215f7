#include "tools/kavhost/audio/speaker_layout.h"

#include <gtest/gtest.h>

using namespace KAV::Host;

TEST(SpeakerLayout, HasTheMasksOfTheUsualNames) {
    // Bits: FL 1, FR 2, FC 4, LFE 8, BL 0x10, BR 0x20, FLC 0x40, FRC 0x80, BC 0x100, SL 0x200, SR 0x400,
    // TFL 0x1000, TFR 0x4000, TBL 0x8000, TBR 0x20000.
    const std::pair<const char*, std::uint32_t> layouts[] = {{"mono", 0x4}, {"stereo", 0x3}, {"2.1", 0xB},
        {"3.0", 0x7}, {"4.0", 0x107}, {"quad", 0x33}, {"5.0", 0x37}, {"5.0(side)", 0x607}, {"5.1", 0x3F},
        {"5.1(side)", 0x60F}, {"6.1", 0x70F}, {"7.1", 0x63F}, {"7.1(wide)", 0xFF}, {"5.1.2", 0x503F},
        {"5.1.4", 0x2D03F}, {"7.1.4", 0x2D63F}, {"unspecified", 0}};
    for (const auto& [name, mask] : layouts) {
        EXPECT_EQ(MaskOf(name), mask) << name;
        EXPECT_EQ(LayoutName(mask), name);
    }
    EXPECT_EQ(MaskOf("LCRS"), MaskOf("4.0"));
    EXPECT_EQ(MaskOf("5.1(Side)"), 0x60Fu);
}

TEST(SpeakerLayout, IsASetOfSpeakersToo) {
    EXPECT_EQ(MaskOf("FL+FR+LFE"), 0xBu);
    EXPECT_EQ(MaskOf("tbr + fl"), 0x20001u);
    EXPECT_EQ(LayoutName(0x20001), "FL+TBR");
    EXPECT_EQ(LayoutName(0x1), "FL");
    for (const char* wrong : {"", "+", "FL+", "FL+FL", "XX", "FL FR", "5.2"})
        EXPECT_FALSE(MaskOf(wrong)) << wrong;
}

TEST(SpeakerLayout, IsANumberToo) {
    EXPECT_EQ(MaskOf("0x60f"), 0x60Fu);
    EXPECT_EQ(MaskOf("0X60F"), 0x60Fu);
    EXPECT_EQ(MaskOf("0"), 0u);
    EXPECT_EQ(MaskOf("0xffffffff"), 0xFFFFFFFFu);
    EXPECT_EQ(LayoutName(0x80000001), "0x80000001");
    EXPECT_EQ(MaskText(0x60F), "0x60f");
    for (const char* wrong : {"0x", "0xg", "0x100000000", "60f", "0x-1", "0x3 f", "-0"})
        EXPECT_FALSE(MaskOf(wrong)) << wrong;
}
