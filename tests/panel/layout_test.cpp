#include "panel/layout.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

using namespace KAV::Panel;

namespace {

constexpr std::string_view StoredSize = "##Sz-1x-1pxSb0.png";

/// The expected content of a row.
struct SExpected {
    int id = -1;
    std::string name;
    EClass widget = EClass::Widget;
    SRect rect;
    std::string picture; // without the mark of its size; empty: no picture
};
using ExpectedRows = std::vector<SExpected>;

void Append(ExpectedRows& rows, const ExpectedRows& more) {
    rows.insert(rows.end(), more.begin(), more.end());
}

/// Sixteen level meters: eight columns 12 pixels apart, then eight more from `right`.
ExpectedRows Meters(const std::string& stem, int firstId, double left, double right) {
    ExpectedRows rows;
    for (int n = 1; n <= 16; ++n) {
        const double x = n <= 8 ? left + 12 * (n - 1) : right + 12 * (n - 9);
        rows.push_back({firstId - (n - 1), stem + std::to_string(n), EClass::Meter, {x, 123, 13, 310},
            "MeterLed((63x47))"});
    }
    return rows;
}

/// Sixteen cells of the top bar, in two rows 31 pixels apart. The columns are uneven.
ExpectedRows Channels(const std::string& stem, EClass widget, int firstId, int step, double top,
    double height, const std::string& picture) {
    const double columns[] = {123, 177, 231, 285, 340, 396, 450, 504};
    ExpectedRows rows;
    for (int n = 1; n <= 16; ++n)
        rows.push_back({firstId + step * (n - 1), stem + std::to_string(n), widget,
            {columns[(n - 1) % 8], n <= 8 ? top : top + 31, 50, height}, picture});
    return rows;
}

ExpectedRows Expected() {
    ExpectedRows rows;
    // clang-format off
    Append(rows, {
        {-1, "Bkgnd", EClass::Widget, {0, 84, 754, 363}, "GUI_front_root_Panel_1500px"},
    });
    Append(rows, Meters("Input Meter ", -24, 8, 156));
    Append(rows, {
        {32, "Input Gain", EClass::Knob, {110, 118, 61, 337}, "Fader((63x20))"},
        {33, "Threshold", EClass::Knob, {272, 118, 61, 337}, "Fader((63x20))"},
        {35, "Auto Release", EClass::AutoRelease, {328, 406, 99, 38}, "ButtonAR((2))"},
        {34, "Limiter", EClass::Button, {328, 114, 99, 38}, "ButtonIn((2))"},
        {36, "Release", EClass::Release, {442, 118, 61, 337}, "Fader((63x20))"},
    });
    Append(rows, Meters("Output Meter ", -40, 502, 650));
    Append(rows, {
        {37, "Output Ceiling", EClass::Knob, {604, 118, 61, 337}, "Fader((63x20))"},
        {-1, "ToolbarRtg", EClass::ToolbarTop, {0, 0, 754, 84}, "Toolbar_Up"},
        {-2, "ToolInputRouting", EClass::Routing, {14, 23, 58, 21}, ""},
    });
    Append(rows, Channels("ToolMeterCh", EClass::Meter, -4, -1, 45, 10, "ToolMeterChnl((16))"));
    Append(rows, Channels("ToolCh", EClass::ChannelBtn, 1, 1, 20, 30, "ToolBtnRtg((2))"));
    Append(rows, {
        {-20, "ToolMeterFx1", EClass::Meter, {590, 45, 50, 10}, "ToolMeterChnl((16))"},
        {-21, "ToolMeterFx2", EClass::Meter, {644, 45, 50, 10}, "ToolMeterChnl((16))"},
        {-22, "ToolMeterFx3", EClass::Meter, {590, 76, 50, 10}, "ToolMeterChnl((16))"},
        {-23, "ToolMeterFx4", EClass::Meter, {644, 76, 50, 10}, "ToolMeterChnl((16))"},
        {17, "ToolBtnFx1", EClass::FxBtn, {590, 20, 50, 30}, "ToolBtnRtg((2))"},
        {18, "ToolBtnFx2", EClass::FxBtn, {644, 20, 50, 30}, "ToolBtnRtg((2))"},
        {19, "ToolBtnFx3", EClass::FxBtn, {590, 51, 50, 30}, "ToolBtnRtg((2))"},
        {20, "ToolBtnFx4", EClass::FxBtn, {644, 51, 50, 30}, "ToolBtnRtg((2))"},
        {-1, "ToolBtnFxCopy", EClass::FxBtnCopy, {702, 2, 48, 48}, "ToolBtnCopy((2))"},
        {-1, "ToolBtnDown", EClass::RoutingDropDownBtn, {64, 23, 20, 20}, "ToolBtnDown((2))"},
        {21, "ToolFxSolo", EClass::Button, {581, 97, 10, 10}, ""},
        {22, "ToolFxMute", EClass::Button, {604, 97, 10, 10}, ""},
        {-1, "ToolBtnRoutingEdit", EClass::RoutingEdit, {53, 53, 45, 23}, "ToolBtnEdit((2))"},
        {-1, "Toolbar", EClass::Widget, {0, 447, 754, 107}, "Toolbar_Down3"},
        {-1, "ToolBtnLoad", EClass::PatchLoad, {363, 531, 44, 22}, "ToolBtnLoad((2))"},
        {-1, "ToolBtnSave", EClass::PatchSave, {407, 531, 44, 22}, "ToolBtnSave((2))"},
        {-1, "ToolPatch", EClass::Patch, {164, 532, 195, 21}, "ToolDisplay"},
        {-1, "ToolBtnUndo", EClass::Undo, {23, 531, 44, 22}, "ToolBtnUndo((3))"},
        {-1, "ToolBtnRedo", EClass::Redo, {67, 531, 44, 22}, "ToolBtnRedo((3))"},
        {-1, "ToolBtnABCopy", EClass::PatchABCopy, {133, 531, 27, 22}, "ToolBtnABCopy((2))"},
        {30, "Oversampling", EClass::Oversampling, {601, 532, 96, 21}, "ToolOversampling"},
        {-1, "ToolBtnPrev", EClass::PreviousPatch, {171, 534, 16, 16}, "ToolBtnPrev((2))"},
        {-1, "ToolBtnNext", EClass::NextPatch, {336, 534, 16, 16}, "ToolBtnNext((2))"},
        {-1, "ToolBtnPrevOS", EClass::PreviousOversampling, {606, 534, 16, 16}, "ToolBtnPrev((2))"},
        {-1, "ToolBtnNextOS", EClass::NextOversampling, {675, 534, 16, 16}, "ToolBtnNext((2))"},
        {-1, "ToolBtnA", EClass::PatchABInplace, {111, 531, 27, 22}, "ToolBtnA((4))"},
        {-1, "Size", EClass::Widget, {741, 540, 12, 12}, "ResizeArrow"},
        {31, "Hiqh Quality", EClass::Button, {656, 533, 20, 20}, "HQ((2))"},
        {29, "Main Output Gain", EClass::Knob, {674, 474, 60, 60}, "Knob02((63x8))"},
        {23, "Main Input Gain", EClass::Knob, {18, 474, 60, 60}, "Knob02((63x8))"},
        {-3, "Settings", EClass::Settings, {705, 533, 19, 19}, ""},
        {-1, "ToolAbout", EClass::BtnAbout, {705, 533, 19, 19}, "ToolBtnAbout((2))"},
        {-56, "UpdateLed", EClass::NewVersionLED, {699, 531, 15, 15}, "Lamp_2((2))"},
        {24, "Macro 1", EClass::MacroKnob, {179, 482, 50, 50}, "Knob03((63x8))"},
        {-1, "Macro 1", EClass::MacroBtn, {160, 449, 84, 30}, "ToolBtnMacro((2))"},
        {25, "Macro 2", EClass::MacroKnob, {267, 482, 50, 50}, "Knob03((63x8))"},
        {-1, "Macro 2", EClass::MacroBtn, {248, 449, 84, 30}, "ToolBtnMacro((2))"},
        {26, "Macro 3", EClass::MacroKnob, {354, 482, 50, 50}, "Knob03((63x8))"},
        {-1, "Macro 3", EClass::MacroBtn, {336, 449, 84, 30}, "ToolBtnMacro((2))"},
        {27, "Macro 4", EClass::MacroKnob, {441, 482, 50, 50}, "Knob03((63x8))"},
        {-1, "Macro 4", EClass::MacroBtn, {424, 449, 84, 30}, "ToolBtnMacro((2))"},
        {28, "Macro 5", EClass::MacroKnob, {529, 482, 50, 50}, "Knob03((63x8))"},
        {-1, "Macro 5", EClass::MacroBtn, {512, 449, 84, 30}, "ToolBtnMacro((2))"},
        {-1, "Macro 1/1", EClass::Knob, {134, 477, 12, 12}, "Knob04((63x8))"},
        {-57, "Gain Reduction", EClass::GR, {332, 161, 91, 206}, ""},
    });
    // clang-format on
    return rows;
}

std::vector<SPanelRow> RowsOf(const std::set<EClass>& widgets) {
    std::vector<SPanelRow> rows;
    for (const auto& row : Rows()) {
        if (widgets.contains(row.widget)) rows.push_back(row);
    }
    return rows;
}

const std::set<EClass> Keys{EClass::RoutingDropDownBtn, EClass::PatchLoad, EClass::PatchSave, EClass::Undo,
    EClass::Redo, EClass::PatchABCopy, EClass::PatchABInplace, EClass::PreviousPatch, EClass::NextPatch,
    EClass::PreviousOversampling, EClass::NextOversampling, EClass::BtnAbout};
const std::set<EClass> Switches{EClass::Button, EClass::AutoRelease, EClass::ChannelBtn, EClass::FxBtn,
    EClass::FxBtnCopy, EClass::RoutingEdit, EClass::MacroBtn};
const std::set<EClass> Values{EClass::Knob, EClass::Release, EClass::MacroKnob};

} // namespace

