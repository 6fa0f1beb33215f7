#pragma once

#include "panel/layout.h"
#include "platform/folders.h"
#include "tests/editor/editor_host.h"
#include "tests/editor/host_screen.h"
#include "tests/support/file_text.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// A user at the open editor of the delivered library.
class Robot : public testing::Test {
protected:
    using Picture = std::vector<std::uint32_t>;
    using EButton = CHostScreen::EButton;
    using EKey = CHostScreen::EKey;
    static constexpr EButton Left = EButton::Left;
    static constexpr EButton Right = EButton::Right;

    struct SPoint {
        std::int32_t x = 0;
        std::int32_t y = 0;
    };

    explicit Robot(CHostScreen::ESpace space = CHostScreen::ESpace::Usual) : screen(space) {}

    CHostScreen screen;
    CLoadedLibrary library;
    std::optional<CEditorHost> effect;

    void SetUp() override {
        namespace fs = std::filesystem;
        // Documents are the process's own in its empty home, and may be removed.
        ASSERT_NE(Documents().string().find("kav-test-"), std::string::npos) << Documents();
        fs::remove_all(Documents() / "Kavelin");
        for (const auto& [name, map] : {std::pair{"a", "0,-1|*|1,-1"}, std::pair{"b", "0,-1"}})
            WriteText(Documents() / "Kavelin" / "Routings" / (std::string(name) + ".kvt"),
                std::string("<kav_input_routing>\r\n\t<name>") + name + "</name>\r\n\t<map>" + map +
                    "</map>\r\n\t<ch_names></ch_names>\r\n</kav_input_routing>");
        effect.emplace(library, 60);
        _parent = screen.Begin(*effect);
        Reopen();
        _heard = effect->Calls().size();
    }
    /// The editor, which is closed, opens and shows its picture.
    void Reopen() {
        ASSERT_TRUE(effect->Open(_parent));
        ASSERT_TRUE(screen.HasEditor());
        ASSERT_TRUE(Until([this] { return Colours() > 20; })) << "it shows no picture";
        MoveTo({1, 1}); // nothing lights up there
        Still();
    }
    void TearDown() override { effect.reset(); }

    /// The user's documents, as the library finds them.
    static std::filesystem::path Documents() { return Platform::DocumentsFolder(); }

    // What is shown

    /// How many colours there are in the upper left part.
    std::size_t Colours() {
        auto pixels = screen.Pixels(0, 0, 300, 200);
        std::sort(pixels.begin(), pixels.end());
        return static_cast<std::size_t>(std::unique(pixels.begin(), pixels.end()) - pixels.begin());
    }
    Picture Shown() {
        const auto size = screen.EditorSize();
        return screen.Pixels(0, 0, size.width, size.height);
    }
    /// The picture when it moves no more.
    Picture Still() {
        Picture last;
        EXPECT_TRUE(Until([&] {
            auto now = Shown();
            const bool isSame = now == last;
            last = std::move(now);
            WaitForIdles(12); // a few ticks of the editor lie between two looks
            return isSame;
        })) << "the picture never stands still";
        return last;
    }
    void WaitForIdles(int count) {
        EXPECT_TRUE(Until([&, idles = effect->Idles()] { return effect->Idles() > idles + count; }));
    }

    // What the user does

