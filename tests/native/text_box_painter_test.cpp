#include "native/text_box_painter.h"

#include "tests/native/block_lettering.h"

#include <gtest/gtest.h>
#include <string>

namespace KAV::Tests {

namespace {

using Native::CLineEditor;
using Native::CTextBoxPainter;

std::uint32_t PixelAt(const Pixels::SBitmap& bitmap, std::int32_t x, std::int32_t y) {
    const auto* const pixel = bitmap.bytes.data() + y * bitmap.stride + 4 * x;
    return pixel[0] | (std::uint32_t{pixel[1]} << 8u) | (std::uint32_t{pixel[2]} << 16u) |
           (std::uint32_t{pixel[3]} << 24u);
}

/// A box of 100 by 15 pixels: the text's place is 94 pixels wide and begins at 3; the caret is one wide.
class TextBoxPainter : public testing::Test {
protected:
    /// The columns that differ between two pictures: [first, last]; -1: none.
    static std::pair<std::int32_t, std::int32_t> Differing(
        const Pixels::SBitmap& a, const Pixels::SBitmap& b) {
        std::pair<std::int32_t, std::int32_t> columns{-1, -1};
        for (std::int32_t x = 0; x < a.width; ++x) {
            for (std::int32_t y = 0; y < a.height; ++y) {
                if (PixelAt(a, x, y) == PixelAt(b, x, y)) continue;
                if (columns.first < 0) columns.first = x;
                columns.second = x;
            }
        }
        return columns;
    }
    std::pair<std::int32_t, std::int32_t> CaretOf(const CLineEditor& line) {
        const auto shown = _painter.Paint(line, true);
        return Differing(shown, _painter.Paint(line, false));
    }

