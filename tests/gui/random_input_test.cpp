// Whatever a user, a host and the system do, in whatever order: the editor stays in a state that makes sense.

#include "tests/gui/random_editor.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

constexpr int Steps = 10000;
constexpr std::uint32_t Editors = 8;

std::uint32_t AnyModifiers(CRandomEditor& editor) {
    return (editor.OneIn(4) ? std::uint32_t{MouseShift} : 0u) |
           (editor.OneIn(4) ? std::uint32_t{MouseControl} : 0u);
}

std::uint32_t AnyButton(CRandomEditor& editor) {
    return editor.OneIn(3) ? MouseRight : MouseLeft;
}

/// Somewhere in the window or around it; more often than chance would have it, on a widget.
SPixel AnyPlace(CRandomEditor& editor) {
    if (editor.OneIn(2) || editor.widgets.empty())
        return {editor.Between(-20, 780), editor.Between(-20, 580)};
    const auto rect = editor.AnyWidget().PixelRect();
    return {rect.nL + rect.nW / 2, rect.nT + rect.nH / 2};
}

/// Any command of the menu, its sub-menus included; 0 if it has none.
std::uint32_t AnyCommand(CRandomEditor& editor, const Menu& menu) {
    if (menu.empty()) return 0;
    const auto& item = menu[editor.Below(static_cast<std::uint32_t>(menu.size()))];
    return item.vsSub.empty() ? item.nCommand : AnyCommand(editor, item.vsSub);
}

void UseTheMouse(CRandomEditor& editor) {
    const auto at = AnyPlace(editor);
    switch (editor.Below(6)) {
    case 0:
    case 1:
        return editor.robot.Move(at.x, at.y, AnyModifiers(editor));
    case 2:
        return editor.robot.Press(at.x, at.y, AnyButton(editor) | AnyModifiers(editor));
    case 3:
        return editor.robot.Release(at.x, at.y, AnyButton(editor) | AnyModifiers(editor));
    case 4:
        return editor.robot.Wheel(static_cast<float>(editor.Between(-2, 2)), AnyModifiers(editor));
    default:
        return editor.robot.Drag(at, AnyPlace(editor), editor.Between(1, 5), AnyButton(editor));
    }
}

void UseTheKeyboard(CRandomEditor& editor) {
    editor.robot.Key(editor.Below(256));
    editor.window.shift = editor.OneIn(3);
    if (!editor.window.textBox) return;
    constexpr std::u16string_view Characters = u"0123456789.-kx\b";
    for (auto count = editor.Below(6); count > 0; --count)
        editor.robot.Type(Characters.substr(editor.Below(15), 1));
    if (editor.OneIn(2)) editor.robot.Enter();
}

void UseTheMenu(CRandomEditor& editor) {
    auto& window = editor.window;
    if (!window.menuOpen || window.client == nullptr) return;
    window.menuOpen = false;
    if (const auto command = AnyCommand(editor, window.menus.back()); command != 0)
        window.client->OnCommand(command);
}

/// What the host, the system and the device do.
void HaveOthersAct(CRandomEditor& editor) {
    auto& root = editor.root;
    auto* const client = editor.window.client;
    switch (editor.Below(14)) {
    case 0:
        return root.Resize(editor.Between(1, 1600), editor.Between(1, 1200));
    case 1:
        return root.SetResizing(editor.OneIn(2));
    case 2:
        return editor.AddWidget();
    case 3:
        return editor.RemoveWidget();
    case 4:
        return editor.AnyWidget().SetVisible(editor.OneIn(2), editor.Below(4));
    case 5:
        return editor.AnyWidget().SetFromHost(editor.Share());
    case 6:
        return editor.AnyWidget().Restack(editor.OneIn(2), editor.OneIn(2), editor.Below(3));
    case 7:
        return editor.OneIn(2) ? root.Undo() : root.Redo();
    case 8:
        return root.Show(editor.OneIn(2));
    case 9:
        return editor.OneIn(4) ? root.DestroyGUIWindow() : editor.Open();
    case 10:
        if (client != nullptr) client->OnCancel();
        return;
    case 11:
        return editor.robot.LeaveWindow();
    case 12:
        root.Edit().Open(&editor.AnyWidget(), true);
        return;
    default:
        editor.pictures.throwIn = editor.OneIn(3) ? "Letter" : "";
        if (root.GPU().IsReady()) editor.renderers.Live().throwIn = editor.OneIn(3) ? "DrawTexture" : "";
    }
}

void Step(CRandomEditor& editor) {
    switch (editor.Below(12)) {
    case 0:
        return UseTheKeyboard(editor);
    case 1:
        return UseTheMenu(editor);
    case 2:
        return HaveOthersAct(editor);
    case 3:
    case 4:
        return editor.robot.Advance(1 + editor.Below(40));
    default:
        return UseTheMouse(editor);
    }
}

