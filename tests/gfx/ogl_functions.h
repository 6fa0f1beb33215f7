#pragma once

#include "platform/opengl_functions.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#if defined(_WIN32)
#include "platform/winapi/opengl_library.h"
#else
#include "platform/egl/egl_library.h"
#endif

namespace KAV::Tests {

/// While it lives, the system's functions of OpenGL count what is made and freed, say what a test wants, and
/// fail as it wants. One at a time.
class CGlFunctions final {
public:
    CGlFunctions() {
        displays = surfaces = contexts = textures = makesCurrent = swaps = loads = 0;
        failing.clear();
        error = 0x3003;
        glError = 0;
        vendor = renderer = version = nullptr;
        hasRenderNode = true;
        isMissing = false;
        interval = -1;
        drawn.clear();
        Install();
    }
    ~CGlFunctions();
    CGlFunctions(const CGlFunctions&) = delete;
    CGlFunctions& operator=(const CGlFunctions&) = delete;

    /// Everything that was made has been given back.
    static testing::AssertionResult IsLevel() {
        if (displays == 0 && surfaces == 0 && contexts == 0 && textures == 0)
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << displays << " displays, " << surfaces << " surfaces, " << contexts << " contexts and "
               << textures << " textures are left";
    }
    /// What the factory calls of this system are, in their order, by the names under which they are reported.
    static std::vector<std::string> Steps();
    static std::string MakeCurrentName();
    static std::string SwapName();

    // What is alive, and what was called
    static inline int displays, surfaces, contexts, textures;
    static inline int makesCurrent, swaps, loads;
    static inline int interval;
    static inline std::vector<std::int32_t> drawn; ///< vertices of each glDrawArrays()

