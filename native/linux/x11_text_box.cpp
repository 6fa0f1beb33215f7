#include "native/linux/x11_text_box.h"

#include "native/line_editor.h"
#include "native/linux/x11_clipboard.h"
#include "native/text_box_painter.h"
#include "pixels/lettering.h"
#include "utils/clock.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <optional>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Native {

namespace {

using Platform::Xcb;
using EMove = CLineEditor::EMove;

constexpr std::uint32_t BlinkMs = 530;
constexpr std::uint32_t DoubleClickMs = 500;
constexpr std::int32_t DoubleClickPixels = 4;

// All moves, so that the editor doesn't take those over the box for its own.
constexpr std::uint32_t Events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS |
                                 XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;

std::optional<EMove> MoveOf(const STypedKey& key) noexcept {
    switch (key.symbol) {
    case XKB_KEY_Left:
    case XKB_KEY_KP_Left:
        return key.control ? EMove::WordLeft : EMove::Left;
    case XKB_KEY_Right:
    case XKB_KEY_KP_Right:
        return key.control ? EMove::WordRight : EMove::Right;
    case XKB_KEY_Home:
    case XKB_KEY_KP_Home:
    case XKB_KEY_Up:
    case XKB_KEY_KP_Up:
        return EMove::Home;
    case XKB_KEY_End:
    case XKB_KEY_KP_End:
    case XKB_KEY_Down:
    case XKB_KEY_KP_Down:
        return EMove::End;
    default:
        return std::nullopt;
    }
}

std::optional<EMove> ErasedBy(const STypedKey& key) noexcept {
    switch (key.symbol) {
    case XKB_KEY_BackSpace:
        return key.control ? EMove::WordLeft : EMove::Left;
    case XKB_KEY_Delete:
    case XKB_KEY_KP_Delete:
        return key.control ? EMove::WordRight : EMove::Right;
    default:
        return std::nullopt;
    }
}

class CTextBox final : public CX11TextBox {
public:
    CTextBox(CX11Display& display, xcb_window_t owner, const GUI::SPixelRect& place, std::u16string_view text,
        bool numbersOnly, std::unique_ptr<Pixels::CLettering> lettering, std::function<void()> committed)
        : _display(display), _owner(owner), _lettering(std::move(lettering)), _line(text, numbersOnly),
          _painter(*_lettering, place.nW, place.nH), _committed(std::move(committed)) {
        _window = _display.MakeWindow(_owner, {place.nL, place.nT, place.nW, place.nH}, Events, false);
        Xcb()->map_window(_display.Connection(), _window);
        _display.ResetCompose();
        Changed();
    }
    ~CTextBox() override {
        _display.Clipboard().Forget();
        _display.ResetCompose();
        Xcb()->destroy_window(_display.Connection(), _window);
        _display.Flush();
    }

    bool OnEvent(const xcb_generic_event_t& event) override;
    bool NextTime(std::uint32_t& timeMs) const override {
        timeMs = _blinkMs;
        return true;
    }
    void OnTime(std::uint32_t nowMs) override;

    std::u16string Text() const override { return _line.Text(); }
    void OnFocusLost() override { Commit(); }

private:
    void OnKey(const xcb_key_press_event_t& event);
    void OnTyped(const STypedKey& key);
    void OnShortcut(char16_t letter);
    void OnPress(const xcb_button_press_event_t& event);
    void Changed();
    void Show() noexcept;
    void Commit();

