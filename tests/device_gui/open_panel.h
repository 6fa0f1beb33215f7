#pragma once

#include "device_gui/editor_system.h"
#include "gui/menu.h"
#include "panel/layout.h"
#include "panel/sprites.h"
#include "tests/support/own_renderers.h"
#include "tests/support/recording_pictures.h"
#include "tests/support/recording_window.h"
#include "tests/support/state_fixture.h"
#include "tests/support/toolkit_robot.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KAV::Tests {

using Lines = std::vector<std::string>;

/// Windows of the test's own on the thread that opens them.
class CDrivenSystem final : public IEditorSystem {
public:
    CDrivenSystem(CRecordingWindow& window, CRecordingPictures& pictures)
        : _window(window), _pictures(pictures) {}

    bool IsAvailable() const noexcept override { return true; }
    GUI::SSurroundings Surroundings() noexcept override { return {&_window, &_pictures}; }
    bool Open(void*, std::int32_t, std::int32_t, Native::IEditor& editor) override {
        _editor = &editor;
        editor.OnOpened();
        return true;
    }
    void Close() noexcept override {
        if (auto* const editor = std::exchange(_editor, nullptr)) editor->OnClosing();
    }

private:
    CRecordingWindow& _window;
    CRecordingPictures& _pictures;
    Native::IEditor* _editor = nullptr;
};

/// An instance of a user without patches and routings whose editor is open, 754 pixels wide, with a person at
/// it: window, renderer, pictures, clock, host and dialogs are doubles, everything else is the product's.
class OpenPanel : public State {
protected:
    COwnRenderers renderers;
    CRecordingWindow window;
    CRecordingPictures pictures;
    CToolkitRobot robot{window};
    Utils::SMakerService service; ///< that instances get from now on; at first there is none

    OpenPanel() {
        for (const auto& sprite : Panel::Sprites)
            pictures.stored[Utils::ToUtf16(sprite.image)] = {sprite.width, sprite.height};
    }
    void SetUp() override { Reopen(); }
    void TearDown() override {
        effect.reset(); // before its window
    }

    virtual std::unique_ptr<IEditorSystem> MakeSystem() {
        return std::make_unique<CDrivenSystem>(window, pictures);
    }
    /// Another instance, which finds the user's files as they are now, with its editor open.
    void Reopen() {
        effect.reset();
        effect = std::make_unique<CHostedEffect>(host.Callback(), service, MakeSystem());
        Open();
        robot.Advance(500); // the first animations are over
        host.calls.clear();
        window.lines.clear();
    }
    void Open() { ASSERT_EQ(effect->Dispatch(VST::effEditOpen, 0, 0, this), 1); }
    void Close() { effect->Dispatch(VST::effEditClose); }

    /// The `place`th widget of this name, in the order of the panel.
    GUI::CWidget& Named(std::u16string_view name, int place = 0) {
        for (auto* const widget : Gui().AllWidgets()) {
            if (widget->Name() == name && place-- == 0) return *widget;
        }
        throw std::out_of_range(Utils::ToUtf8(name));
    }
    GUI::CWidget& WithId(std::int32_t id) {
        for (auto* const widget : Gui().AllWidgets()) {
            if (widget->Id() == id) return *widget;
        }
        throw std::out_of_range(std::to_string(id));
    }
    static SPixel MiddleOf(const GUI::CWidget& widget) {
        const auto rect = widget.PixelRect();
        return {rect.nL + rect.nW / 2, rect.nT + rect.nH / 2};
    }
    void Point(const GUI::CWidget& widget) {
        const auto [x, y] = MiddleOf(widget);
        robot.Move(x, y);
    }
    /// Moves the pointer to the middle of the widget and clicks there. `flags` as of a press.
    void Click(const GUI::CWidget& widget, std::uint32_t flags = GUI::MouseLeft) {
        const auto [x, y] = MiddleOf(widget);
        robot.Move(x, y);
        robot.Click(x, y, flags);
    }
    void Wheel(const GUI::CWidget& widget, float notches, std::uint32_t flags = 0) {
        Point(widget);
        robot.Wheel(notches, flags);
    }
    /// Chooses from a menu by the widget's id and the item's number, whether or not the menu offers it.
    void Command(std::int32_t id, std::int32_t item) {
        const auto command = GUI::CommandOf({id, item});
        ASSERT_TRUE(command) << item;
        if (window.client != nullptr) window.client->OnCommand(*command);
    }
    /// Types over what is in the open text box, and ends with Enter.
    void TypeOver(std::u16string_view text) {
        robot.Type(text);
        robot.Enter();
    }
    /// What the host has heard since this was asked last, one line a call: "begin 4", "4 = 0.250000",
    /// "end 4". Time enough passes before that the end of an edit is told, too.
    std::vector<std::string> Told() {
        robot.Advance(CHostQueue::EndDelayMs);
        effect->Dispatch(VST::effEditIdle);
        std::vector<std::string> told;
        for (const auto& call : std::exchange(host.calls, {})) {
            const auto index = std::to_string(call.index);
            if (call.opcode == VST::audioMasterBeginEdit) told.push_back("begin " + index);
            if (call.opcode == VST::audioMasterAutomate)
                told.push_back(index + " = " + std::to_string(call.option));
            if (call.opcode == VST::audioMasterEndEdit) told.push_back("end " + index);
        }
        return told;
    }
    /// The lines that the renderer gets for one whole picture.
    std::vector<std::string> Picture() {
        renderers.Calls().clear();
        Gui().Invalidate();
        robot.Tick();
        return renderers.Calls();
    }
    /// Those of the picture's quads that lie where the widget does, without the place: "from 0..1,0..0.5".
    std::vector<std::string> DrawsOf(const GUI::CWidget& widget) {
        const auto [left, top, width, height] = widget.PixelRect();
        const auto place = " to " + std::to_string(left) + "," + std::to_string(top) + " " +
                           std::to_string(width) + "x" + std::to_string(height);
        std::vector<std::string> draws;
        for (const auto& line : Picture()) {
            const auto at = line.find(place);
            if (line.starts_with("DrawTexture ") && at != std::string::npos)
                draws.push_back(line.substr(std::min(at + place.size() + 1, line.size())));
        }
        return draws;
    }
    /// Which of the frames of its picture, which lie below one another, is drawn alone; -1: none or several.
    int FrameOf(const GUI::CWidget& widget, int frames) {
        const auto draws = DrawsOf(widget);
        if (draws.size() != 1) return -1;
        for (int frame = 0; frame < frames; ++frame) {
            std::array<char, 64> part{};
            std::snprintf(part.data(), part.size(), "from 0..1,%g..%g", static_cast<double>(frame) / frames,
                static_cast<double>(frame + 1) / frames);
            if (draws[0].starts_with(part.data())) return frame;
        }
        return -1;
    }
    /// Whether the editor has nothing to draw, and so costs nothing.
    bool IsStill() {
        robot.Advance(1000);
        renderers.Calls().clear();
        robot.Advance(200);
        return renderers.Calls().empty();
    }
};

} // namespace KAV::Tests
