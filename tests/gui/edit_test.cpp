#include "gui/edit.h"

#include "gui/label.h"
#include "gui/value_widget.h"
#include "tests/gui/recording_root.h"
#include "tests/support/recording_window.h"
#include "tests/support/toolkit_robot.h"
#include "utils/exceptions.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

/// A label with a value from -20 to 20 and a name, which notes what is typed.
class CTyped final : public CLabel, public CValueWidget {
public:
    CTyped(CGUI& root, const SWidgetInfo& info) : CLabel(root, info), CValueWidget(root, *this, info) {}

    void OnMouseDown(std::int32_t, std::int32_t, std::uint32_t flags) override {
        if ((flags & MouseRight) != 0) Root().Edit().Open(this, false);
    }
    const std::u16string& GetText(bool valueOnly) override { return valueOnly ? valueText : sHint; }
    void SetText(std::u16string_view text) override {
        typed.push_back(Utils::ToUtf8(text));
        CLabel::SetText(text);
    }
    void SetPlain(float plain, bool history) override {
        typed.push_back(Utils::FormatFixed(static_cast<double>(plain), 2) + (history ? " recorded" : ""));
        CValueWidget::SetPlain(plain, history);
    }
    bool SetValue(float normal, bool) override {
        value = std::isnan(normal) ? -1.0f : normal;
        return true;
    }

    std::u16string valueText = u"+3.5";
    Lines typed;
    float value = 0.5f;
};

class Edit : public testing::Test {
protected:
    Edit() { root.CreateGUIWindow(); }

    static SWidgetInfo Info(float x, float y, float w, float h) {
        SWidgetInfo info;
        info.sName = u"Knob";
        info.sText = u"a name";
        info.fX = x;
        info.fY = y;
        info.fW = w;
        info.fH = h;
        info.fMin = -20.0f;
        info.fMax = 20.0f;
        info.bInteractive = true;
        return info;
    }
    /// What a knob gets when this is typed and Enter is pressed.
    Lines AfterTyping(std::u16string_view text) {
        knob.typed.clear();
        robot.Click(110, 110, MouseRight);
        robot.Type(text);
        robot.Enter();
        return knob.typed;
    }

    CRecordingWindow window;
    CRecordingRoot root{{&window, nullptr}};
    CTyped knob{root, Info(100, 100, 60, 40)};
    CWidget plain{root, Info(300, 100, 60, 41)};
    CToolkitRobot robot{window};
};

} // namespace

TEST_F(Edit, OpensOverTheMiddleOfAValueWidgetWithItsNumber) {
    root.Edit().Open(&knob, false);
    ASSERT_TRUE(window.textBox);
    EXPECT_EQ(window.textBox->text, u"+3.5");
    EXPECT_TRUE(window.textBox->numbersOnly);
    EXPECT_EQ(window.textBox->place, (SPixelRect{105, 112, 50, 15}));
    EXPECT_EQ(root.Edit().piTarget, &knob);
    EXPECT_FALSE(root.Edit().bText);
}

TEST_F(Edit, OpensAlongALabelWithItsWholeText) {
    root.Edit().Open(&knob, true);
    ASSERT_TRUE(window.textBox);
    EXPECT_EQ(window.textBox->text, u"a name");
    EXPECT_FALSE(window.textBox->numbersOnly);
    EXPECT_EQ(window.textBox->place, (SPixelRect{100, 112, 60, 15}));
    EXPECT_TRUE(root.Edit().bText);
}

TEST_F(Edit, IsAsLargeAsTheDisplaysDensityAsks) {
    CRecordingWindow dense;
    dense.dotsPerInch = 144;
    CRecordingRoot denseRoot({&dense, nullptr});
    EXPECT_EQ(denseRoot.Edit().sW.fValue, 75.0f);
    EXPECT_EQ(denseRoot.Edit().sH.fValue, 23.0f);
}

TEST_F(Edit, NoWidgetClosesTheBox) {
    root.Edit().Open(&knob, true);
    root.Edit().Open(nullptr, false);
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(root.Edit().piTarget, nullptr);
    EXPECT_FALSE(root.Edit().bText);
    EXPECT_EQ(knob.typed, Lines{});
}

TEST_F(Edit, WithoutABoxThereIsNoTarget) {
    window.opensTextBoxes = false;
    root.Edit().Open(&knob, true);
    EXPECT_EQ(root.Edit().piTarget, nullptr);
    EXPECT_FALSE(root.Edit().bText);
    root.Edit().Commit();
    EXPECT_EQ(knob.typed, Lines{});
}

TEST_F(Edit, EnterTakesTheNumberAsOneStepOfHistory) {
    EXPECT_EQ(AfterTyping(u"-12.5"), Lines{"-12.50 recorded"});
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(root.Edit().piTarget, nullptr);
}

TEST_F(Edit, EnterTakesTheTextOfALabel) {
    root.Edit().Open(&knob, true);
    robot.Type(u"Drums & Bass");
    robot.Enter();
    EXPECT_EQ(knob.typed, Lines{"Drums & Bass"});
    EXPECT_EQ(knob.Text(), u"Drums & Bass");
    EXPECT_FALSE(window.textBox);
    EXPECT_FALSE(root.Edit().bText);
}

