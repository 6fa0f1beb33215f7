#pragma once

#include "tests/gui/random_editor.h"
#include "utils/text.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

/// What may happen to a CRandomEditor, and what has to be true whatever has happened.
namespace KAV::Tests {

/// What the host, the system and the device do.
inline void HaveOthersAct(CRandomEditor& editor) {
    auto& root = editor.root;
    auto* const client = editor.window.client;
    switch (editor.Below(20)) {
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
    case 13:
        editor.window.boxUp = editor.OneIn(2);
        return;
    case 14:
        return root.PostUserMessage(editor.AnyNumber());
    case 15:
        if (client != nullptr) client->OnPaint();
        return;
    case 16:
        if (client != nullptr && editor.OneIn(4)) client->OnGone();
        return;
    case 17:
        return editor.AnyWidget().SetFromHost(editor.AnyFloat());
    case 18:
        return editor.robot.Type(Utils::ToUtf16Repaired(editor.AnyText(20)));
    default:
        editor.pictures.throwIn = editor.OneIn(3) ? "Letter" : "";
        if (root.GPU().IsReady()) editor.renderers.Live().throwIn = editor.OneIn(3) ? "DrawTexture" : "";
    }
}

/// One thing that happens to an editor.
inline void UseAnyhow(CRandomEditor& editor) {
    switch (editor.Below(12)) {
    case 0:
        return editor.user.UseTheKeyboard();
    case 1:
        return editor.user.UseTheMenu();
    case 2:
        return HaveOthersAct(editor);
    case 3:
    case 4:
        return editor.user.Wait();
    default:
        return editor.user.UseTheMouse();
    }
}

inline void ExpectThatItMakesSense(CRandomEditor& editor) {
    auto& root = editor.root;
    const auto& pointer = root.Pointer();
    for (const auto* const widget :
        {pointer.Hover(), pointer.Focus(), pointer.Capture(), root.Hint().piFor, root.Edit().piTarget}) {
        EXPECT_TRUE(widget == nullptr || root.Has(widget)) << "a widget that isn't there any more";
    }
    EXPECT_EQ(root.Edit().piTarget != nullptr, editor.window.textBox.has_value())
        << "the box is open for a widget";
    std::set<std::int32_t> dragged;
    for (const auto* const knob : root.FindAll<GUI::CKnob>()) {
        if (!knob->bDragging) continue;
        EXPECT_EQ(pointer.Capture(), knob);
        if (knob->nId >= 0) dragged.insert(knob->nId);
    }
    EXPECT_EQ(root.edits, dragged) << "an edit lasts as long as a drag";
    for (const auto* const value : root.FindAll<GUI::CValueWidget>()) {
        EXPECT_TRUE(value->Value() >= 0.0f && value->Value() <= 1.0f);
        EXPECT_TRUE(value->Item() >= 0 && value->Item() < std::max(value->ItemCount(), 1));
    }
    EXPECT_FALSE(root.Hint().IsVisible() && root.Hint().piFor == nullptr);
    EXPECT_LE(root.Hint().PixelRect().nW, std::max(root.Width(), 74));
}

inline void ExpectThatNothingIsLeft(CRandomEditor& editor) {
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
inline void ExpectThatHistoryLeadsBack(CRandomEditor& editor) {
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

/// The doubles forget what they have noted, or it would fill the memory.
inline void ForgetTheRecords(CRandomEditor& editor) {
    editor.window.lines.clear();
    editor.window.boxes.clear();
    editor.pictures.lines.clear();
    editor.pictures.lettered.clear();
    editor.pictures.measured.clear();
    if (editor.root.GPU().IsReady()) editor.renderers.Calls().clear();
}

} // namespace KAV::Tests