TEST(PanelRows, HaveTheirOrderIdNameClassPlaceAndPicture) {
    const auto expected = Expected();
    ASSERT_EQ(Rows().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& row = Rows()[i];
        const auto& want = expected[i];
        SCOPED_TRACE(want.name);
        EXPECT_EQ(row.id, want.id);
        EXPECT_EQ(row.name, want.name);
        EXPECT_EQ(row.widget, want.widget);
        EXPECT_EQ(row.rect, want.rect);
        if (want.picture.empty()) {
            EXPECT_EQ(row.sprite, nullptr);
        } else {
            ASSERT_NE(row.sprite, nullptr);
            EXPECT_EQ(row.sprite->image, want.picture + std::string(StoredSize));
        }
    }
}

TEST(PanelRows, LieInsideThePanelAndTheLowestBandEndsOneRowBelow) {
    for (const auto& row : Rows()) {
        EXPECT_GE(row.rect.x, 0) << row.name;
        EXPECT_GE(row.rect.y, 0) << row.name;
        EXPECT_GT(row.rect.w, 0) << row.name;
        EXPECT_GT(row.rect.h, 0) << row.name;
        EXPECT_LE(row.rect.Right(), PanelWidth) << row.name;
        EXPECT_LE(row.rect.Bottom(), row.name == "Toolbar" ? PanelHeight + 1 : PanelHeight) << row.name;
    }
    EXPECT_EQ(PanelWidth, 754);
    EXPECT_EQ(PanelHeight, 553);
}

