#pragma once

#include "platform/opengl_functions.h"

#include <cstdint>

/// EGL, by which OpenGL draws into windows of an X11 display over the connection that the window has. (GLX
/// would need Xlib, whose error handler ends the process when a host destroys its window first.) Loaded when
/// an editor first draws with OpenGL: the drivers that follow it take 100 MB. Only for Linux.
namespace KAV::Platform {

using EglDisplay = void*;
using EglConfig = void*;
using EglContext = void*;
using EglSurface = void*;

/// The library's functions, under their names there, and those of OpenGL.
struct SEgl {
    std::uint32_t (*eglBindAPI)(std::uint32_t api);
    std::uint32_t (*eglChooseConfig)(EglDisplay display, const std::int32_t* attributes, EglConfig* configs,
        std::int32_t size, std::int32_t* count);
    EglContext (*eglCreateContext)(
        EglDisplay display, EglConfig config, EglContext shared, const std::int32_t* attributes);
    EglSurface (*eglCreatePlatformWindowSurface)(
        EglDisplay display, EglConfig config, void* window, const std::intptr_t* attributes);
    std::uint32_t (*eglDestroyContext)(EglDisplay display, EglContext context);
    std::uint32_t (*eglDestroySurface)(EglDisplay display, EglSurface surface);
    std::uint32_t (*eglGetConfigAttrib)(
        EglDisplay display, EglConfig config, std::int32_t attribute, std::int32_t* value);
    EglContext (*eglGetCurrentContext)();
    std::int32_t (*eglGetError)();
    EglDisplay (*eglGetPlatformDisplay)(
        std::uint32_t platform, void* connection, const std::intptr_t* attributes);
    std::uint32_t (*eglInitialize)(EglDisplay display, std::int32_t* major, std::int32_t* minor);
    std::uint32_t (*eglMakeCurrent)(EglDisplay display, EglSurface draw, EglSurface read, EglContext context);
    std::uint32_t (*eglReleaseThread)();
    std::uint32_t (*eglSwapBuffers)(EglDisplay display, EglSurface surface);
    std::uint32_t (*eglSwapInterval)(EglDisplay display, std::int32_t interval);
    std::uint32_t (*eglTerminate)(EglDisplay display);
    SOpenGL gl;
};

/// How one gets at it. Any thread; nothing throws.
struct SEglAccess {
    /// Whether there is graphics hardware with a driver: a render node of the kernel's. Loads nothing.
    bool (*hasRenderNode)() noexcept;
    /// The functions, for the life of the process; null if a library is missing or incomplete.
    const SEgl* (*load)() noexcept;
};

/// That of this system, unless a test has put another in its place.
const SEglAccess& EglAccess() noexcept;
/// For tests: this one instead, from now on; null means that of the system.
void UseEglAccess(const SEglAccess* access) noexcept;

} // namespace KAV::Platform
