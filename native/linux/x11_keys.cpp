#include "native/linux/x11_keys.h"

#include "gui/window.h"

#include <cstring>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Native {

using Platform::Xcb;

namespace {

constexpr std::uint8_t SentBit = 0x80;

} // namespace

void CX11Modifiers::OnState(std::uint16_t state) {
    _shift = (state & XCB_MOD_MASK_SHIFT) != 0;
    if ((state & XCB_MOD_MASK_CONTROL) == 0) {
        _control = EControl::Up;
    } else if (_control == EControl::Up) {
        _control = _display.IsLeftControlHeld() ? EControl::Left : EControl::Other;
    }
}

/// The state of a key's event is the one before it.
void CX11Modifiers::OnKey(const STypedKey& key, std::uint16_t state) {
    const bool isLeft = key.symbol == XKB_KEY_Control_L;
    const bool isRight = key.symbol == XKB_KEY_Control_R;
    if (isLeft && key.down) {
        _control = EControl::Left;
    } else if (isLeft || (isRight && key.down && _control == EControl::Up)) {
        _control = EControl::Other; // after a release perhaps none; the next state says so
    } else {
        OnState(state);
    }
    _shift = (state & XCB_MOD_MASK_SHIFT) != 0;
    if (key.symbol == XKB_KEY_Shift_L || key.symbol == XKB_KEY_Shift_R) _shift = key.down;
}

std::uint32_t CX11Keys::UseOf(const STypedKey& key, bool isLeftControlDown) noexcept {
    if (key.symbol == XKB_KEY_F1) return GUI::KeyF1;
    if (!isLeftControlDown) return 0;
    if (key.latin == u'Z') return GUI::KeyZ;
    return key.latin == u'Y' ? GUI::KeyY : 0;
}

void CX11Keys::Keep(const xcb_key_press_event_t& event, std::uint32_t use) {
    _kept.set(event.detail);
    _uses[event.detail] = use;
}

bool CX11Keys::TakeKept(const xcb_key_press_event_t& event, std::uint32_t& use) {
    use = _uses[event.detail];
    const bool isKept = _kept[event.detail];
    _kept.reset(event.detail);
    _uses[event.detail] = 0;
    return isKept;
}

void CX11Keys::HandOn(const xcb_key_press_event_t& event, xcb_window_t host) {
    if ((event.response_type & SentBit) != 0) return;
    _handedOn.set(event.detail, event.response_type == XCB_KEY_PRESS);
    if (host == 0) return;
    auto sent = event;
    sent.event = host;
    sent.child = XCB_WINDOW_NONE;
    std::array<char, 32> message{}; // every event has this size
    std::memcpy(message.data(), &sent, sizeof(sent));
    Xcb()->send_event(_display.Connection(), 0, host, XCB_EVENT_MASK_NO_EVENT, message.data());
}

} // namespace KAV::Native
