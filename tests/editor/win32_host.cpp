#include "tests/editor/win32_host.h"

#include "panel/layout.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

namespace KAV::Tests {

using namespace VST;

// The instance

CWin32Host::CWin32Host(const CLoadedLibrary& library) {
    _effect = library.Entry()(Answer);
    EXPECT_NE(_effect, nullptr);
    if (_effect == nullptr) return;
    _effect->user = this;
    Dispatch(effOpen);
    Dispatch(effSetSampleRate, 0, 0, nullptr, 48000.0f);
    Dispatch(effSetBlockSize, 0, 512);
}

CWin32Host::~CWin32Host() {
    EndInstance();
    Pump();
}

std::intptr_t CWin32Host::Dispatch(
    EffectOpcode opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) {
    return _effect != nullptr ? _effect->dispatcher(_effect, opcode, index, value, pointer, option) : 0;
}

void CWin32Host::EndInstance() {
    if (auto* const effect = std::exchange(_effect, nullptr))
        effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
}

ERect CWin32Host::Rect() {
    ERect* rect = nullptr;
    Dispatch(effEditGetRect, 0, 0, &rect);
    return rect != nullptr ? *rect : ERect{};
}

std::string CWin32Host::Chunk() {
    void* data = nullptr;
    const auto size = Dispatch(effGetChunk, 0, 0, &data);
    return size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
                    : std::string();
}

void CWin32Host::Inside(std::int32_t opcode, std::function<void()> work) {
    _insideOf = opcode;
    _inside = std::move(work);
}

std::intptr_t CWin32Host::Answer(
    AEffect* effect, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) {
    if (opcode == audioMasterVersion) return kVstVersion;
    auto* const host = effect != nullptr ? static_cast<CWin32Host*>(effect->user) : nullptr;
    if (host == nullptr) return 0;
    if (opcode == audioMasterBeginEdit) host->_edits += 'b';
    if (opcode == audioMasterEndEdit) host->_edits += 'e';
    if (opcode == audioMasterAutomate && !host->_edits.ends_with('v')) host->_edits += 'v';
    if (opcode == host->_insideOf) {
        host->_insideOf = -1;
        std::exchange(host->_inside, nullptr)();
    }
    return opcode == audioMasterSizeWindow ? 1 : 0;
}

// Its windows

namespace {

constexpr int Side = 800;
constexpr UINT_PTR Timer = 1;

std::map<HWND, std::function<void()>>& InLoops() {
    static std::map<HWND, std::function<void()>> works;
    return works;
}

LRESULT CALLBACK OnHostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER && wParam == Timer) {
        KillTimer(window, Timer);
        if (const auto work = std::exchange(InLoops()[window], nullptr)) work();
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LPARAM At(std::int32_t x, std::int32_t y) {
    return MAKELPARAM(x, y);
}

std::pair<std::int32_t, std::int32_t> MiddleOf(HWND editor, std::string_view widget) {
    RECT size{};
    GetClientRect(editor, &size);
    const auto& rect = Panel::RowOf(widget).rect;
    const double scale = static_cast<double>(size.right) / Panel::PanelWidth;
    return {
        static_cast<std::int32_t>(rect.CentreX() * scale), static_cast<std::int32_t>(rect.CentreY() * scale)};
}

} // namespace

HWND MakeHostWindow(HWND parent) {
    WNDCLASSW kind{};
    kind.lpfnWndProc = &OnHostMessage;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = L"Host";
    RegisterClassW(&kind); // fails from the second time on
    const DWORD style = (parent == nullptr ? WS_POPUP : WS_CHILD) | WS_CLIPCHILDREN | WS_VISIBLE;
    const HWND window = CreateWindowExW(
        0, L"Host", L"host", style, 0, 0, Side, Side, parent, nullptr, kind.hInstance, nullptr);
    EXPECT_NE(window, nullptr);
    return window;
}

void InLoopOf(HWND hostWindow, std::function<void()> work) {
    InLoops()[hostWindow] = std::move(work);
    SetTimer(hostWindow, Timer, 10, nullptr);
}

void Pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    do {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (ms > 0) Sleep(1);
    } while (std::chrono::steady_clock::now() < end);
}

bool PumpUntil(const std::function<bool()>& holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) return false;
        Pump(5);
    }
    return true;
}

HWND EditorIn(HWND parent) {
    return FindWindowExW(parent, nullptr, L"KAVGUIWindow", nullptr);
}

std::vector<std::uint32_t> PixelsOf(
    HWND window, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h) {
    BITMAPINFO form{};
    form.bmiHeader.biSize = sizeof(form.bmiHeader);
    form.bmiHeader.biWidth = w;
    form.bmiHeader.biHeight = -h;
    form.bmiHeader.biPlanes = 1;
    form.bmiHeader.biBitCount = 32;
    const HDC from = GetDC(window);
    const HDC to = CreateCompatibleDC(from);
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(to, &form, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(to, bitmap);
    BitBlt(to, 0, 0, w, h, from, x, y, SRCCOPY);
    GdiFlush();
    const auto* const first = static_cast<const std::uint32_t*>(bits);
    std::vector<std::uint32_t> pixels(first, first + static_cast<std::ptrdiff_t>(w) * h);
    SelectObject(to, before);
    DeleteObject(bitmap);
    DeleteDC(to);
    ReleaseDC(window, from);
    return pixels;
}

bool ShowsAPicture(HWND editor) {
    return PumpUntil([editor] {
        auto pixels = PixelsOf(editor, 0, 0, 300, 200);
        std::sort(pixels.begin(), pixels.end());
        return std::unique(pixels.begin(), pixels.end()) - pixels.begin() > 20;
    });
}

// Its user

void Drag(HWND editor, std::string_view widget, bool releases) {
    // Not twice at one place, which could be a double click.
    static std::int32_t drags = 0;
    constexpr std::int32_t places = 7;
    constexpr std::int32_t apart = 5;
    constexpr std::int32_t length = 16;
    const auto middle = MiddleOf(editor, widget);
    const auto x = middle.first + (drags++ % places - places / 2) * apart;
    const auto y = middle.second;
    SendMessageW(editor, WM_MOUSEMOVE, 0, At(x, y));
    SendMessageW(editor, WM_LBUTTONDOWN, MK_LBUTTON, At(x, y));
    for (std::int32_t step = 2; step <= length; step += 2)
        SendMessageW(editor, WM_MOUSEMOVE, MK_LBUTTON, At(x, y - step));
    if (releases) SendMessageW(editor, WM_LBUTTONUP, 0, At(x, y - length));
}

void Click(HWND editor, std::string_view widget) {
    const auto [x, y] = MiddleOf(editor, widget);
    SendMessageW(editor, WM_MOUSEMOVE, 0, At(x, y));
    SendMessageW(editor, WM_LBUTTONDOWN, MK_LBUTTON, At(x, y));
    SendMessageW(editor, WM_LBUTTONUP, 0, At(x, y));
}

} // namespace KAV::Tests
