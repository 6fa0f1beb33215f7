// The order of the virtual operations, which back ends of other programs would rely on if there were any: it
// is part of what these classes are.

#include "gui/button_mom.h"
#include "gui/knob.h"
#include "gui/value_display.h"
#include "tests/support/virtual_slots.h"

#include <gtest/gtest.h>

using namespace KAV::GUI;
using namespace KAV::Tests;

TEST(ValueSlots, OfALabelFollowThoseOfAWidget) {
    ExpectSlotsFrom(SlotOf(&CWidget::SoakTest) + 1,
        {SlotOf(&CLabel::MakeTextTexture), SlotOf(&CLabel::RenderText), SlotOf(&CLabel::DrawText),
            SlotOf(&CLabel::FontBasis), SlotOf(&CLabel::SetText)});
}

TEST(ValueSlots, OfAValueBeginItsOwnTable) {
    ExpectSlotsFrom(0,
        {SlotOf(&CValueWidget::ToNormal), SlotOf(&CValueWidget::SetValue), SlotOf(&CValueWidget::GetPlain),
            SlotOf(&CValueWidget::SetPlain), SlotOf(&CValueWidget::SetItems), SlotOf(&CValueWidget::SetItem),
            SlotOf(&CValueWidget::OnValueChanged), SlotOf(&CValueWidget::HistoryTarget),
            SlotOf(&CValueWidget::MakeHistory), SlotOf(&CValueWidget::HasHistory)});
}

TEST(ValueSlots, OfKnobsButtonsAndDisplaysFollowThoseOfALabel) {
    const auto first = SlotOf(&CLabel::SetText) + 1;
    ExpectSlotsFrom(first, {SlotOf(&CKnob::ValueFromPointer), SlotOf(&CKnob::SetDefault)});
    ExpectSlotsFrom(first, {SlotOf(&CButton::StateValue), SlotOf(&CButton::OnClick)});
    ExpectSlotsFrom(first, {SlotOf(&CValueDisplay::IsItemEnabled), SlotOf(&CValueDisplay::IsItemChecked),
                               SlotOf(&CValueDisplay::IsItemShown), SlotOf(&CValueDisplay::ShowMenu),
                               SlotOf(&CValueDisplay::SelectItem), SlotOf(&CValueDisplay::BeforeSelect),
                               SlotOf(&CValueDisplay::AfterSelect)});
}

TEST(ValueSlots, StayTheSameInDerivedClasses) {
    EXPECT_EQ(SlotOf(&CButtonMom::OnClick), SlotOf(&CButton::OnClick));
    EXPECT_EQ(SlotOf(static_cast<void (CButtonMom::*)(std::int32_t, std::int32_t, std::uint32_t)>(
                  &CButtonMom::OnMouseDown)),
        SlotOf(&CWidget::OnMouseDown));
    EXPECT_EQ(SlotOf(&CValueDisplay::SetText), SlotOf(&CLabel::SetText));
}