    CX11Display& _display;
    xcb_window_t _owner;
    xcb_window_t _window = 0;
    std::unique_ptr<Pixels::CLettering> _lettering;
    CLineEditor _line;
    CTextBoxPainter _painter;
    std::function<void()> _committed; // null: it has been called
    bool _caretShown = true;
    std::uint32_t _blinkMs = 0;          // when the caret changes next
    bool _isDragging = false;            // the selection
    xcb_button_press_event_t _pressed{}; // the last press
};

bool CTextBox::OnEvent(const xcb_generic_event_t& event) {
    if (_committed == nullptr) return false;
    switch (event.response_type & 0x7Fu) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        OnKey(reinterpret_cast<const xcb_key_press_event_t&>(event)); // it may have ended after this
        return true;
    case XCB_BUTTON_PRESS: {
        const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
        if (press.event != _window) return false;
        OnPress(press);
        return true;
    }
    case XCB_BUTTON_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_button_release_event_t&>(event);
        if (release.event != _window) return false;
        if (release.detail == XCB_BUTTON_INDEX_1) _isDragging = false;
        return true;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& move = reinterpret_cast<const xcb_motion_notify_event_t&>(event);
        if (move.event != _window) return false;
        if (!_isDragging) return true;
        _line.MoveTo(_painter.PositionAt(move.event_x), true);
        Changed();
        return true;
    }
    case XCB_EXPOSE: {
        const auto& expose = reinterpret_cast<const xcb_expose_event_t&>(event);
        if (expose.window != _window) return false;
        if (expose.count == 0) Show();
        return true;
    }
    default:
        return false;
    }
}

void CTextBox::OnKey(const xcb_key_press_event_t& event) {
    _display.SetTime(event.time);
    const auto key = _display.Typed(event);
    if (!key.down) return;
    if (key.symbol == XKB_KEY_Return || key.symbol == XKB_KEY_KP_Enter) {
        Commit();
    } else {
        OnTyped(key);
    }
}

void CTextBox::OnTyped(const STypedKey& key) {
    if (const auto move = MoveOf(key)) {
        _line.Move(*move, key.shift);
    } else if (const auto erased = ErasedBy(key)) {
        _line.Erase(*erased);
    } else if (key.control) {
        OnShortcut(key.latin);
    } else if (!key.alt) {
        _line.Type(key.text);
    }
    Changed();
}

void CTextBox::OnShortcut(char16_t letter) {
    switch (letter) {
    case u'A':
        return _line.SelectAll();
    case u'C':
    case u'X':
        if (!_line.HasSelection()) return;
        _display.Clipboard().Copy(_line.Selected());
        if (letter == u'X') _line.Erase(EMove::Left);
        return;
    case u'V':
        _display.Clipboard().Paste([this](const std::u16string& text) {
            _line.Type(text);
            Changed();
        });
        return;
    default:
        return;
    }
}

void CTextBox::OnPress(const xcb_button_press_event_t& event) {
    if (event.detail != XCB_BUTTON_INDEX_1) return;
    const auto before = std::exchange(_pressed, event);
    const bool isDouble = before.response_type != 0 && event.time - before.time <= DoubleClickMs &&
                          std::abs(event.event_x - before.event_x) <= DoubleClickPixels;
    if (isDouble) {
        _line.SelectWord(_painter.PositionAt(event.event_x));
        _pressed = {}; // a third press is a first one again
    } else {
        _line.MoveTo(_painter.PositionAt(event.event_x), (event.state & XCB_MOD_MASK_SHIFT) != 0);
        _isDragging = true;
    }
    Changed();
}

/// Shows the caret from now on.
void CTextBox::Changed() {
    _caretShown = true;
    _blinkMs = Utils::TickMs() + BlinkMs;
    Show();
}

void CTextBox::OnTime(std::uint32_t nowMs) {
    if (static_cast<std::int32_t>(nowMs - _blinkMs) < 0) return;
    _caretShown = !_caretShown;
    _blinkMs = nowMs + BlinkMs;
    if (_lettering->HasNewGlyphs()) _painter.Forget();
    Show();
}

void CTextBox::Show() noexcept {
    try {
        _display.Put(_window, _painter.Paint(_line, _caretShown));
        _display.Flush();
    } catch (const std::exception&) { // no memory: the box shows what it showed
    }
}

void CTextBox::Commit() {
    if (const auto committed = std::exchange(_committed, nullptr)) committed();
}

} // namespace

std::unique_ptr<CX11TextBox> CX11TextBox::Open(CX11Display& display, xcb_window_t owner,
    const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly,
    std::function<void()> committed) {
    auto lettering = Pixels::CLettering::Create();
    if (lettering == nullptr) return nullptr;
    const GUI::SPixelRect least{place.nL, place.nT, std::max(place.nW, 1), std::max(place.nH, 1)};
    return std::make_unique<CTextBox>(
        display, owner, least, text, numbersOnly, std::move(lettering), std::move(committed));
}

} // namespace KAV::Native