    /// The middle of a widget in the editor's window, whose width is `width`.
    static SPoint MiddleOf(std::string_view name, std::int32_t width = Panel::PanelWidth) {
        const auto& rect = Panel::RowOf(name).rect;
        const double scale = static_cast<double>(width) / Panel::PanelWidth;
        return {static_cast<std::int32_t>(rect.CentreX() * scale),
            static_cast<std::int32_t>(rect.CentreY() * scale)};
    }
    void MoveTo(SPoint point) { screen.MoveTo(point.x, point.y); }
    void Click(EButton button = Left) {
        screen.Press(button);
        screen.Release(button);
    }
    void Click(std::string_view name, EButton button = Left) {
        MoveTo(MiddleOf(name));
        Click(button);
    }
    void ShiftClick(std::string_view name) {
        MoveTo(MiddleOf(name)); // before the key: Wine lets keys go when the pointer comes into a window
        screen.Key(EKey::Shift, true);
        Click();
        screen.Key(EKey::Shift, false);
    }
    void Turn(std::string_view name, int notches) {
        MoveTo(MiddleOf(name));
        screen.Turn(notches);
    }
    /// Drags step by step with the left button.
    void Drag(SPoint from, std::int32_t dx, std::int32_t dy) {
        MoveTo(from);
        screen.Press(Left);
        constexpr std::int32_t steps = 8;
        for (std::int32_t step = 1; step <= steps; ++step)
            screen.MoveTo(from.x + dx * step / steps, from.y + dy * step / steps);
        screen.Release(Left);
    }
    void Type(std::initializer_list<int> keys) {
        for (const int key : keys) {
            screen.Key(key, true);
            screen.Key(key, false);
        }
    }
    void AwaitMenu() {
        EXPECT_TRUE(Until([this] { return screen.IsMenuUp(); })) << "no menu opens";
    }
    void AwaitNoMenu() {
        EXPECT_TRUE(Until([this] { return !screen.IsMenuUp(); })) << "the menu stays";
    }
    /// Answers the question for a file, when that is up.
    void AnswerFile(std::string_view name, bool isNew = true) {
        EXPECT_TRUE(Until([this] { return screen.AsksForFile(); })) << "no question for a file";
        screen.EnterFile(name, isNew);
        Type({EKey::Return});
        EXPECT_TRUE(Until([this] { return !screen.HasQuestion(); })) << "the question stays";
    }
    /// The same with a file that is there.
    void ChooseFile(std::string_view name) { AnswerFile(name, false); }
    /// By the menu's last entry. The view is there when it darkens a corner of the panel, where nothing else
    /// changes; the mark in the view pulses forever.
    void OpenAbout() {
        const auto corner = [this] { return screen.Pixels(0, 0, 40, 20); };
        MoveTo({1, 1});
        Still();
        const auto before = corner();
        Click("ToolAbout");
        AwaitMenu();
        Type({EKey::End, EKey::Return});
        AwaitNoMenu();
        EXPECT_TRUE(Until([&] { return corner() != before; })) << "the view doesn't open";
    }

    // What the host hears, and what the state holds

    /// The host's calls that belong to edits since this was asked last, as "b4 v4 e4", when `ends` edits have
    /// ended; values of one parameter that follow each other are one.
    std::string Heard(std::size_t ends = 1) {
        using namespace VST;
        _expected += ends;
        EXPECT_TRUE(Until([&] { return effect->Count(audioMasterEndEdit) >= _expected; }));
        const auto calls = effect->Calls();
        std::string lines;
        std::string last;
        for (; _heard < calls.size(); ++_heard) {
            const auto& call = calls[_heard];
            const char* const kind = call.opcode == audioMasterBeginEdit  ? "b"
                                     : call.opcode == audioMasterEndEdit  ? "e"
                                     : call.opcode == audioMasterAutomate ? "v"
                                                                          : nullptr;
            if (kind == nullptr) continue;
            auto line = kind + std::to_string(call.index);
            if (line != last) lines += (lines.empty() ? "" : " ") + line;
            last = std::move(line);
        }
        return lines;
    }
    std::string EditOf(std::string_view parameter) {
        const auto index = std::to_string(effect->IndexOf(parameter));
        return "b" + index + " v" + index + " e" + index;
    }
    /// A switch tells the old state within an edit, too.
    std::string PressOf(std::string_view parameter) { return EditOf(parameter) + " " + EditOf(parameter); }
    /// What the state has between these; empty if it isn't there.
    std::string InState(const std::string& before, const std::string& after = "<") {
        const auto chunk = effect->Chunk();
        const auto found = chunk.find(before);
        if (found == std::string::npos) return {};
        const auto begin = found + before.size();
        return chunk.substr(begin, chunk.find(after, begin) - begin);
    }
    /// Waits until the state has this.
    bool StateHas(std::string_view text) {
        return Until([&] { return effect->Chunk().find(text) != std::string::npos; });
    }
    /// A parameter's value 0..1 in the state.
    double Value(int tag) {
        const auto element = InState("<param tag=\"" + std::to_string(tag) + "\"", "</");
        return element.empty() ? -1.0 : std::strtod(element.substr(element.find('>') + 1).c_str(), nullptr);
    }
    bool HasValue(int tag, double value) {
        return Until([&] { return Value(tag) == value; });
    }

private:
    std::uintptr_t _parent = 0; ///< of the editor
    std::size_t _heard = 0;     ///< of the host's calls
    std::size_t _expected = 0;  ///< ends of edits
};

} // namespace KAV::Tests
