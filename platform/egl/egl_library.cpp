#include "platform/egl/egl_library.h"

#include "platform/dl/symbol.h"

#include <atomic>
#include <dirent.h>
#include <dlfcn.h>
#include <memory>
#include <optional>
#include <string_view>

namespace KAV::Platform {

namespace {

bool FindAll(void* library, SEgl& egl) noexcept {
    return FindSymbol(library, "eglBindAPI", egl.eglBindAPI) &&
           FindSymbol(library, "eglChooseConfig", egl.eglChooseConfig) &&
           FindSymbol(library, "eglCreateContext", egl.eglCreateContext) &&
           FindSymbol(library, "eglCreatePlatformWindowSurface", egl.eglCreatePlatformWindowSurface) &&
           FindSymbol(library, "eglDestroyContext", egl.eglDestroyContext) &&
           FindSymbol(library, "eglDestroySurface", egl.eglDestroySurface) &&
           FindSymbol(library, "eglGetConfigAttrib", egl.eglGetConfigAttrib) &&
           FindSymbol(library, "eglGetCurrentContext", egl.eglGetCurrentContext) &&
           FindSymbol(library, "eglGetError", egl.eglGetError) &&
           FindSymbol(library, "eglGetPlatformDisplay", egl.eglGetPlatformDisplay) &&
           FindSymbol(library, "eglInitialize", egl.eglInitialize) &&
           FindSymbol(library, "eglMakeCurrent", egl.eglMakeCurrent) &&
           FindSymbol(library, "eglReleaseThread", egl.eglReleaseThread) &&
           FindSymbol(library, "eglSwapBuffers", egl.eglSwapBuffers) &&
           FindSymbol(library, "eglSwapInterval", egl.eglSwapInterval) &&
           FindSymbol(library, "eglTerminate", egl.eglTerminate);
}

/// That with OpenGL alone, or the older one, which brings Xlib and GLX too.
void* OpenGLLibrary() noexcept {
    void* const library = dlopen("libOpenGL.so.0", RTLD_NOW | RTLD_LOCAL);
    return library != nullptr ? library : dlopen("libGL.so.1", RTLD_NOW | RTLD_LOCAL);
}

std::optional<SEgl> Load() noexcept {
    SEgl egl{};
    void* const library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr || !FindAll(library, egl)) return std::nullopt;
    void* const gl = OpenGLLibrary();
    const auto find = [gl](const char* name, auto& function) noexcept {
        return FindSymbol(gl, name, function);
    };
    if (gl == nullptr || !FindOpenGL(egl.gl, find)) return std::nullopt;
    return egl;
}

const SEgl* LoadOnce() noexcept {
    static const std::optional<SEgl> egl = Load();
    return egl ? &*egl : nullptr;
}

bool HasRenderNode() noexcept {
    struct SClose {
        void operator()(DIR* folder) const noexcept { closedir(folder); }
    };
    const std::unique_ptr<DIR, SClose> folder(opendir("/dev/dri"));
    if (folder == nullptr) return false;
    while (const dirent* const entry = readdir(folder.get())) {
        if (std::string_view(entry->d_name).starts_with("renderD")) return true;
    }
    return false;
}

constexpr SEglAccess SystemAccess{&HasRenderNode, &LoadOnce};
std::atomic<const SEglAccess*> replacement{nullptr};

} // namespace

const SEglAccess& EglAccess() noexcept {
    const auto* const other = replacement.load(std::memory_order_acquire);
    return other != nullptr ? *other : SystemAccess;
}

void UseEglAccess(const SEglAccess* access) noexcept {
    replacement.store(access, std::memory_order_release);
}

} // namespace KAV::Platform
