#include "platform/winapi/opengl_library.h"

#include "platform/winapi/system_library.h"

#include <atomic>
#include <optional>

namespace KAV::Platform {

namespace {

std::optional<SWgl> LoadWgl() noexcept {
    const HMODULE opengl = LoadSystemLibrary(L"opengl32.dll");
    const HMODULE gdi = LoadSystemLibrary(L"gdi32.dll");
    const HMODULE user = LoadSystemLibrary(L"user32.dll");
    const HMODULE kernel = LoadSystemLibrary(L"kernel32.dll");
    if (opengl == nullptr || gdi == nullptr || user == nullptr || kernel == nullptr) return std::nullopt;
    SWgl wgl{};
    const bool isWhole = FindFunction(user, "GetDC", wgl.GetDC) &&
                         FindFunction(user, "ReleaseDC", wgl.ReleaseDC) &&
                         FindFunction(gdi, "ChoosePixelFormat", wgl.ChoosePixelFormat) &&
                         FindFunction(gdi, "SetPixelFormat", wgl.SetPixelFormat) &&
                         FindFunction(gdi, "SwapBuffers", wgl.SwapBuffers) &&
                         FindFunction(kernel, "GetLastError", wgl.GetLastError) &&
                         FindFunction(opengl, "wglCreateContext", wgl.wglCreateContext) &&
                         FindFunction(opengl, "wglDeleteContext", wgl.wglDeleteContext) &&
                         FindFunction(opengl, "wglGetCurrentContext", wgl.wglGetCurrentContext) &&
                         FindFunction(opengl, "wglGetProcAddress", wgl.wglGetProcAddress) &&
                         FindFunction(opengl, "wglMakeCurrent", wgl.wglMakeCurrent);
    const auto find = [opengl](const char* name, auto& function) noexcept {
        return FindFunction(opengl, name, function);
    };
    return isWhole && FindOpenGL(wgl.gl, find) ? std::optional(wgl) : std::nullopt;
}

std::atomic<const SWgl*> otherWgl{nullptr};

} // namespace

const SWgl* Wgl() noexcept {
    if (const auto* const other = otherWgl.load(std::memory_order_acquire)) return other;
    static const std::optional<SWgl> wgl = LoadWgl();
    return wgl ? &*wgl : nullptr;
}

void UseWgl(const SWgl* functions) noexcept {
    otherWgl.store(functions, std::memory_order_release);
}

} // namespace KAV::Platform