    // What is to happen
    static inline std::string failing;                     ///< the function that fails, as long as it is set
    static inline std::uint32_t error;                     ///< what it reports
    static inline std::uint32_t glError;                   ///< what glGetError() says once
    static inline const char *vendor, *renderer, *version; ///< null: the driver's own
    static inline bool hasRenderNode;
    static inline bool isMissing; ///< the libraries

private:
    static bool Fails(const char* name) { return failing == name; }
    /// The part that both systems have.
    static void ReplaceGl(Platform::SOpenGL& gl) {
        realGl = gl;
        gl.glGenTextures = [](std::int32_t count, std::uint32_t* names) {
            if (Fails("glGenTextures")) {
                glError = 0x505;
                return;
            }
            realGl.glGenTextures(count, names);
            textures += count;
        };
        gl.glDeleteTextures = [](std::int32_t count, const std::uint32_t* names) {
            realGl.glDeleteTextures(count, names);
            textures -= count;
        };
        gl.glTexImage2D = [](std::uint32_t target, std::int32_t level, std::int32_t inner, std::int32_t width,
                              std::int32_t height, std::int32_t border, std::uint32_t format,
                              std::uint32_t type, const void* pixels) {
            if (Fails("glTexImage2D")) {
                glError = 0x505;
                return;
            }
            realGl.glTexImage2D(target, level, inner, width, height, border, format, type, pixels);
        };
        gl.glTexSubImage2D = [](std::uint32_t target, std::int32_t level, std::int32_t x, std::int32_t y,
                                 std::int32_t width, std::int32_t height, std::uint32_t format,
                                 std::uint32_t type, const void* pixels) {
            if (Fails("glTexSubImage2D")) {
                glError = 0x501;
                return;
            }
            realGl.glTexSubImage2D(target, level, x, y, width, height, format, type, pixels);
        };
        gl.glDrawArrays = [](std::uint32_t mode, std::int32_t first, std::int32_t count) {
            drawn.push_back(count);
            realGl.glDrawArrays(mode, first, count);
        };
        gl.glGetError = []() -> std::uint32_t {
            const auto wanted = glError;
            glError = 0;
            const auto own = realGl.glGetError();
            return wanted != 0 ? wanted : own;
        };
        gl.glGetString = [](unsigned int name) -> const unsigned char* {
            const char* const own = name == 0x1F00 ? vendor : name == 0x1F01 ? renderer : version;
            return own != nullptr ? reinterpret_cast<const unsigned char*>(own) : realGl.glGetString(name);
        };
    }
    static inline Platform::SOpenGL realGl;
    static void Install();
#if defined(_WIN32)
    static inline Platform::SWgl real, replaced;
#else
    static inline Platform::SEgl real, replaced;
#endif
};

#if defined(_WIN32)

inline CGlFunctions::~CGlFunctions() {
    Platform::UseWgl(nullptr);
}

inline std::vector<std::string> CGlFunctions::Steps() {
    return {"GetDC", "SetPixelFormat", "wglCreateContext", "wglMakeCurrent"};
}

inline std::string CGlFunctions::MakeCurrentName() {
    return "wglMakeCurrent";
}

inline std::string CGlFunctions::SwapName() {
    return "SwapBuffers";
}

inline void CGlFunctions::Install() {
    real = replaced = *Platform::Wgl();
    ReplaceGl(replaced.gl);
    replaced.GetDC = [](HWND window) -> HDC {
        if (Fails("GetDC")) return nullptr;
        ++surfaces;
        return real.GetDC(window);
    };
    replaced.ReleaseDC = [](HWND window, HDC device) -> int {
        --surfaces;
        return real.ReleaseDC(window, device);
    };
    replaced.SetPixelFormat = [](HDC device, int format, const PIXELFORMATDESCRIPTOR* description) -> BOOL {
        return Fails("SetPixelFormat") ? FALSE : real.SetPixelFormat(device, format, description);
    };
    replaced.wglCreateContext = [](HDC device) -> HGLRC {
        if (Fails("wglCreateContext")) return nullptr;
        ++contexts;
        return real.wglCreateContext(device);
    };
    replaced.wglDeleteContext = [](HGLRC context) -> BOOL {
        --contexts;
        return real.wglDeleteContext(context);
    };
    replaced.wglMakeCurrent = [](HDC device, HGLRC context) -> BOOL {
        if (context == nullptr) return real.wglMakeCurrent(device, context);
        ++makesCurrent;
        return Fails("wglMakeCurrent") ? FALSE : real.wglMakeCurrent(device, context);
    };
    replaced.SwapBuffers = [](HDC device) -> BOOL {
        ++swaps;
        return Fails("SwapBuffers") ? FALSE : real.SwapBuffers(device);
    };
    replaced.wglGetProcAddress = [](const char* name) -> PROC {
        if (std::string(name) != "wglSwapIntervalEXT") return nullptr;
        constexpr auto set = [](int wanted) -> BOOL {
            interval = wanted;
            return TRUE;
        };
        static BOOL(WINAPI* const function)(int) = set;
        return reinterpret_cast<PROC>(reinterpret_cast<void*>(function));
    };
    replaced.GetLastError = []() -> DWORD { return failing.empty() ? real.GetLastError() : error; };
    Platform::UseWgl(&replaced);
}

#else

inline CGlFunctions::~CGlFunctions() {
    Platform::UseEglAccess(nullptr);
}

inline std::vector<std::string> CGlFunctions::Steps() {
    return {"eglGetPlatformDisplay", "eglInitialize", "eglBindAPI", "eglChooseConfig",
        "eglCreatePlatformWindowSurface", "eglCreateContext", "eglMakeCurrent"};
}

inline std::string CGlFunctions::MakeCurrentName() {
    return "eglMakeCurrent";
}

inline std::string CGlFunctions::SwapName() {
    return "eglSwapBuffers";
}

inline void CGlFunctions::Install() {
    using namespace Platform;
    const auto* const found = EglAccess().load();
    ASSERT_NE(found, nullptr) << "the packages of the group display are needed";
    real = replaced = *found;
    ReplaceGl(replaced.gl);
    replaced.eglGetPlatformDisplay = [](std::uint32_t platform, void* connection,
                                         const std::intptr_t* wanted) {
        return Fails("eglGetPlatformDisplay") ? nullptr
                                              : real.eglGetPlatformDisplay(platform, connection, wanted);
    };
    replaced.eglInitialize = [](EglDisplay display, std::int32_t* major, std::int32_t* minor) {
        if (Fails("eglInitialize")) return std::uint32_t{0};
        ++displays;
        return real.eglInitialize(display, major, minor);
    };
    replaced.eglTerminate = [](EglDisplay display) {
        --displays;
        return real.eglTerminate(display);
    };
    replaced.eglBindAPI = [](std::uint32_t api) {
        return Fails("eglBindAPI") ? std::uint32_t{0} : real.eglBindAPI(api);
    };
    replaced.eglChooseConfig = [](EglDisplay display, const std::int32_t* wanted, EglConfig* configs,
                                   std::int32_t size, std::int32_t* count) {
        return Fails("eglChooseConfig") ? std::uint32_t{0}
                                        : real.eglChooseConfig(display, wanted, configs, size, count);
    };
    replaced.eglCreatePlatformWindowSurface = [](EglDisplay display, EglConfig config, void* window,
                                                  const std::intptr_t* wanted) -> EglSurface {
        if (Fails("eglCreatePlatformWindowSurface")) return nullptr;
        ++surfaces;
        return real.eglCreatePlatformWindowSurface(display, config, window, wanted);
    };
    replaced.eglDestroySurface = [](EglDisplay display, EglSurface surface) {
        --surfaces;
        return real.eglDestroySurface(display, surface);
    };
    replaced.eglCreateContext = [](EglDisplay display, EglConfig config, EglContext shared,
                                    const std::int32_t* wanted) -> EglContext {
        if (Fails("eglCreateContext")) return nullptr;
        ++contexts;
        return real.eglCreateContext(display, config, shared, wanted);
    };
    replaced.eglDestroyContext = [](EglDisplay display, EglContext context) {
        --contexts;
        return real.eglDestroyContext(display, context);
    };
    replaced.eglMakeCurrent = [](EglDisplay display, EglSurface draw, EglSurface read, EglContext context) {
        if (context == nullptr) return real.eglMakeCurrent(display, draw, read, context);
        ++makesCurrent;
        return Fails("eglMakeCurrent") ? std::uint32_t{0} : real.eglMakeCurrent(display, draw, read, context);
    };
    replaced.eglSwapBuffers = [](EglDisplay display, EglSurface surface) {
        ++swaps;
        return Fails("eglSwapBuffers") ? std::uint32_t{0} : real.eglSwapBuffers(display, surface);
    };
    replaced.eglSwapInterval = [](EglDisplay display, std::int32_t wanted) {
        interval = wanted;
        return real.eglSwapInterval(display, wanted);
    };
    replaced.eglGetError = []() {
        return failing.empty() ? real.eglGetError() : static_cast<std::int32_t>(error);
    };
    static constexpr SEglAccess access{[]() noexcept -> bool { return hasRenderNode; },
        []() noexcept -> const SEgl* {
            ++loads;
            return isMissing ? nullptr : &replaced;
        }};
    UseEglAccess(&access);
}

#endif

} // namespace KAV::Tests
