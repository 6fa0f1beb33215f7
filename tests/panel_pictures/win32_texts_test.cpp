// Texts of the panel on Windows: where they stand, next to the committed pictures of Linux. Only their
// typeface may differ.

#include "gui/label.h"
#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/golden_picture.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// The smallest rectangle around what differs between two pictures.
struct SInk {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0; // after the last pixel
    bool IsEmpty() const { return right <= left; }
};

SInk InkOf(const Pixels::SBitmap& picture, const Pixels::SBitmap& blank, const GUI::SPixelRect& where) {
    const auto difference = [&](std::int32_t x, std::int32_t y) {
        const auto at = static_cast<std::size_t>(y * picture.stride + 4 * x);
        int most = 0;
        for (std::size_t n = 0; n < 3; ++n)
            most = std::max(most, std::abs(picture.bytes[at + n] - blank.bytes[at + n]));
        return most;
    };
    const std::int32_t left = std::max(where.nL, 0);
    const std::int32_t top = std::max(where.nT, 0);
    const std::int32_t right = std::min(where.nL + where.nW, picture.width);
    const std::int32_t bottom = std::min(where.nT + where.nH, picture.height);
    int most = 0;
    for (std::int32_t y = top; y < bottom; ++y) {
        for (std::int32_t x = left; x < right; ++x) most = std::max(most, difference(x, y));
    }
    SInk ink{picture.width, picture.height, 0, 0};
    for (std::int32_t y = top; y < bottom; ++y) {
        for (std::int32_t x = left; x < right; ++x) {
            if (difference(x, y) <= std::max(most / 2, 10)) continue; // the soft edge of a letter
            ink.left = std::min(ink.left, x);
            ink.top = std::min(ink.top, y);
            ink.right = std::max(ink.right, x + 1);
            ink.bottom = std::max(ink.bottom, y + 1);
        }
    }
    return ink;
}

class PanelTexts : public PaintedPanel {
protected:
    std::vector<GUI::CLabel*> Labels() {
        std::vector<GUI::CLabel*> labels;
        for (auto* const widget : Gui().AllWidgets()) {
            auto* const label = dynamic_cast<GUI::CLabel*>(widget);
            if (label != nullptr && label->IsVisible() && !label->Text().empty()) labels.push_back(label);
        }
        return labels;
    }
};

} // namespace

TEST_F(PanelTexts, StandWhereTheyStandElsewhereWholeAndInsideTheirBoxes) {
    constexpr double nearest = 2.0; // pixels
    for (const std::int32_t width : {500, 754, 1508}) {
        Renew();
        ShowAtWidth(width);
        const auto shown = Shown();
        const auto committed = CommittedPicture("panel/rest_" + std::to_string(width));
        struct SText {
            std::u16string text;
            GUI::SPixelRect box;
        };
        std::vector<SText> texts;
        for (auto* const label : Labels()) {
            texts.push_back({label->Text(), label->PixelRect()});
            label->bTextSlide = false;
            label->SetText(u"");
        }
        ASSERT_EQ(texts.size(), 14u);
        Gui().Invalidate();
        robot.Tick();
        const auto blank = Shown();
        for (const auto& [text, box] : texts) {
            SCOPED_TRACE(Utils::ToUtf8(text) + " at " + std::to_string(width));
            constexpr std::int32_t around = 4;
            const GUI::SPixelRect wide{
                box.nL - around, box.nT - around, box.nW + 2 * around, box.nH + 2 * around};
            const auto ink = InkOf(shown, blank, wide);
            const auto expected = InkOf(committed, blank, box);
            ASSERT_FALSE(ink.IsEmpty());
            ASSERT_FALSE(expected.IsEmpty());
            // A text that were cut would reach one of the sides.
            EXPECT_GT(ink.left, box.nL);
            EXPECT_GT(ink.top, box.nT);
            EXPECT_LT(ink.right, box.nL + box.nW);
            EXPECT_LT(ink.bottom, box.nT + box.nH);
            EXPECT_NEAR(ink.top, expected.top, nearest);
            EXPECT_NEAR(ink.bottom, expected.bottom, nearest);
            EXPECT_NEAR((ink.left + ink.right) / 2.0, (expected.left + expected.right) / 2.0, nearest);
        }
    }
}
