#pragma once

#include "platform/opengl_functions.h"
#include "platform/winapi/windows_header.h"

/// OpenGL and its binding to windows, loaded when an editor first draws with it. Only for Windows.
namespace KAV::Platform {

/// The functions of that library, and those of the system that prepare a window for it or report how one of
/// them failed.
struct SWgl {
    decltype(&GetDC) GetDC;
    decltype(&ReleaseDC) ReleaseDC;
    decltype(&ChoosePixelFormat) ChoosePixelFormat;
    decltype(&SetPixelFormat) SetPixelFormat;
    decltype(&SwapBuffers) SwapBuffers;
    decltype(&GetLastError) GetLastError;
    decltype(&wglCreateContext) wglCreateContext;
    decltype(&wglDeleteContext) wglDeleteContext;
    decltype(&wglGetCurrentContext) wglGetCurrentContext;
    decltype(&wglGetProcAddress) wglGetProcAddress;
    decltype(&wglMakeCurrent) wglMakeCurrent;
    SOpenGL gl;
};

/// The functions, for the life of the process; null if the library is missing or incomplete. Any thread;
/// nothing throws.
const SWgl* Wgl() noexcept;

/// For tests: these functions instead, which may count or fail; null means those of the library.
void UseWgl(const SWgl* functions) noexcept;

} // namespace KAV::Platform
