#include "gfx/ogl/context.h"

#include "platform/egl/egl_library.h"
#include "platform/picture_target.h"
#include "platform/x11/xcb_library.h"
#include "utils/exceptions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <poll.h>
#include <vector>

namespace KAV::GFX::OGL {

namespace {

using Platform::EglConfig;
using Platform::SEgl;
using Platform::Xcb;

constexpr std::uint32_t OpenGLApi = 0x30A2;
constexpr std::uint32_t PlatformXcb = 0x31DC;
constexpr std::intptr_t PlatformXcbScreen = 0x31DE;
constexpr std::int32_t NativeVisual = 0x302E;
constexpr std::int32_t AlphaSize = 0x3021;
constexpr std::int32_t BadNativeWindow = 0x300B;
constexpr std::int32_t ContextLost = 0x300E;
constexpr std::array<std::int32_t, 11> Wanted{0x3033, 0x4, // a window
    0x3040, 0x8,                                           // OpenGL
    0x3024, 8, 0x3023, 8, 0x3022, 8,                       // bits of red, green and blue
    0x3038};

/// A visual of the screen, if it has that number.
struct SVisual {
    xcb_visualid_t number = 0;
    std::uint8_t depth = 0;
};
std::optional<SVisual> VisualOf(const xcb_screen_t& a_sScreen, std::int32_t a_nNumber) noexcept {
    for (auto depths = Xcb()->screen_allowed_depths_iterator(&a_sScreen); depths.rem > 0;
         Xcb()->depth_next(&depths)) {
        for (auto visuals = Xcb()->depth_visuals_iterator(depths.data); visuals.rem > 0;
             Xcb()->visualtype_next(&visuals)) {
            if (visuals.data->visual_id == static_cast<xcb_visualid_t>(a_nNumber))
                return SVisual{visuals.data->visual_id, depths.data->depth};
        }
    }
    return std::nullopt;
}

const xcb_screen_t* ScreenOf(const Platform::SSystemWindow& a_sWindow) noexcept {
    auto* const connection = static_cast<xcb_connection_t*>(a_sWindow.connection);
    auto screens = Xcb()->setup_roots_iterator(Xcb()->get_setup(connection));
    for (std::int32_t n = 0; n < a_sWindow.screen && screens.rem > 1; ++n) Xcb()->screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

struct CContext::SParts {
    SParts(const SEgl& a_sEgl, Platform::IPictureTarget& a_piTarget, const Platform::SSystemWindow& a_sWindow)
        : egl(a_sEgl), target(a_piTarget), window(a_sWindow), drawn(a_sWindow.window) {}
    ~SParts();
    SParts(const SParts&) = delete;
    SParts& operator=(const SParts&) = delete;

    [[noreturn]] void Fail(std::u16string_view a_sFunction) const {
        throw Exceptions::OGL(a_sFunction, static_cast<std::uint32_t>(egl.eglGetError()), egl.gl.glGetString);
    }
    xcb_connection_t* Connection() const noexcept {
        return static_cast<xcb_connection_t*>(window.connection);
    }
    /// On a connection that is dead the software driver would try for a minute.
    bool HasDisplay() const noexcept {
        pollfd state{Xcb()->get_file_descriptor(Connection()), 0, 0};
        return Xcb()->connection_has_error(Connection()) == 0 &&
               !(poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0);
    }
    void Begin(const SRendererTarget& a_sTarget);
    EglConfig ChooseConfig(const SRendererTarget& a_sTarget);
    void MakeChild(const xcb_screen_t& a_sScreen, const SVisual& a_sVisual, const SRendererTarget& a_sTarget);
    void NoteError() noexcept {
        error = egl.eglGetError();
        lost = lost || error == ContextLost;
    }

    const SEgl& egl;
    Platform::IPictureTarget& target;
    Platform::SSystemWindow window;
    xcb_window_t drawn; // the window, or a child of it
    xcb_colormap_t colormap = 0;
    Platform::EglDisplay display = nullptr;
    Platform::EglSurface surface = nullptr;
    Platform::EglContext context = nullptr;
    bool isInitialized = false;
    bool lost = false;
    std::int32_t error = 0;
};

CContext::SParts::~SParts() {
    if (context != nullptr && egl.eglGetCurrentContext() == context)
        egl.eglMakeCurrent(display, nullptr, nullptr, nullptr);
    if (surface != nullptr) egl.eglDestroySurface(display, surface);
    if (context != nullptr) egl.eglDestroyContext(display, context);
    if (isInitialized) egl.eglTerminate(display);
    if (display != nullptr) egl.eglReleaseThread();
    target.SetDrawnWindow(0);
    if (drawn == window.window) return;
    Xcb()->destroy_window(Connection(), drawn);
    Xcb()->free_colormap(Connection(), colormap);
    Xcb()->flush(Connection());
}

/// The window keeps its events: the child asks for none but those that say it has to be drawn again.
void CContext::SParts::MakeChild(
    const xcb_screen_t& a_sScreen, const SVisual& a_sVisual, const SRendererTarget& a_sTarget) {
    const auto side = [](std::int32_t a_nSide) {
        return static_cast<std::uint16_t>(std::clamp(a_nSide, 1, 0x7FFF));
    };
    colormap = Xcb()->generate_id(Connection());
    Xcb()->create_colormap(Connection(), XCB_COLORMAP_ALLOC_NONE, colormap, a_sScreen.root, a_sVisual.number);
    drawn = Xcb()->generate_id(Connection());
    // In the order of the bits.
    const std::array<std::uint32_t, 4> values{0, XCB_GRAVITY_NORTH_WEST, XCB_EVENT_MASK_EXPOSURE, colormap};
    Xcb()->create_window(Connection(), a_sVisual.depth, drawn, window.window, 0, 0, side(a_sTarget.nW),
        side(a_sTarget.nH), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, a_sVisual.number,
        XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values.data());
    const std::uint32_t below = XCB_STACK_MODE_BELOW; // a text box may be open
    Xcb()->configure_window(Connection(), drawn, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    Xcb()->map_window(Connection(), drawn);
    Xcb()->flush(Connection());
}

/// One for the window's visual; else one of any, and a child with that visual. Where the display takes pixels
/// with alpha, the configuration has to have it, too: the frame would be transparent in places otherwise.
EglConfig CContext::SParts::ChooseConfig(const SRendererTarget& a_sTarget) {
    constexpr std::size_t most = 1024;
    std::vector<EglConfig> configs(most);
    std::int32_t count = 0;
    if (egl.eglChooseConfig(display, Wanted.data(), configs.data(), most, &count) == 0 || count <= 0)
        Fail(u"eglChooseConfig");
    configs.resize(std::min(static_cast<std::size_t>(count), most));
    const auto attribute = [this](EglConfig a_pConfig, std::int32_t a_nName) {
        std::int32_t value = 0;
        return egl.eglGetConfigAttrib(display, a_pConfig, a_nName, &value) != 0 ? value : 0;
    };
    const auto* const screen = ScreenOf(window);
    const auto visualOf = [&](EglConfig a_pConfig) -> std::optional<SVisual> {
        constexpr std::uint8_t withAlpha = 32;
        if (screen == nullptr) return std::nullopt;
        const auto visual = VisualOf(*screen, attribute(a_pConfig, NativeVisual));
        if (visual && visual->depth == withAlpha && attribute(a_pConfig, AlphaSize) == 0) return std::nullopt;
        return visual;
    };
    for (auto* const config : configs) {
        const auto visual = visualOf(config);
        if (visual && visual->number == window.visual) return config;
    }
    for (auto* const config : configs) {
        const auto visual = visualOf(config);
        if (!visual) continue;
        MakeChild(*screen, *visual, a_sTarget);
        return config;
    }
    Fail(u"eglChooseConfig");
}

void CContext::SParts::Begin(const SRendererTarget& a_sTarget) {
    const std::array<std::intptr_t, 3> screen{PlatformXcbScreen, window.screen, 0x3038};
    display = egl.eglGetPlatformDisplay(PlatformXcb, window.connection, screen.data());
    if (display == nullptr) Fail(u"eglGetPlatformDisplay");
    isInitialized = egl.eglInitialize(display, nullptr, nullptr) != 0;
    if (!isInitialized) Fail(u"eglInitialize");
    if (egl.eglBindAPI(OpenGLApi) == 0) Fail(u"eglBindAPI");
    auto* const config = ChooseConfig(a_sTarget);
    surface = egl.eglCreatePlatformWindowSurface(display, config, &drawn, nullptr);
    if (surface == nullptr) Fail(u"eglCreatePlatformWindowSurface");
    context = egl.eglCreateContext(display, config, nullptr, nullptr);
    if (context == nullptr) Fail(u"eglCreateContext");
    if (egl.eglMakeCurrent(display, surface, surface, context) == 0) Fail(u"eglMakeCurrent");
    egl.eglSwapInterval(display, 0); // the editor's own clock says when a frame is due
    target.SetDrawnWindow(drawn);
}

CContext::CContext(const SRendererTarget& a_sTarget, EReason a_nReason) {
    const auto& access = Platform::EglAccess();
    if (AsksForHardware(a_nReason) && !access.hasRenderNode()) throw SPassedOver();
    auto* const target = static_cast<Platform::IPictureTarget*>(a_sTarget.pWindow);
    const auto window = target != nullptr ? target->System() : Platform::SSystemWindow{};
    if (window.connection == nullptr || Xcb() == nullptr)
        throw Exceptions::OGL(u"eglGetPlatformDisplay", 0, nullptr);
    const auto* const egl = access.load();
    if (egl == nullptr) throw Exceptions::OGL(u"dlopen", 0, nullptr);
    _piParts = std::make_unique<SParts>(*egl, *target, window);
    _piParts->Begin(a_sTarget);
}

CContext::~CContext() = default;

bool CContext::AsksForHardware(EReason a_nReason) noexcept {
    return a_nReason == EReason::FallBack;
}

std::u16string_view CContext::RedrawCall() noexcept {
    return u"ReDraw::eglMakeCurrent";
}

std::u16string_view CContext::SwapCall() noexcept {
    return u"eglSwapBuffers(_hDC)";
}

const Platform::SOpenGL& CContext::Functions() const noexcept {
    return _piParts->egl.gl;
}

bool CContext::IsCurrent() const noexcept {
    return _piParts->egl.eglGetCurrentContext() == _piParts->context;
}

bool CContext::MakeCurrent() noexcept {
    auto& parts = *_piParts;
    // Which of its interfaces a thread uses is its own affair.
    if (parts.egl.eglBindAPI(OpenGLApi) != 0 &&
        parts.egl.eglMakeCurrent(parts.display, parts.surface, parts.surface, parts.context) != 0)
        return true;
    parts.NoteError();
    return false;
}

bool CContext::Swap() noexcept {
    auto& parts = *_piParts;
    if (!parts.HasDisplay()) {
        parts.error = BadNativeWindow;
        return false;
    }
    if (parts.egl.eglSwapBuffers(parts.display, parts.surface) != 0) return true;
    parts.NoteError();
    return false;
}

void CContext::Resize(std::int32_t a_nW, std::int32_t a_nH) noexcept {
    auto& parts = *_piParts;
    if (parts.drawn == parts.window.window) return; // it has that size already
    const auto side = [](std::int32_t a_nSide) {
        return static_cast<std::uint32_t>(std::clamp(a_nSide, 1, 0x7FFF));
    };
    const std::array<std::uint32_t, 2> size{side(a_nW), side(a_nH)};
    Xcb()->configure_window(
        parts.Connection(), parts.drawn, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
    Xcb()->flush(parts.Connection());
}

std::uint32_t CContext::Error() const noexcept {
    return static_cast<std::uint32_t>(_piParts->error);
}

bool CContext::IsLost() const noexcept {
    return _piParts->lost;
}

} // namespace KAV::GFX::OGL
