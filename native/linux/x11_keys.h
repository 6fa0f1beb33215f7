#pragma once

#include "native/linux/x11_display.h"

#include <array>
#include <bitset>
#include <cstdint>

namespace KAV::Native {

/// Shift and the left Control key, as the last event had them. A state says that a Control key is down, but
/// not which one; that is known from its own event or, if that went elsewhere, asked for. Threads: the
/// window's.
class CX11Modifiers final {
public:
    explicit CX11Modifiers(CX11Display& display) noexcept : _display(display) {}

    void OnState(std::uint16_t state);
    void OnKey(const STypedKey& key, std::uint16_t state);

    bool IsShiftDown() const noexcept { return _shift; }
    bool IsControlDown() const noexcept { return _control != EControl::Up; }
    bool IsLeftControlDown() const noexcept { return _control == EControl::Left; }

private:
    enum class EControl { Up, Left, Other };

    CX11Display& _display;
    bool _shift = false;
    EControl _control = EControl::Up;
};

/// Which keys are the editor's, and how the others get to the host. A key belongs to the same side from its
/// press to its release, so that neither of them is left with a key that seems to be held. Threads: the
/// window's.
class CX11Keys final {
public:
    explicit CX11Keys(CX11Display& display) noexcept : _display(display) {}

    /// The key that the editor has a use for outside of menus and text boxes (GUI::KeyZ...); 0: none.
    static std::uint32_t UseOf(const STypedKey& key, bool isLeftControlDown) noexcept;

    bool IsHandedOn(const xcb_key_press_event_t& event) const { return _handedOn[event.detail]; }
    /// A press that the editor keeps; `use` is what its release has to be reported as, or 0.
    void Keep(const xcb_key_press_event_t& event, std::uint32_t use);
    /// Whether that release is of a key that was kept, which it no longer is; `use` as above.
    bool TakeKept(const xcb_key_press_event_t& event, std::uint32_t& use);
    /// Sends the key to the host's window. Not one that another client has sent: it could be the host, and
    /// the key would go in a circle.
    void HandOn(const xcb_key_press_event_t& event, xcb_window_t host);

private:
    CX11Display& _display;
    std::bitset<256> _handedOn; // by code, while they are held
    std::bitset<256> _kept;
    std::array<std::uint32_t, 256> _uses{};
};

} // namespace KAV::Native
