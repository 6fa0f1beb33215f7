#pragma once

#include "gui/edit.h"
#include "gui/window.h"
#include "utils/text.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// The text box of a CRecordingWindow while it is open.
struct STextBox {
    GUI::SPixelRect place;
    std::u16string text;
    bool numbersOnly = false;
    bool selected = true; ///< all of it, so that the next character replaces it
};

/// A window without a screen. It notes what it is asked, one line each, as "Create 754x553 60", "Capture on",
/// "Focus"; questions leave none. It answers what the test says, and behaves as the system does: a text box
/// that loses the focus reports what has been typed.
class CRecordingWindow : public GUI::IWindow {
public:
    std::vector<std::string> lines;
    std::vector<GUI::Menu> menus; ///< every one that was opened
    struct SMessage {
        std::u16string title;
        std::u16string text;
    };
    std::vector<SMessage> boxes; ///< every message box

    // What is there now
    GUI::IWindowClient* client = nullptr; ///< null: no window
    void* parent = nullptr;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t rate = 0; ///< frames per second
    bool shown = false;
    bool captured = false;
    bool menuOpen = false;
    GUI::ECursor cursor = GUI::ECursor::Arrow;
    std::optional<STextBox> textBox;

    // What it answers
    std::int32_t createError = 0; ///< other than 0: Create() fails
    void* handle = nullptr;       ///< for a renderer; null: any
    bool opensTextBoxes = true;
    bool boxUp = false; ///< the user is still reading a message box
    bool shift = false;
    bool leftControl = false;
    std::int32_t hotX = 0;
    std::int32_t hotY = 0;
    std::int32_t dotsPerInch = 96;
    std::uint32_t doubleClickMs = 500;
    std::int32_t doubleClickWidth = 4;
    std::int32_t doubleClickHeight = 4;

    /// How many lines begin so.
    std::size_t Count(std::string_view begin) const {
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(),
            [begin](const std::string& line) { return line.starts_with(begin); }));
    }

    std::int32_t Create(GUI::IWindowClient& newClient, void* newParent, std::int32_t newWidth,
        std::int32_t newHeight, std::uint32_t framesPerSecond) noexcept override {
        Note("Create" + Size(newWidth, newHeight) + " " + std::to_string(framesPerSecond));
        if (createError != 0) return createError;
        client = &newClient;
        parent = newParent;
        width = newWidth;
        height = newHeight;
        rate = framesPerSecond;
        return 0;
    }
    void Destroy() noexcept override {
        Note("Destroy");
        client = nullptr;
        shown = captured = menuOpen = false;
        textBox.reset();
    }
    bool Exists() const noexcept override { return client != nullptr; }
    void Reparent(void* newParent) noexcept override {
        Note("Reparent");
        parent = newParent;
    }
    void Show(bool show) noexcept override {
        Note(show ? "Show" : "Hide");
        shown = show;
    }
    void Resize(std::int32_t newWidth, std::int32_t newHeight) noexcept override {
        Note("Resize" + Size(newWidth, newHeight));
        width = newWidth;
        height = newHeight;
    }
    void SetRate(std::uint32_t framesPerSecond) noexcept override {
        Note("SetRate " + std::to_string(framesPerSecond));
        rate = framesPerSecond;
    }
    void* Handle() const noexcept override { return handle != nullptr ? handle : client; }
    void Capture(bool capture) noexcept override {
        Note(capture ? "Capture on" : "Capture off");
        captured = capture;
    }
    void SetCursor(GUI::ECursor newCursor) noexcept override {
        if (newCursor != cursor) Note("SetCursor " + std::to_string(static_cast<int>(newCursor)));
        cursor = newCursor;
    }
    void Focus() noexcept override {
        Note("Focus");
        if (textBox && client != nullptr) client->OnTyped();
    }
    void TrackLeave() noexcept override { Note("TrackLeave"); }
    bool IsShiftDown() const noexcept override { return shift; }
    bool IsLeftControlDown() const noexcept override { return leftControl; }
    std::int32_t HotX() const noexcept override { return hotX; }
    std::int32_t HotY() const noexcept override { return hotY; }
    std::uint32_t DoubleClickMs() const noexcept override { return doubleClickMs; }
    std::int32_t DoubleClickWidth() const noexcept override { return doubleClickWidth; }
    std::int32_t DoubleClickHeight() const noexcept override { return doubleClickHeight; }
    std::int32_t DotsPerInch() const noexcept override { return dotsPerInch; }
    void ShowMenu(const GUI::Menu& menu) noexcept override {
        Note("ShowMenu");
        menus.push_back(menu);
        menuOpen = true;
    }
    void CloseMenu() noexcept override {
        Note("CloseMenu");
        menuOpen = false;
    }
    bool OpenTextBox(
        const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept override {
        Note("OpenTextBox " + Utils::ToUtf8(text) + (numbersOnly ? " (number)" : ""));
        if (!opensTextBoxes) return false;
        textBox = STextBox{place, std::u16string(text), numbersOnly};
        return true;
    }
    std::u16string BoxText() const override { return textBox ? textBox->text : std::u16string(); }
    void CloseTextBox() noexcept override {
        Note("CloseTextBox");
        textBox.reset();
    }
    void ShowBox(std::u16string_view title, std::u16string_view text) noexcept override {
        Note("ShowBox");
        boxes.push_back({std::u16string(title), std::u16string(text)});
    }
    bool IsBoxUp() const noexcept override { return boxUp; }

private:
    static std::string Size(std::int32_t width, std::int32_t height) {
        return " " + std::to_string(width) + "x" + std::to_string(height);
    }
    void Note(const std::string& line) { lines.push_back(line); }
};

} // namespace KAV::Tests
