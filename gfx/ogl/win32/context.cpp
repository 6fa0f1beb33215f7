#include "gfx/ogl/context.h"

#include "platform/winapi/opengl_library.h"
#include "utils/exceptions.h"

#include <cstring>

namespace KAV::GFX::OGL {

using Platform::SWgl;

struct CContext::SParts {
    explicit SParts(const SWgl& a_sWgl) noexcept : wgl(a_sWgl) {}
    ~SParts();
    SParts(const SParts&) = delete;
    SParts& operator=(const SParts&) = delete;

    [[noreturn]] void Fail(std::u16string_view a_sFunction) const {
        throw Exceptions::OGL(a_sFunction, wgl.GetLastError(), wgl.gl.glGetString);
    }
    void Begin(const SRendererTarget& a_sTarget);
    void MakeWindow(const SRendererTarget& a_sTarget);
    void SetInterval() const;

    const SWgl& wgl;
    HWND window = nullptr; ///< ours; gone with the editor's if that was destroyed first
    HDC device = nullptr;
    HGLRC context = nullptr;
    DWORD error = 0;
    bool lost = false;
};

CContext::SParts::~SParts() {
    if (context != nullptr && wgl.wglGetCurrentContext() == context) wgl.wglMakeCurrent(nullptr, nullptr);
    if (device != nullptr) wgl.ReleaseDC(window, device);
    if (context != nullptr) wgl.wglDeleteContext(context);
    if (window != nullptr && IsWindow(window) != FALSE) DestroyWindow(window);
}

/// A window keeps the pixel format that it once has, and what others draw into it then, as GDI+ for the
/// software renderer, may not be seen. So OpenGL gets a window of its own over the whole editor: a static
/// control, which the pointer doesn't meet, and which leaves its drawing to its parent.
void CContext::SParts::MakeWindow(const SRendererTarget& a_sTarget) {
    window = CreateWindowExW(WS_EX_NOPARENTNOTIFY, L"STATIC", L"",
        WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | SS_OWNERDRAW, 0, 0, a_sTarget.nW, a_sTarget.nH,
        static_cast<HWND>(a_sTarget.pWindow), nullptr, nullptr, nullptr);
    if (window == nullptr) Fail(u"CreateWindow");
    // Below the text box.
    SetWindowPos(window, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void CContext::SParts::Begin(const SRendererTarget& a_sTarget) {
    MakeWindow(a_sTarget);
    device = wgl.GetDC(window);
    if (device == nullptr) Fail(u"GetDC");
    PIXELFORMATDESCRIPTOR format{};
    format.nSize = sizeof(format);
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 24;
    if (wgl.SetPixelFormat(device, wgl.ChoosePixelFormat(device, &format), &format) == FALSE)
        Fail(u"SetPixelFormat");
    context = wgl.wglCreateContext(device);
    if (context == nullptr) Fail(u"wglCreateContext");
    if (wgl.wglMakeCurrent(device, context) == FALSE) Fail(u"wglMakeCurrent");
    SetInterval();
}

/// The editor's own clock says when a frame is due. Not every driver can be told.
void CContext::SParts::SetInterval() const {
    using SwapInterval = BOOL(WINAPI*)(int);
    auto* const found = wgl.wglGetProcAddress("wglSwapIntervalEXT");
    SwapInterval setInterval = nullptr;
    static_assert(sizeof(setInterval) == sizeof(found));
    std::memcpy(&setInterval, &found, sizeof(found));
    if (setInterval != nullptr) setInterval(0);
}

CContext::CContext(const SRendererTarget& a_sTarget, EReason) {
    const auto* const wgl = Platform::Wgl();
    if (wgl == nullptr) throw Exceptions::OGL(u"LoadLibrary", GetLastError(), nullptr);
    // Without a window there would be the device of the whole screen.
    if (a_sTarget.pWindow == nullptr) throw Exceptions::OGL(u"GetDC", ERROR_INVALID_WINDOW_HANDLE, nullptr);
    _piParts = std::make_unique<SParts>(*wgl);
    _piParts->Begin(a_sTarget);
}

CContext::~CContext() = default;

/// That of the system itself is used, however slow it is.
bool CContext::AsksForHardware(EReason) noexcept {
    return false;
}

std::u16string_view CContext::RedrawCall() noexcept {
    return u"ReDraw::wglMakeCurrent";
}

std::u16string_view CContext::SwapCall() noexcept {
    return u"SwapBuffers(_hDC)";
}

const Platform::SOpenGL& CContext::Functions() const noexcept {
    return _piParts->wgl.gl;
}

bool CContext::IsCurrent() const noexcept {
    return _piParts->wgl.wglGetCurrentContext() == _piParts->context;
}

/// While the window is there a context can be refused only because its driver has lost it.
bool CContext::MakeCurrent() noexcept {
    auto& parts = *_piParts;
    if (parts.wgl.wglMakeCurrent(parts.device, parts.context) != FALSE) return true;
    parts.error = parts.wgl.GetLastError();
    parts.lost = IsWindow(parts.window) != FALSE;
    return false;
}

bool CContext::Swap() noexcept {
    auto& parts = *_piParts;
    if (parts.wgl.SwapBuffers(parts.device) != FALSE) return true;
    parts.error = parts.wgl.GetLastError();
    return false;
}

void CContext::Resize(std::int32_t a_nW, std::int32_t a_nH) noexcept {
    SetWindowPos(_piParts->window, nullptr, 0, 0, a_nW, a_nH, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

std::uint32_t CContext::Error() const noexcept {
    return _piParts->error;
}

bool CContext::IsLost() const noexcept {
    return _piParts->lost;
}

} // namespace KAV::GFX::OGL