TEST(PanelRows, HaveUniqueIdsUnlessTheyHaveNoValue) {
    std::set<int> ids;
    for (const auto& row : Rows()) {
        EXPECT_TRUE(row.id == -1 || ids.insert(row.id).second) << row.name;
    }
    EXPECT_EQ(*ids.begin(), -57);
    EXPECT_EQ(*ids.rbegin(), 37);
}

TEST(PanelRows, HaveUniqueNamesExceptMacroKnobsAndTheirButtons) {
    std::map<std::string_view, int> names;
    for (const auto& row : Rows()) ++names[row.name];
    for (const auto& [name, count] : names) {
        const bool isMacro = name.starts_with("Macro ") && name.size() == 7;
        EXPECT_EQ(count, isMacro ? 2 : 1) << name;
    }
}

TEST(PanelRows, HavePicturesThatFitTheirRectangles) {
    for (const auto& row : Rows()) {
        if (row.sprite == nullptr) continue;
        EXPECT_EQ(row.rect.w, row.sprite->panelWidth) << row.name;
        EXPECT_EQ(row.rect.h, row.sprite->panelHeight) << row.name;
    }
}

TEST(PanelRows, GiveFadersAndKnobsTheirRangeStartAndUnit) {
    struct SScale {
        double minimum, maximum, value;
        std::string unit;
        double hintAt;
    };
    std::map<std::string_view, SScale> scales{{"Input Gain", {-20, 0, 1.0, "dB", -0.1}},
        {"Threshold", {-30, 0, 1.0, "dB", -0.1}}, {"Release", {0.01, 1000, 0.4, "ms", -0.1}},
        {"Output Ceiling", {-30, 0, 1.0, "dB", -0.1}}, {"Main Output Gain", {-24, 24, 0.5, "dB", -0.3}},
        {"Main Input Gain", {-24, 24, 0.5, "dB", -0.3}}, {"Macro 1/1", {0, 100, 0.5, "%", -0.4}}};
    for (const auto* name : {"Macro 1", "Macro 2", "Macro 3", "Macro 4", "Macro 5"})
        scales[name] = {-100, 100, 0.5, "%", -0.1};
    const auto rows = RowsOf(Values);
    EXPECT_EQ(rows.size(), scales.size());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto& scale = scales.at(row.name);
        EXPECT_EQ(row.minimum, scale.minimum);
        EXPECT_EQ(row.maximum, scale.maximum);
        EXPECT_EQ(row.value, scale.value);
        EXPECT_EQ(row.unit, scale.unit);
        EXPECT_EQ(row.hintAt, scale.hintAt);
        EXPECT_EQ(row.riseMs, 250);
        EXPECT_EQ(row.fallMs, 250);
    }
}

