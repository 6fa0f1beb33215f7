#pragma once

#include "gfx/renderer_row.h"
#include "platform/winapi/windows_header.h"
#include "tests/gfx/cpu_scenes.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace KAV::Tests {

/// A window that graphics hardware can draw into; nobody sees it.
class CDirectWindow final {
public:
    CDirectWindow(std::int32_t width, std::int32_t height)
        : _window(CreateWindowExW(
              0, L"STATIC", L"", WS_POPUP, 0, 0, width, height, nullptr, nullptr, nullptr, nullptr)),
          _width(width), _height(height) {}
    ~CDirectWindow() { DestroyWindow(_window); }
    CDirectWindow(const CDirectWindow&) = delete;
    CDirectWindow& operator=(const CDirectWindow&) = delete;

    HWND Handle() const { return _window; }
    GFX::SRendererTarget Target() const { return {_window, _width, _height}; }

private:
    HWND _window;
    std::int32_t _width;
    std::int32_t _height;
};

inline const SScene& SceneOf(const std::string& name) {
    const auto& all = Scenes();
    return *std::find_if(all.begin(), all.end(), [&](const auto& scene) { return scene.name == name; });
}

} // namespace KAV::Tests
