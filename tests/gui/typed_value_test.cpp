// A person types the value of a knob.

#include "gui/knob.h"
#include "tests/gui/doubled_editor.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class TypedValue : public DoubledEditor {
protected:
    static SWidgetInfo KnobInfo() {
        auto info = Info(5, 0.25f);
        info.fMin = -20.0f;
        info.fMax = 20.0f;
        return info;
    }
    void TypeIntoKnob(std::u16string_view text) {
        robot.Click(110, 60, MouseRight);
        robot.Type(text);
        robot.Enter();
    }

    CKnob knob{root, KnobInfo()};
};

} // namespace

TEST_F(TypedValue, IsOneEditAndOneStepOfHistory) {
    TypeIntoKnob(u"10");
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.750", "end 5"}));
    EXPECT_EQ(root.Records(), 1u);
    root.Undo();
    EXPECT_EQ(knob.Value(), 0.25f);
}

TEST_F(TypedValue, BeginsWithThePresentNumberSelected) {
    robot.Click(110, 60, MouseRight);
    ASSERT_TRUE(window.textBox);
    EXPECT_EQ(window.textBox->text, u"-10.0");
    EXPECT_TRUE(window.textBox->selected);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(TypedValue, OutsideTheRangeIsItsNearerEnd) {
    TypeIntoKnob(u"99");
    EXPECT_EQ(knob.Value(), 1.0f);
    TypeIntoKnob(u"-99");
    EXPECT_EQ(knob.Value(), 0.0f);
}

TEST_F(TypedValue, FromTheClipboardMayBeInfiniteOrNoNumber) {
    for (const auto& [text, value] : {std::pair{u"inf", 1.0f}, {u"-inf", 0.0f}, {u"nan", 0.0f}}) {
        robot.Click(110, 60, MouseRight);
        ASSERT_TRUE(window.textBox);
        window.textBox->text = text;
        robot.Enter();
        EXPECT_EQ(knob.Value(), value);
    }
}

TEST_F(TypedValue, LettersDoNotReachTheBox) {
    TypeIntoKnob(u"a1x Hz,2");
    EXPECT_EQ(knob.GetPlain(), 12.0f);
}

TEST_F(TypedValue, IsLostToAPressAnywhere) {
    robot.Click(110, 60, MouseRight);
    robot.Type(u"10");
    robot.Click(500, 300);
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(knob.Value(), 0.25f);
}

TEST_F(TypedValue, IsLostWithTheEditor) {
    robot.Click(110, 60, MouseRight);
    robot.Type(u"10");
    root.DestroyGUIWindow();
    EXPECT_EQ(root.Edit().piTarget, nullptr);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(TypedValue, MayFollowAnotherAtOnce) {
    TypeIntoKnob(u"10");
    TypeIntoKnob(u"-10");
    EXPECT_EQ(knob.Value(), 0.25f);
    EXPECT_EQ(root.Records(), 2u);
}