TEST(PanelRows, LetSwitchesRiseAndFallAndKeysFallOnly) {
    for (const auto& row : RowsOf(Switches)) {
        EXPECT_EQ(row.riseMs, 250) << row.name;
        EXPECT_EQ(row.fallMs, 250) << row.name;
    }
    for (const auto& row : RowsOf(Keys)) {
        EXPECT_EQ(row.riseMs, 0) << row.name;
        EXPECT_EQ(row.fallMs, 250) << row.name;
    }
    for (const auto& row : RowsOf({EClass::Meter, EClass::Widget, EClass::Routing, EClass::Patch})) {
        EXPECT_EQ(row.riseMs, 0) << row.name;
        EXPECT_EQ(row.fallMs, 0) << row.name;
    }
    const auto& lamp = RowOf("UpdateLed");
    EXPECT_EQ(lamp.riseMs, 1000);
    EXPECT_EQ(lamp.fallMs, 1000);
    EXPECT_EQ(lamp.hintAt, -0.4);
}

TEST(PanelRows, BeginWithTheseSwitchesOn) {
    std::set<std::string_view> on;
    for (const auto& row : Rows()) {
        if (Values.contains(row.widget)) continue;
        if (row.value != 0.0) on.insert(row.name);
        EXPECT_TRUE(row.value == 0.0 || row.value == 1.0) << row.name;
    }
    EXPECT_EQ(on, (std::set<std::string_view>{"Limiter", "ToolCh1", "ToolCh2", "ToolBtnFx1", "ToolBtnDown"}));
}

