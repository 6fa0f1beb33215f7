#include "native/win32/text_box.h"

#include <cstddef>
#include <utility>

namespace KAV::Native {

namespace {

constexpr WPARAM Backspace = 8;
constexpr WPARAM ClearKey = 12;
constexpr WPARAM Enter = 13;

} // namespace

void CTextBox::Begin(HWND parent) noexcept {
    if (_box != nullptr) return;
    const auto instance = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(parent, GWLP_HINSTANCE));
    _box = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | ES_CENTER | ES_AUTOHSCROLL, 0, 0, 0, 0, parent,
        nullptr, instance, nullptr);
    if (_box == nullptr) return;
    SendMessageW(_box, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), FALSE);
    SetWindowLongPtrW(_box, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    _usual = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(_box, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CTextBox::OnMessage)));
}

void CTextBox::End() noexcept {
    _isOpen = false;
    const HWND box = std::exchange(_box, nullptr);
    if (box == nullptr || !IsWindow(box)) return;
    SetWindowLongPtrW(box, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(_usual));
    SetWindowLongPtrW(box, GWLP_USERDATA, 0);
    DestroyWindow(box);
}

bool CTextBox::Open(const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept {
    if (_box == nullptr) return false;
    try {
        const std::wstring wide(text.begin(), text.end());
        SetWindowTextW(_box, wide.c_str());
    } catch (...) { // no memory
        return false;
    }
    _numbersOnly = numbersOnly;
    MoveWindow(_box, place.nL, place.nT, place.nW, place.nH, TRUE);
    ShowWindow(_box, SW_SHOW);
    SendMessageW(_box, EM_SETSEL, 0, -1);
    SetFocus(_box);
    _isOpen = true;
    return true;
}

void CTextBox::Close() noexcept {
    _isOpen = false; // first: hiding it takes the focus away
    if (_box != nullptr) ShowWindow(_box, SW_HIDE);
}

std::u16string CTextBox::Text() const {
    if (_box == nullptr) return {};
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(_box)) + 1, L'\0');
    const int length = GetWindowTextW(_box, text.data(), static_cast<int>(text.size()));
    return {text.begin(), text.begin() + length};
}

void CTextBox::Commit() noexcept {
    if (!_isOpen) return;
    try {
        _committed();
    } catch (...) { // what was typed is lost
        Close();
    }
}

/// "k" is kept deliberately.
bool CTextBox::IsRefused(WPARAM character) const noexcept {
    if (!_numbersOnly || character == Backspace || character == ClearKey) return false;
    const bool isDigit = character >= L'0' && character <= L'9';
    return !isDigit && character != L'-' && character != L'.' && character != L'k';
}

LRESULT CALLBACK CTextBox::OnMessage(HWND box, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    auto* const self = reinterpret_cast<CTextBox*>(GetWindowLongPtrW(box, GWLP_USERDATA));
    if (self == nullptr) return DefWindowProcW(box, message, wParam, lParam);
    const WNDPROC usual = self->_usual;
    switch (message) {
    case WM_GETDLGCODE: // hosts put editors into dialogs, which otherwise take Enter and Tab
        return DLGC_WANTALLKEYS | CallWindowProcW(usual, box, message, wParam, lParam);
    case WM_CHAR:
        if (wParam == Enter) {
            self->Commit();
            return 0;
        }
        if (self->IsRefused(wParam)) return 0;
        break;
    case WM_KILLFOCUS: {
        const auto answer = CallWindowProcW(usual, box, message, wParam, lParam);
        self->Commit();
        return answer;
    }
    case WM_NCDESTROY: // with the window around it
        SetWindowLongPtrW(box, GWLP_USERDATA, 0);
        SetWindowLongPtrW(box, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(usual));
        self->_box = nullptr;
        self->_isOpen = false;
        break;
    default:
        break;
    }
    return CallWindowProcW(usual, box, message, wParam, lParam);
}

} // namespace KAV::Native