TEST_F(Edit, LosingTheFocusTakesWhatWasTypedAsWell) {
    root.Edit().Open(&knob, false);
    robot.Type(u"7");
    window.client->OnTyped();
    EXPECT_EQ(knob.typed, Lines{"7.00 recorded"});
}

TEST_F(Edit, TakesWhatWasTypedOnce) {
    root.Edit().Open(&knob, false);
    robot.Type(u"7");
    window.client->OnTyped();
    window.client->OnTyped();
    EXPECT_EQ(knob.typed, Lines{"7.00 recorded"});
}

TEST_F(Edit, APressInTheEditorClosesTheBoxWithoutEffect) {
    for (const std::uint32_t button : {MouseLeft, MouseRight}) {
        root.Edit().Open(&knob, true);
        robot.Type(u"lost");
        robot.Press(600, 500, button);
        EXPECT_FALSE(window.textBox);
        EXPECT_EQ(root.Edit().piTarget, nullptr);
        EXPECT_FALSE(root.Edit().bText);
        robot.Release(600, 500, button);
        EXPECT_EQ(knob.typed, Lines{});
    }
    root.Edit().Open(&knob, true);
    root.OnMouseDown(600, 500, MouseLeft);
    EXPECT_EQ(root.Edit().piTarget, nullptr) << "also without the window's event";
}

TEST_F(Edit, ReadsANumberAsFarAsItGoes) {
    EXPECT_EQ(AfterTyping(u"12k"), Lines{"12.00 recorded"});
    EXPECT_EQ(AfterTyping(u"1.5.7"), Lines{"1.50 recorded"});
    EXPECT_EQ(AfterTyping(u"-.5"), Lines{"-0.50 recorded"});
    EXPECT_EQ(AfterTyping(u"3-"), Lines{"3.00 recorded"});
}

TEST_F(Edit, WhatIsNoNumberCountsAs0) {
    EXPECT_EQ(AfterTyping(u"k"), Lines{"0.00 recorded"});
    EXPECT_EQ(AfterTyping(u"-"), Lines{"0.00 recorded"});
    EXPECT_EQ(AfterTyping(std::u16string(60, u'9')), Lines{"0.00 recorded"}) << "larger than any";
    root.Edit().Open(&knob, false);
    window.textBox->text = u"abc"; // from the clipboard
    knob.typed.clear();
    robot.Enter();
    EXPECT_EQ(knob.typed, Lines{"0.00 recorded"});
}

TEST_F(Edit, EnterInAnEmptyBoxSetsTheValueTo0) {
    EXPECT_EQ(AfterTyping(u"\b"), Lines{"0.00 recorded"});
    EXPECT_EQ(knob.value, 0.5f) << "0 lies in the middle";
}

TEST_F(Edit, NumbersAreTypedWithDigitsPointMinusAndK) {
    std::u16string passed;
    for (std::uint32_t character = 1; character < 0x10000; ++character) {
        if (CEdit::IsTypable(static_cast<char16_t>(character))) passed += static_cast<char16_t>(character);
    }
    EXPECT_EQ(passed, u"\b\f-.0123456789k");
}

TEST_F(Edit, AWidgetWithoutValueOrTextTakesNothing) {
    root.Edit().Open(&plain, false);
    ASSERT_TRUE(window.textBox);
    EXPECT_EQ(window.textBox->place, (SPixelRect{305, 113, 50, 15}));
    robot.Type(u"5");
    robot.Enter();
    root.Edit().Open(&plain, true);
    EXPECT_EQ(window.textBox->text, u"");
    robot.Enter();
    EXPECT_EQ(root.Edit().piTarget, nullptr);
}

TEST_F(Edit, AWidgetThatEndsClosesItsBoxWithoutEffect) {
    auto passing = std::make_unique<CTyped>(root, Info(200, 100, 60, 40));
    root.Edit().Open(passing.get(), true);
    robot.Type(u"lost");
    passing.reset();
    ASSERT_EQ(root.Edit().piTarget, nullptr);
    EXPECT_FALSE(window.textBox);
    robot.Enter();
    root.Edit().Open(&knob, true);
    passing = std::make_unique<CTyped>(root, Info(200, 100, 60, 40));
    passing.reset();
    EXPECT_TRUE(window.textBox) << "another widget's box stays";
}

TEST_F(Edit, ClosesTheBoxBeforeTheValueTakesEffect) {
    class CAsking final : public CLabel {
    public:
        using CLabel::CLabel;
        void SetText(std::u16string_view) override {
            found = Root().Edit().piTarget;
            Root().Edit().Open(this, true); // as one that asks again
        }
        CWidget* found = this;
    };
    CAsking asking(root, Info(200, 100, 60, 40));
    root.Edit().Open(&asking, true);
    robot.Enter();
    EXPECT_EQ(asking.found, nullptr);
    EXPECT_EQ(root.Edit().piTarget, &asking);
    EXPECT_TRUE(window.textBox);
}

TEST_F(Edit, AnErrorOfTheTargetLeavesNoBoxOpen) {
    class CThrowing final : public CLabel {
    public:
        using CLabel::CLabel;
        void SetText(std::u16string_view) override { throw Exceptions::Std(u"no", u"TEST"); }
    };
    CThrowing throwing(root, Info(200, 100, 60, 40));
    root.Edit().Open(&throwing, true);
    robot.Enter();
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(root.Edit().piTarget, nullptr);
    ASSERT_EQ(window.boxes.size(), 1u);
}