TEST(PanelRows, BeginWithTheseTexts) {
    std::map<std::string_view, std::string_view> texts;
    for (const auto& row : Rows()) {
        if (!row.text.empty()) texts.emplace(row.name, row.text);
    }
    const std::map<std::string_view, std::string_view> expected{{"ToolInputRouting", "Text"},
        {"ToolCh1", "L"}, {"ToolCh2", "R"}, {"ToolBtnFx1", "1"}, {"ToolBtnFx2", "2"}, {"ToolBtnFx3", "3"},
        {"ToolBtnFx4", "4"}, {"ToolPatch", "Text"}, {"Oversampling", "OS x1"}, {"Macro 1", "Macro 1"},
        {"Macro 2", "Macro 2"}, {"Macro 3", "Macro 3"}, {"Macro 4", "Macro 4"}, {"Macro 5", "Macro 5"}};
    EXPECT_EQ(texts, expected);
    EXPECT_EQ(RowOf(EClass::MacroKnob).text, "");
    EXPECT_EQ(RowOf("Oversampling").list, "OS x1||OS x2||OS x4||OS x8");
    for (const auto& row : Rows()) {
        EXPECT_EQ(row.list.empty(), row.name != "Oversampling") << row.name;
    }
}

TEST(PanelRows, HaveATitleWhereTheirNameIsNotForTheUser) {
    std::map<std::string, std::string> expected{{"Bkgnd", "Background"},
        {"ToolbarRtg", "Channels and groups"}, {"ToolInputRouting", "Routing"},
        {"ToolBtnFxCopy", "Copy this group to another one"}, {"ToolBtnDown", "Choose a routing"},
        {"ToolFxSolo", "Solo of this group"}, {"ToolFxMute", "Mute of this group"},
        {"ToolBtnRoutingEdit", "Edit the routing"}, {"Toolbar", "Macros and patches"},
        {"ToolBtnLoad", "Load a patch"}, {"ToolBtnSave", "Save the patch"}, {"ToolPatch", "Patch"},
        {"ToolBtnUndo", "Undo"}, {"ToolBtnRedo", "Redo"}, {"ToolBtnABCopy", "Copy to the other side"},
        {"ToolBtnPrev", "Previous patch"}, {"ToolBtnNext", "Next patch"},
        {"ToolBtnPrevOS", "Less oversampling"}, {"ToolBtnNextOS", "More oversampling"}, {"ToolBtnA", "A/B"},
        {"Size", "Size of the editor"}, {"Settings", "Settings"}, {"ToolAbout", "Settings"},
        {"UpdateLed", "New version"}};
    for (int n = 1; n <= 16; ++n) {
        const auto number = std::to_string(n);
        expected["ToolCh" + number] = "Channel " + number;
        expected["ToolMeterCh" + number] = "Level of channel " + number;
    }
    for (int n = 1; n <= 4; ++n) {
        const auto number = std::to_string(n);
        expected["ToolBtnFx" + number] = "Group " + number;
        expected["ToolMeterFx" + number] = "Level of group " + number;
    }
    std::map<std::string, std::string> titles;
    for (const auto& row : Rows()) {
        if (!row.title.empty()) titles.emplace(row.name, row.title);
        EXPECT_TRUE(!row.name.starts_with("Tool") || !row.title.empty()) << row.name;
    }
    EXPECT_EQ(titles, expected);
}

