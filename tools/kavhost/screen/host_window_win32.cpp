#include "platform/winapi/wide_text.h"
#include "platform/winapi/windows_header.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/screen/host_window.h"
#include "tools/kavhost/screen/memory_picture_win32.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>

namespace KAV::Host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const wchar_t* TopClass = L"kavhost";
constexpr const wchar_t* ParentClass = L"kavhost editor";
constexpr COLORREF Background = RGB(0x14, 0x16, 0x18);
constexpr LONG LargestSide = 0x7FFF;

/// Longer than this no messages are taken in one go: where a timer's work takes longer than its period, there
/// would always be another one.
constexpr auto LongestRound = std::chrono::milliseconds(20);

EHostKey KeyOf(WPARAM key) noexcept {
    switch (key) {
    case VK_SPACE:
        return EHostKey::Space;
    case 'L':
        return EHostKey::L;
    case VK_ESCAPE:
        return EHostKey::Escape;
    case VK_HOME:
        return EHostKey::Home;
    case VK_LEFT:
        return EHostKey::Left;
    case VK_RIGHT:
        return EHostKey::Right;
    default:
        return EHostKey::Other;
    }
}

} // namespace

struct CHostWindow::SNative {
    HWND top = nullptr;
    HWND parent = nullptr; ///< of the editor
    HBRUSH ground = nullptr;
    EPlace place = EPlace::InView;
    SSize editor;
    std::int32_t stripHeight = 0;
    SSize whole; ///< of the top window's inside
    SPicture strip;
    std::deque<SWindowEvent> events;

    ~SNative();
    SSize Wanted() const noexcept { return {editor.width, editor.height + stripHeight}; }
    std::int32_t StripTop() const noexcept { return std::max(whole.height - stripHeight, 0); }

