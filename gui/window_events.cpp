#include "gui/window_events.h"

#include "gui/gui.h"

namespace KAV::GUI {

void CWindowEvents::OnTick(std::uint32_t a_nTimeMs) {
    _piGUI.Frame().Guard([&] { _piGUI.Frame().Tick(a_nTimeMs); });
}

void CWindowEvents::OnPress(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags, std::uint32_t a_nTimeMs) {
    _piGUI.Frame().Guard([&] {
        // Before the window gets the focus: the text box commits when it loses it.
        _piGUI.Edit().Drop();
        _piGUI.Window().Focus();
        auto& pointer = _piGUI.Pointer();
        const bool isSecond = pointer.IsDoubleClick(x, y, a_nTimeMs);
        pointer.SetTime(a_nTimeMs);
        _piGUI.OnMouseDown(x, y, a_nFlags | (isSecond ? MouseDouble : 0u));
    });
}

void CWindowEvents::OnRelease(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    _piGUI.Frame().Guard([&] { _piGUI.OnMouseUp(x, y, a_nFlags); });
}

void CWindowEvents::OnMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    constexpr std::uint32_t buttons = MouseLeft | MouseRight;
    // The root knows which buttons are held by what it was told; the system's word may be older.
    _piGUI.Frame().Guard([&] { _piGUI.OnMouseMove(x, y, (a_nFlags & ~buttons) | _piGUI.Pointer().Held()); });
}

void CWindowEvents::OnLeave() {
    _piGUI.Frame().Guard([&] { _piGUI.OnMouseLeave(); });
}

void CWindowEvents::OnWheel(float a_fNotches, std::uint32_t a_nFlags) {
    _piGUI.Frame().Guard([&] {
        _piGUI.Window().Focus();
        _piGUI.OnMouseWheel(a_fNotches, a_nFlags);
    });
}

void CWindowEvents::OnKey(std::uint32_t a_nKey, bool a_bDown) {
    _piGUI.Frame().Guard([&] { a_bDown ? _piGUI.OnKeyDown(a_nKey) : _piGUI.OnKeyUp(a_nKey); });
}

void CWindowEvents::OnPaint() {
    _piGUI.Invalidate();
}

void CWindowEvents::OnCancel() {
    // The Y is deliberately not the Y.
    const std::int32_t x = _piGUI.Pointer().X();
    _piGUI.Frame().Guard([&] {
        _piGUI.Pointer().CancelDrag(); // first: this release is no click
        _piGUI.OnMouseUp(x, x, MouseLeft);
    });
}

void CWindowEvents::OnCommand(std::uint32_t a_nCommand) {
    _piGUI.Frame().Guard([&] { _piGUI.OnCommand(a_nCommand, 0); });
}

void CWindowEvents::OnTyped() {
    _piGUI.Frame().Guard([&] { _piGUI.Edit().Commit(); });
}

void CWindowEvents::OnGone() {
    _piGUI.Frame().Guard([&] { _piGUI.LoseWindow(); });
}

void CWindowEvents::OnUserMessage(std::uint32_t a_nMessage) {
    _piGUI.Frame().Guard([&] { _piGUI.OnUserMessage(a_nMessage); });
}

} // namespace KAV::GUI
