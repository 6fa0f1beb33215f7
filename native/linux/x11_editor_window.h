#pragma once

#include "native/linux/tick_timer.h"
#include "native/linux/x11_ancestors.h"
#include "native/linux/x11_cursors.h"
#include "native/linux/x11_file_list.h"
#include "native/linux/x11_focus.h"
#include "native/linux/x11_keys.h"
#include "native/linux/x11_menu.h"
#include "native/linux/x11_picture.h"
#include "native/linux/x11_pointer.h"
#include "native/linux/x11_text_box.h"
#include "native/linux/x11_window.h"

namespace KAV::Native {

/// The one implementation of CX11Window, of which it is a part: each of its members knows one thing about the
/// window; this decides who hears what, and when.
class CX11EditorWindow final : public CX11Window {
public:
    CX11EditorWindow(std::unique_ptr<CX11Display> display, xcb_window_t parent, xcb_window_t window);
    ~CX11EditorWindow() override;

    /// The timer is there.
    bool IsUsable() const noexcept { return _timer.IsThere(); }

    void Begin(
        GUI::IWindowClient& client, Platform::CWindowLoop& loop, std::uint32_t framesPerSecond) override;
    void End() noexcept override;
    bool Round(int wake) noexcept override;
    int Descriptor() const noexcept override { return _display->Descriptor(); }
    bool IsThere() const noexcept override { return _client != nullptr && !_isGone; }
    void Show(bool show) noexcept override;
    void Resize(std::int32_t width, std::int32_t height) noexcept override;
    void ResizeParent(std::int32_t width, std::int32_t height) noexcept override;
    void SetRate(std::uint32_t framesPerSecond) noexcept override { _timer.Start(framesPerSecond); }
    void Capture(bool capture) noexcept override;
    void SetCursor(GUI::ECursor cursor) noexcept override;
    void Focus() noexcept override;
    void TrackLeave() noexcept override { _pointer.TrackLeave(); }
    bool IsShiftDown() const noexcept override { return _modifiers.IsShiftDown(); }
    bool IsLeftControlDown() const noexcept override { return _modifiers.IsLeftControlDown(); }
    // Hints lie beside the pointer's tip, which is where events say that the pointer is.
    std::int32_t HotX() const noexcept override { return 0; }
    std::int32_t HotY() const noexcept override { return 0; }
    std::int32_t DotsPerInch() const noexcept override { return _display->DotsPerInch(); }
    void ShowMenu(const GUI::Menu& menu) noexcept override;
    void CloseMenu() noexcept override;
    bool OpenTextBox(
        const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept override;
    std::u16string BoxText() const override;
    void CloseTextBox() noexcept override;
    bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width, std::int32_t height,
        std::span<const Platform::SArea> areas) noexcept override;
    Platform::SSystemWindow System() const noexcept override;
    void SetDrawnWindow(std::uint32_t window) noexcept override;

private:
    // A round
    bool HandleEvents();
    void Wait(int wake, bool isBusy) const;
    void OnTimes();
    void CheckModal();
    void CheckPicture();
    bool IsGoneNow() noexcept;
    int TimeLeft() const;

    // Events
    void Handle(const xcb_generic_event_t& event);
    bool TakeByOverlay(const xcb_generic_event_t& event);
    void AfterOverlay();
    void NoteState(const xcb_generic_event_t& event);
    void HandlePress(const xcb_button_press_event_t& event);
    void HandleKey(const xcb_key_press_event_t& event);
    void HandleOwn(const xcb_generic_event_t& event);
    bool IsWithin(const xcb_enter_notify_event_t& event) const noexcept;
    void HandleExpose(const xcb_expose_event_t& event);
    void OnAncestors();
    bool IsModal() const noexcept { return _loop != nullptr && _loop->Modal() != nullptr; }
    bool CanBeSeen() const noexcept { return !_isHidden && !_isCovered; }
    void LoseFocus();

    std::unique_ptr<CX11Display> _display; // before all that uses it
    xcb_window_t _parent;
    xcb_window_t _window;
    xcb_window_t _drawnWindow = 0; // a renderer draws into it by itself: 0, this window, or a child of it
    CX11Ancestors _ancestors;
    CX11Focus _focus;
    CX11Modifiers _modifiers;
    CX11Keys _keys;
    CX11Pointer _pointer;
    CX11Cursors _cursors;
    CX11Picture _picture;
    CTickTimer _timer;
    GUI::IWindowClient* _client = nullptr;  // null: before Begin(), after End() or OnGone()
    Platform::CWindowLoop* _loop = nullptr; // the same
    bool _isGone = false;
    bool _isHidden = true;      // it or one of its ancestors isn't mapped
    bool _isCovered = false;    // wholly, by other windows
    bool _isPictureDue = false; // a picture was refused
    bool _wasModal = false;
    CX11FileList _files{*_display}; // opened by the loop
    std::unique_ptr<CX11Menu> _menu;
    std::unique_ptr<CX11TextBox> _box;
    // What an overlay has said from inside its own operation; it may be destroyed only after that.
    bool _hasMenuEnded = false;
    std::uint32_t _command = 0;
    bool _isTyped = false;
};

} // namespace KAV::Native