    DWORD Style() const noexcept {
        // The editor changes its size by itself, so the frame has nothing to drag.
        return WS_CLIPCHILDREN |
               (place == EPlace::InView ? WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX : WS_POPUP);
    }
    DWORD ExtendedStyle() const noexcept {
        return place == EPlace::InView
                   ? 0
                   : WS_EX_LAYERED | WS_EX_TRANSPARENT | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE;
    }
    SSize OuterSize() const noexcept;
    void MakeWindows(const std::string& title);
    void PlaceEditor() const noexcept;
    void Paint() const noexcept;
    void Note(SWindowEvent::EKind kind, LPARAM point);
    LRESULT Take(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK OnTopMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    static LRESULT CALLBACK OnParentMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
};

CHostWindow::SNative::~SNative() {
    if (top != nullptr) {
        SetWindowLongPtrW(top, GWLP_USERDATA, 0);
        DestroyWindow(top);
    }
    if (ground != nullptr) DeleteObject(ground);
}

CHostWindow::SSize CHostWindow::SNative::OuterSize() const noexcept {
    const auto inner = Wanted();
    RECT rect{0, 0, std::max(inner.width, 1), std::max(inner.height, 1)};
    AdjustWindowRectEx(&rect, Style(), FALSE, ExtendedStyle());
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void CHostWindow::SNative::MakeWindows(const std::string& title) {
    const auto instance = GetModuleHandleW(nullptr);
    ground = CreateSolidBrush(Background);
    WNDCLASSW kind{};
    kind.lpfnWndProc = &SNative::OnTopMessage;
    kind.hInstance = instance;
    kind.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    kind.lpszClassName = TopClass;
    RegisterClassW(&kind); // fails if an earlier window has done so
    kind.lpfnWndProc = &SNative::OnParentMessage;
    kind.lpszClassName = ParentClass;
    RegisterClassW(&kind);
    const auto outer = OuterSize();
    int x = CW_USEDEFAULT;
    int y = CW_USEDEFAULT;
    if (place == EPlace::OutOfView) {
        x = GetSystemMetrics(SM_XVIRTUALSCREEN);
        y = GetSystemMetrics(SM_YVIRTUALSCREEN);
    }
    const HWND made = CreateWindowExW(ExtendedStyle(), TopClass, Platform::ToWide(title).c_str(), Style(), x,
        y, outer.width, outer.height, nullptr, nullptr, instance, this);
    if (made != nullptr) {
        parent = CreateWindowExW(0, ParentClass, L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0,
            editor.width, editor.height, made, nullptr, instance, nullptr);
    }
    if (parent == nullptr) throw CFailure("there is no display: the system opens no window");
    // On the screen but entirely transparent, and for the pointer it isn't there. Beyond the screens a system
    // may give a window no pixels, and hidden ones have none. The system keeps those of a layered window
    // whatever covers it, with and without desktop composition.
    if (place == EPlace::OutOfView) SetLayeredWindowAttributes(top, 0, 0, LWA_ALPHA);
}

void CHostWindow::SNative::PlaceEditor() const noexcept {
    const auto x = std::max((whole.width - editor.width) / 2, 0);
    const auto y = std::max((StripTop() - editor.height) / 2, 0);
    SetWindowPos(parent, nullptr, x, y, editor.width, editor.height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void CHostWindow::SNative::Paint() const noexcept {
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(top, &paint);
    FillRect(context, &paint.rcPaint, ground);
    if (!strip.pixels.empty()) {
        const auto info = CMemoryPicture::InfoOf(strip.width, strip.height);
        const auto rows = static_cast<UINT>(strip.height);
        SetDIBitsToDevice(context, 0, StripTop(), static_cast<DWORD>(strip.width), rows, 0, 0, 0, rows,
            strip.pixels.data(), &info, DIB_RGB_COLORS);
    }
    EndPaint(top, &paint);
}

void CHostWindow::SNative::Note(SWindowEvent::EKind kind, LPARAM point) {
    const auto x = static_cast<std::int16_t>(LOWORD(point));
    const auto y = static_cast<std::int16_t>(HIWORD(point));
    events.push_back({kind, EHostKey::Other, x, y - StripTop()});
}

LRESULT CHostWindow::SNative::Take(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    using enum SWindowEvent::EKind;
    switch (message) {
    case WM_CLOSE:
        EndMenu(); // of the editor, whose loop would keep us from closing
        events.push_back({Close});
        return 0;
    case WM_DESTROY: // another program has ended it
        top = parent = nullptr;
        events.push_back({Close});
        return 0;
    case WM_KEYDOWN:
        if (GetKeyState(VK_CONTROL) >= 0 && GetKeyState(VK_MENU) >= 0) events.push_back({Key, KeyOf(wParam)});
        return 0;
    case WM_LBUTTONDOWN:
        SetFocus(window);
        SetCapture(window);
        Note(Press, lParam);
        return 0;
    case WM_MOUSEMOVE:
        if ((wParam & MK_LBUTTON) != 0) Note(Drag, lParam);
        return 0;
    case WM_LBUTTONUP:
        ReleaseCapture();
        Note(Release, lParam);
        return 0;
    case WM_SIZE:
        if (wParam == SIZE_MINIMIZED) return 0;
        whole = {LOWORD(lParam), HIWORD(lParam)};
        PlaceEditor();
        InvalidateRect(window, nullptr, FALSE);
        events.push_back({Redraw});
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        Paint();
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

LRESULT CALLBACK CHostWindow::SNative::OnTopMessage(
    HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* const native =
            static_cast<SNative*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        native->top = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(native));
    }
    // Otherwise the largest window is a little larger than the screen. It comes before any other message.
    if (message == WM_GETMINMAXINFO) {
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMaxTrackSize = {LargestSide, LargestSide};
        return 0;
    }
    auto* const native = reinterpret_cast<SNative*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (native == nullptr) return DefWindowProcW(window, message, wParam, lParam);
    return native->Take(window, message, wParam, lParam);
}

LRESULT CALLBACK CHostWindow::SNative::OnParentMessage(
    HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_KEYDOWN: // an editor hands its parent what it doesn't need
        return SendMessageW(GetParent(window), message, wParam, lParam);
    case WM_ERASEBKGND:
        return 1;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

CHostWindow::CHostWindow(
    const std::string& title, const SSize& editor, std::int32_t stripHeight, EPlace place)
    : _native(std::make_unique<SNative>()) {
    auto& native = *_native;
    native.place = place;
    native.editor = editor;
    native.stripHeight = stripHeight;
    native.whole = native.Wanted();
    native.MakeWindows(title);
}

CHostWindow::~CHostWindow() = default;

std::uintptr_t CHostWindow::EditorParent() const noexcept {
    return reinterpret_cast<std::uintptr_t>(_native->parent);
}

void CHostWindow::Show() {
    ShowWindow(_native->top, _native->place == EPlace::InView ? SW_SHOWNORMAL : SW_SHOWNOACTIVATE);
    // It is so for good: nothing is drawn beyond the screens.
    if (_native->place == EPlace::OutOfView && !EditorPicture())
        throw CFailure("the display does not show the whole editor");
}

void CHostWindow::Resize(const SSize& editor, std::int32_t stripHeight) {
    auto& native = *_native;
    native.editor = editor;
    native.stripHeight = stripHeight;
    const auto outer = native.OuterSize();
    SetWindowPos(
        native.top, nullptr, 0, 0, outer.width, outer.height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    native.PlaceEditor();
}

void CHostWindow::Wait(int milliseconds) {
    if (!_native->events.empty()) return;
    MsgWaitForMultipleObjectsEx(
        0, nullptr, static_cast<DWORD>(std::max(milliseconds, 0)), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

std::optional<SWindowEvent> CHostWindow::Next() {
    auto& native = *_native;
    const auto end = Clock::now() + LongestRound;
    MSG message{};
    while (native.events.empty() && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        if (message.message == WM_QUIT) return SWindowEvent{SWindowEvent::EKind::Close};
        TranslateMessage(&message); // an editor's text box needs it
        DispatchMessageW(&message);
        if (Clock::now() > end) break;
    }
    if (native.events.empty()) return std::nullopt;
    const auto event = native.events.front();
    native.events.pop_front();
    return event;
}

CHostWindow::SSize CHostWindow::Strip() const noexcept {
    return {_native->whole.width, std::min(_native->stripHeight, _native->whole.height)};
}

void CHostWindow::DrawStrip(const SPicture& picture) {
    auto& native = *_native;
    native.strip = picture;
    const RECT place{0, native.StripTop(), native.whole.width, native.whole.height};
    InvalidateRect(native.top, &place, FALSE);
}

/// What the editor has drawn into its window, from the window's own context: asked by WM_PRINT an editor may
/// draw something else than what it shows, or nothing.
std::optional<SPicture> CHostWindow::EditorPicture() {
    auto& native = *_native;
    SPicture picture{native.editor.width, native.editor.height, {}};
    const CMemoryPicture memory(picture.width, picture.height);
    // A context from the cache isn't cut by the windows inside of this one.
    const HDC context = GetDCEx(native.parent, nullptr, DCX_CACHE);
    if (context == nullptr || memory.Pixels() == nullptr) return std::nullopt;
    RECT shown{};
    const bool isShown = GetClipBox(context, &shown) != NULLREGION &&
                         shown.right - shown.left >= picture.width &&
                         shown.bottom - shown.top >= picture.height;
    const bool isRead = isShown && BitBlt(memory.Context(), 0, 0, picture.width, picture.height, context, 0,
                                       0, SRCCOPY) != FALSE;
    ReleaseDC(native.parent, context);
    if (!isRead) return std::nullopt;
    GdiFlush();
    const auto count = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    picture.pixels.assign(memory.Pixels(), memory.Pixels() + count);
    for (auto& pixel : picture.pixels) pixel &= 0xFFFFFF; // the rest of it is undefined
    return picture;
}

} // namespace KAV::Host
