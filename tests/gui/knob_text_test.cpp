// What a knob says of its value.

#include "gui/knob.h"
#include "tests/gui/doubled_editor.h"

#include <limits>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class KnobText : public DoubledEditor {
protected:
    static SWidgetInfo Ranged(float minimum, float maximum, float value) {
        auto info = Info(6, value);
        info.fMin = minimum;
        info.fMax = maximum;
        return info;
    }
    std::u16string TextOf(const SWidgetInfo& info) { return CKnob(root, info).GetText(true); }
};

} // namespace

TEST_F(KnobText, ItsTextHasItsDecimalsNameAndUnit) {
    auto info = Ranged(0.0f, 10.0f, 0.125f);
    info.sUnit = u"dB";
    CKnob value(root, info);
    EXPECT_EQ(value.GetText(true), u"1.2");
    EXPECT_EQ(value.GetText(false), u"Name: 1.2 dB");
    info.nDecimals = 3;
    EXPECT_EQ(TextOf(info), u"1.250");
}

TEST_F(KnobText, ItsHintHasItsTitleIfThereIsOne) {
    auto info = Ranged(0.0f, 10.0f, 0.5f);
    info.sTitle = u"Gain of the input";
    info.sUnit = u"dB";
    CKnob value(root, info);
    EXPECT_EQ(value.GetText(false), u"Gain of the input: 5.0 dB");
    EXPECT_EQ(value.GetText(true), u"5.0");
}

TEST_F(KnobText, ShowsAPlusOnlyInARangeOnBothSidesOfZero) {
    EXPECT_EQ(TextOf(Ranged(-20.0f, 20.0f, 0.75f)), u"+10.0");
    EXPECT_EQ(TextOf(Ranged(20.0f, -20.0f, 0.25f)), u"+10.0");
    EXPECT_EQ(TextOf(Ranged(-20.0f, 20.0f, 0.25f)), u"-10.0");
    EXPECT_EQ(TextOf(Ranged(-20.0f, 20.0f, 0.5f)), u"0.0");
    EXPECT_EQ(TextOf(Ranged(0.0f, 20.0f, 0.5f)), u"10.0");
    /// A value above its own range.
    struct SAbove final : CKnob {
        using CKnob::CKnob;
        float GetPlain() const noexcept override { return 3.0f; }
    } above(root, Ranged(-20.0f, 0.0f, 0.5f));
    EXPECT_EQ(above.GetText(true), u"3.0");
}

TEST_F(KnobText, ShowsInfinityByItsSign) {
    constexpr float Infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(TextOf(Ranged(0.0f, Infinity, 1.0f)), u"\u221E");
    EXPECT_EQ(TextOf(Ranged(0.0f, Infinity, 0.0f)), u"0.0");
}

TEST_F(KnobText, CutsANumberThatIsTooLong) {
    EXPECT_EQ(TextOf(Ranged(0.0f, 4194304.0f * 1024.0f * 1024.0f, 1.0f)), u"43980465111");
}

TEST_F(KnobText, ShowsOneMoreDecimalWhileShiftIsDown) {
    CKnob value(root, Ranged(0.0f, 10.0f, 0.125f));
    window.shift = true;
    EXPECT_EQ(value.GetText(true), u"1.25");
    window.shift = false;
    EXPECT_EQ(value.GetText(true), u"1.25") << "made when the value changed";
    value.SetValue(0.25f, false);
    EXPECT_EQ(value.GetText(true), u"2.5");
}

TEST_F(KnobText, WithAListShowsItsItem) {
    auto info = Info(6, 0.5f, u"a||b-sep-||c");
    info.sUnit = u"x";
    CKnob listed(root, info);
    EXPECT_EQ(listed.GetText(true), u"b");
    EXPECT_EQ(listed.GetText(false), u"Name: b x");
}

TEST_F(KnobText, WithoutANameKeepsItsTexts) {
    auto info = Info(6, 0.5f);
    info.sName.clear();
    CKnob nameless(root, info);
    nameless.sValueText = u"own";
    EXPECT_EQ(nameless.GetText(true), u"own");
    EXPECT_EQ(nameless.GetText(false), u"");
}