void ExpectThatItMakesSense(CRandomEditor& editor) {
    auto& root = editor.root;
    const auto& pointer = root.Pointer();
    for (const auto* const widget :
        {pointer.Hover(), pointer.Focus(), pointer.Capture(), root.Hint().piFor, root.Edit().piTarget}) {
        EXPECT_TRUE(widget == nullptr || root.Has(widget)) << "a widget that isn't there any more";
    }
    EXPECT_EQ(root.Edit().piTarget != nullptr, editor.window.textBox.has_value())
        << "the box is open for a widget";
    std::set<std::int32_t> dragged;
    for (const auto* const knob : root.FindAll<CKnob>()) {
        if (!knob->bDragging) continue;
        EXPECT_EQ(pointer.Capture(), knob);
        if (knob->nId >= 0) dragged.insert(knob->nId);
    }
    EXPECT_EQ(root.edits, dragged) << "an edit lasts as long as a drag";
    for (const auto* const value : root.FindAll<CValueWidget>()) {
        EXPECT_TRUE(value->Value() >= 0.0f && value->Value() <= 1.0f);
        EXPECT_TRUE(value->Item() >= 0 && value->Item() < std::max(value->ItemCount(), 1));
    }
    EXPECT_FALSE(root.Hint().IsVisible() && root.Hint().piFor == nullptr);
    EXPECT_LE(root.Hint().PixelRect().nW, std::max(root.Width(), 74));
}

void ExpectThatNothingIsLeft(CRandomEditor& editor) {
    auto& root = editor.root;
    root.DestroyGUIWindow();
    EXPECT_EQ(root.edits, std::set<std::int32_t>());
    EXPECT_EQ(root.Pointer().Capture(), nullptr);
    EXPECT_EQ(root.Pointer().Hover(), nullptr);
    EXPECT_EQ(root.Edit().piTarget, nullptr);
    for (auto* const widget : root.AllWidgets()) widget->ReleaseTextures();
    EXPECT_EQ(root.Textures().Held(), std::vector<std::u16string>());
    if (root.GPU().IsReady()) {
        EXPECT_TRUE(editor.renderers.Live().LiveTextures().empty());
    }
}

/// Takes all steps back and makes them again: the same values.
void ExpectThatHistoryLeadsBack(CRandomEditor& editor) {
    auto& root = editor.root;
    while (root.CanRedo()) root.Redo();
    const auto last = editor.Values();
    while (root.CanUndo()) root.Undo();
    const auto first = editor.Values();
    while (root.CanRedo()) root.Redo();
    EXPECT_EQ(editor.Values(), last);
    while (root.CanUndo()) root.Undo();
    EXPECT_EQ(editor.Values(), first);
}

} // namespace

TEST(RandomInput, LeavesTheEditorInOrder) {
    std::size_t edits = 0;
    std::size_t records = 0;
    std::size_t menus = 0;
    std::size_t boxes = 0;
    for (std::uint32_t seed = 1; seed <= Editors && !HasFailure(); ++seed) {
        CRandomEditor editor(seed);
        for (int step = 0; step < Steps && !HasFailure(); ++step) {
            SCOPED_TRACE("editor " + std::to_string(seed) + ", step " + std::to_string(step));
            Step(editor);
            ExpectThatItMakesSense(editor);
            boxes += editor.window.Count("OpenTextBox");
            editor.window.lines.clear();
            editor.pictures.lettered.clear();
            if (editor.root.GPU().IsReady()) editor.renderers.Calls().clear();
        }
        edits += editor.root.editsBegun;
        records += editor.root.Records();
        menus += editor.window.menus.size();
        ExpectThatHistoryLeadsBack(editor);
        ExpectThatNothingIsLeft(editor);
    }
    // Or what is tried has become too tame.
    EXPECT_GT(edits, 20 * Editors);
    EXPECT_GT(records, 4 * Editors);
    EXPECT_GT(menus, Editors);
    EXPECT_GT(boxes, 4 * Editors);
}

// Nothing but steps that are recorded: they lead back to the beginning.
TEST(RandomHistory, LeadsBackToTheBeginningAndToTheEnd) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        CRandomEditor editor(seed);
        const auto values = editor.root.FindAll<CValueWidget>();
        std::vector<CValueWidget*> recorded;
        for (auto* const value : values) {
            if (value->HasHistory() && dynamic_cast<CButton*>(value) == nullptr) recorded.push_back(value);
        }
        ASSERT_FALSE(recorded.empty());
        const auto first = editor.Values();
        for (int step = 0; step < 500; ++step) {
            auto& value = *recorded[editor.Below(static_cast<std::uint32_t>(recorded.size()))];
            if (editor.OneIn(2)) {
                value.SetValue(editor.Share(), true);
            } else {
                value.SetItem(editor.Between(-1, 4), true);
            }
        }
        const auto last = editor.Values();
        while (editor.root.CanUndo()) editor.root.Undo();
        EXPECT_EQ(editor.Values(), first) << seed;
        while (editor.root.CanRedo()) editor.root.Redo();
        EXPECT_EQ(editor.Values(), last) << seed;
    }
}