TEST(PanelRows, WriteTextsInTheseSizesAndColours) {
    std::map<std::string_view, double> sizes{{"ToolInputRouting", -0.35}, {"ToolPatch", -0.35},
        {"Oversampling", -0.35}, {"ToolBtnRoutingEdit", 0.15}};
    std::map<std::string_view, std::uint32_t> colours{{"ToolBtnRoutingEdit", 0xFFC8C8C8}};
    for (int n = 0; n < 16; ++n) {
        const auto name = RowOf(EClass::ChannelBtn, n).name;
        sizes[name] = n % 8 < 4 ? 0.13 : 0.12;
        colours[name] = n < 2 ? 0xFFC0C0C0 : 0x64C0C0C0;
    }
    for (int n = 0; n < 4; ++n) {
        const auto name = RowOf(EClass::FxBtn, n).name;
        sizes[name] = 0.13;
        colours[name] = n < 1 ? 0xFFC0C0C0 : 0x64C0C0C0;
    }
    for (const auto& row : Rows()) {
        const bool isMacro = row.widget == EClass::MacroBtn;
        const double otherSize = isMacro ? 0.08 : 10.0;
        EXPECT_EQ(row.textSize, sizes.contains(row.name) ? sizes[row.name] : otherSize) << row.name;
        EXPECT_EQ(row.textColour, colours.contains(row.name) ? colours[row.name] : 0xFFFFFFFF) << row.name;
    }
}

TEST(PanelRows, JoinTheGroupButtonsAndNothingElse) {
    for (const auto& row : Rows())
        EXPECT_EQ(row.radioGroup, row.widget == EClass::FxBtn ? 1 : -1) << row.name;
}

TEST(PanelRows, HideWhatOnlyHoldsAValueThePatternAndTheLamp) {
    std::set<std::string_view> hidden;
    for (const auto& row : Rows()) {
        if (!row.visible) hidden.insert(row.name);
    }
    EXPECT_EQ(hidden, (std::set<std::string_view>{"ToolFxSolo", "ToolFxMute", "Macro 1/1", "UpdateLed"}));
}

TEST(PanelRows, FadeChannelMetersAndTheResizeMark) {
    for (const auto& row : Rows()) {
        const bool fades = row.name.starts_with("ToolMeterCh") || row.name == "Size";
        EXPECT_EQ(row.fadeMs, fades ? 250 : 0) << row.name;
    }
}

TEST(PanelRows, AreFoundByNameAndByPlaceInTheirClass) {
    EXPECT_EQ(RowOf("Macro 3").widget, EClass::MacroKnob);
    EXPECT_EQ(RowOf(EClass::MacroBtn, 2).name, "Macro 3");
    EXPECT_EQ(RowOf(EClass::ChannelBtn, 15).id, 16);
    EXPECT_THROW(RowOf("High Quality"), std::out_of_range);
    EXPECT_THROW(RowOf(EClass::MacroBtn, 5), std::out_of_range);
    EXPECT_THROW(RowOf(EClass::MacroBtn, -1), std::out_of_range);
    EXPECT_THROW(RowOf(EClass::Hint), std::out_of_range);
}

TEST(HintRow, StandsOverTheToolbar) {
    EXPECT_EQ(HintRow().id, -1);
    EXPECT_EQ(HintRow().name, "Hint");
    EXPECT_EQ(HintRow().rect, (SRect{663, 484, 74.258, 41.76}));
    EXPECT_EQ(HintRow().sprite, &SpriteOf("hint"));
    EXPECT_EQ(HintRow().textSize, 0.013);
    EXPECT_EQ(HintRow().margin, 12);
    EXPECT_EQ(HintRow().inset, 8);
    EXPECT_EQ(HintRow().fadeMs, 250);
}

TEST(LightRow, HasASizeAndNoPicture) {
    EXPECT_EQ(LightRow().id, -1);
    EXPECT_EQ(LightRow().name, "Light");
    EXPECT_EQ(LightRow().rect, (SRect{0, 0, 32, 32}));
    EXPECT_EQ(LightRow().sprite, nullptr);
}
