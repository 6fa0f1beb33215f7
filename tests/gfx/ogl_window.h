#pragma once

#include "gfx/ogl/data.h"
#include "tests/gfx/cpu_scenes.h"

#include <cstdint>
#include <memory>
#include <utility>

#if defined(_WIN32)
#include "platform/winapi/windows_header.h"
#else
#include "platform/picture_target.h"
#include "platform/x11/xcb_library.h"
#include "tests/support/x_test_host.h"
#endif

namespace KAV::Tests {

#if defined(_WIN32)

/// A window for OpenGL.
class CGlWindow final {
public:
    /// Under Wine, what OpenGL draws into gets its window's size after the display's answer.
    static bool Settle() {
        Sleep(50);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) DispatchMessageW(&message);
        return true;
    }
    explicit CGlWindow(std::int32_t width = SceneWidth, std::int32_t height = SceneHeight)
        : _window(CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, width, height, nullptr,
              nullptr, GetModuleHandleW(nullptr), nullptr)) {}
    ~CGlWindow() { Destroy(); }
    CGlWindow(const CGlWindow&) = delete;
    CGlWindow& operator=(const CGlWindow&) = delete;

    void* Handle() const { return _window; }
    void Resize(std::int32_t width, std::int32_t height) {
        SetWindowPos(_window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    }
    void Destroy() {
        if (_window != nullptr) DestroyWindow(_window);
        _window = nullptr;
    }

private:
    HWND _window;
};

#else

/// A window for OpenGL, on a display of the test's own, which the windows of a test share.
class CGlWindow final : public Platform::IPictureTarget {
public:
    static bool Settle() { return false; } // there is nothing to wait for
    explicit CGlWindow(std::int32_t width = SceneWidth, std::int32_t height = SceneHeight)
        : CGlWindow(SharedHost(), width, height) {}
    CGlWindow(std::shared_ptr<CXTestHost> host, std::int32_t width, std::int32_t height)
        : _host(std::move(host)), _connection(Platform::ConnectToDisplay(_host->Display())),
          _window(_host->MakeWindow(_host->Top(), 0, 0, width, height)) {
        _host->Show(_window, true);
        visual = _host->VisualOf(_window);
    }
    ~CGlWindow() { Destroy(); }
    CGlWindow(const CGlWindow&) = delete;
    CGlWindow& operator=(const CGlWindow&) = delete;

    void* Handle() { return static_cast<Platform::IPictureTarget*>(this); }
    void Resize(std::int32_t width, std::int32_t height) { _host->Resize(_window, width, height); }
    void Destroy() {
        if (_window != 0) _host->Destroy(_window);
        _window = 0;
    }
    CXTestHost& Host() { return *_host; }
    /// The display has done what was sent over the window's connection.
    void Sync() {
        auto* const connection = _connection.get();
        const Platform::XReply<xcb_get_input_focus_reply_t> reply(Platform::Xcb()->get_input_focus_reply(
            connection, Platform::Xcb()->get_input_focus(connection), nullptr));
    }
    /// What it shows, or what a child of it does.
    Frame Shown(xcb_window_t window) {
        Sync();
        auto pixels = _host->Pixels(window, 0, 0, SceneWidth, SceneHeight);
        const bool hasAlpha = _host->Place(window).depth == 32;
        for (auto& pixel : pixels) pixel |= hasAlpha ? 0 : 0xFF000000; // it means nothing there
        return pixels;
    }
    xcb_window_t Number() const { return _window; }

    bool Put(const std::uint32_t*, std::int32_t, std::int32_t, std::int32_t,
        std::span<const Platform::SArea>) noexcept override {
        return true;
    }
    Platform::SSystemWindow System() const noexcept override {
        return {_connection.get(), 0, _window, visual};
    }
    void SetDrawnWindow(std::uint32_t window) noexcept override { drawn = window; }

    std::uint32_t visual = 0;    ///< what it says of itself
    std::uint32_t drawn = 0xFFF; ///< the last SetDrawnWindow()

private:
    static std::shared_ptr<CXTestHost> SharedHost() {
        static std::weak_ptr<CXTestHost> shared;
        auto host = shared.lock();
        if (host == nullptr) shared = host = std::make_shared<CXTestHost>();
        return host;
    }
    std::shared_ptr<CXTestHost> _host;
    Platform::XConnection _connection; // each editor has one
    xcb_window_t _window;
};

#endif

} // namespace KAV::Tests