    CBlockLettering _lettering;
    CTextBoxPainter _painter{_lettering, 100, 15};
};

} // namespace

TEST_F(TextBoxPainter, TextStandsInTheMiddle) {
    CLineEditor line(u"abcd", false);
    line.MoveTo(4, false);
    _painter.Paint(line, false);
    ASSERT_EQ(_lettering.drawn.size(), 1u);
    const std::int32_t left = 3 + (93 - 4 * CBlockLettering::Advance) / 2;
    EXPECT_EQ(3 + _lettering.drawn[0].left, left);
    EXPECT_EQ(CaretOf(line), std::pair(left + 32, left + 32));
    line.MoveTo(1, false);
    EXPECT_EQ(CaretOf(line), std::pair(left + 8, left + 8));
}

TEST_F(TextBoxPainter, TextAndCaretGrowWithTheBox) {
    CTextBoxPainter large(_lettering, 200, 30);
    const CLineEditor line(u"ab", false);
    large.Paint(line, true);
    _painter.Paint(line, true);
    ASSERT_EQ(_lettering.drawn.size(), 2u);
    EXPECT_EQ(_lettering.drawn[0].pixels, 22.0f);
    EXPECT_EQ(_lettering.drawn[1].pixels, 11.0f);
}

TEST_F(TextBoxPainter, SelectionLiesUnderItsCharactersOnly) {
    CLineEditor line(u"abcd", false);
    line.MoveTo(4, false);
    const auto plain = _painter.Paint(line, false);
    line.MoveTo(1, false);
    line.MoveTo(3, true);
    const auto marked = _painter.Paint(line, false);
    const std::int32_t left = 3 + (93 - 32) / 2;
    EXPECT_EQ(Differing(plain, marked), std::pair(left + 8 + 7, left + 24 - 1)) << "blocks hide the rest";
}

TEST_F(TextBoxPainter, EveryPixelIsOpaque) {
    const auto picture = _painter.Paint(CLineEditor(u"abcd", false), true);
    for (std::int32_t y = 0; y < picture.height; ++y)
        for (std::int32_t x = 0; x < picture.width; ++x) ASSERT_EQ(PixelAt(picture, x, y) >> 24u, 0xFFu);
}

TEST_F(TextBoxPainter, LongTextScrollsToTheCaret) {
    CLineEditor line(std::u16string(100, u'a'), false);
    const auto inBox = [this, &line] {
        const auto caret = CaretOf(line);
        return caret.first >= 3 && caret.second < 97 && caret.first == caret.second;
    };
    EXPECT_TRUE(inBox()) << "at the end";
    line.MoveTo(0, false);
    EXPECT_TRUE(inBox());
    EXPECT_EQ(CaretOf(line).first, 3);
    for (std::size_t n = 0; n <= 100; ++n) {
        line.MoveTo(n, false);
        ASSERT_TRUE(inBox()) << n;
    }
    EXPECT_EQ(CaretOf(line).first, 96) << "the text's end stands at the box's end";
    for (std::size_t n = 100; n-- > 90;) {
        line.MoveTo(n, false);
        ASSERT_TRUE(inBox()) << n;
    }
    EXPECT_LT(CaretOf(line).first, 40) << "it moves no further than needed";
    line.MoveTo(100, false);
    for (int n = 0; n < 90; ++n) line.Erase(CLineEditor::EMove::Left);
    _painter.Paint(line, false);
    EXPECT_EQ(CaretOf(line).first, 3 + (93 - 80) / 2 + 80) << "the rest fits, and stands in the middle";
}

TEST_F(TextBoxPainter, OfALongTextOnlyTheVisiblePartIsDrawn) {
    CLineEditor line(std::u16string(30000, u'a'), false);
    line.MoveTo(15000, false);
    _painter.Paint(line, true);
    ASSERT_EQ(_lettering.drawn.size(), 1u);
    EXPECT_LE(_lettering.drawn[0].text.size(), 15u);
}

TEST_F(TextBoxPainter, NeverDrawsHalfACharacter) {
    std::u16string text;
    for (int n = 0; n < 50; ++n) text += u"\U0001D11E";
    CLineEditor line(text, false);
    for (std::size_t n = 0; n <= 100; n += 2) {
        line.MoveTo(n, false);
        _lettering.drawn.clear();
        _painter.Paint(line, true);
        ASSERT_EQ(_lettering.drawn.size(), 1u);
        const auto& drawn = _lettering.drawn[0].text;
        EXPECT_EQ(drawn.front() & 0xFC00u, 0xD800u) << n;
        EXPECT_EQ(drawn.back() & 0xFC00u, 0xDC00u) << n;
    }
}

TEST_F(TextBoxPainter, FindsTheGapNearestToAPlace) {
    CLineEditor line(u"a\U0001D11Ebc", false);
    _painter.Paint(line, false);
    const std::int32_t left = 3 + (93 - 32) / 2;
    EXPECT_EQ(_painter.PositionAt(-100), 0u);
    EXPECT_EQ(_painter.PositionAt(left + 3), 0u);
    EXPECT_EQ(_painter.PositionAt(left + 5), 1u);
    EXPECT_EQ(_painter.PositionAt(left + 11), 1u);
    EXPECT_EQ(_painter.PositionAt(left + 13), 3u);
    EXPECT_EQ(_painter.PositionAt(left + 33), 5u);
    EXPECT_EQ(_painter.PositionAt(1000), 5u);
}

TEST_F(TextBoxPainter, FindsPlacesInAScrolledText) {
    CLineEditor line(std::u16string(100, u'a'), false);
    _painter.Paint(line, false);
    EXPECT_EQ(_painter.PositionAt(96), 100u);
    EXPECT_EQ(_painter.PositionAt(96 - 16), 98u);
    EXPECT_LT(_painter.PositionAt(-20), 88u) << "beyond the box the text goes on";
}

TEST_F(TextBoxPainter, TinyBoxIsPaintedAsWell) {
    for (std::int32_t size = 1; size < 10; ++size) {
        CTextBoxPainter tiny(_lettering, size, size);
        EXPECT_EQ(tiny.Paint(CLineEditor(u"abc", false), true).width, size);
    }
}

} // namespace KAV::Tests
