#pragma once

#include "gfx/gpu.h"
#include "gfx/renderers.h"
#include "gfx/texture.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace KAV::GUI {

class CGUI;

/// The renderer of an editor: which one, its beginning and its end. Threads: the window's.
class CScreen final {
public:
    /// Takes the user's renderer, if a sane one is stored.
    explicit CScreen(CGUI& a_piGUI);
    CScreen(const CScreen&) = delete;
    CScreen& operator=(const CScreen&) = delete;
    ~CScreen() = default;

    /// Makes the renderer for the present window, or one that it falls back to, which the settings then keep.
    /// False if none works; then nothing is drawn.
    bool Create() { return Create(true); }
    /// Ends it. All textures are given back first, and fetched again by the next draws.
    void Release();
    /// Changes to another one; keeps the choice for all editors of the user once it works.
    bool SetRenderer(std::uint32_t a_nRenderer);
    /// Makes the renderer and all textures anew if it says that this is due, at most once a second. The
    /// settings keep what they have.
    void RenewIfDue(std::uint32_t a_nTimeMs);
    /// Calls this each time that has been done, before anything is drawn; one at a time; null: no call.
    void TellRenewal(std::function<void()> a_piRenewed) { _piRenewed = std::move(a_piRenewed); }

    GFX::GPU& GPU() const noexcept { return _sCreated.Get(); }
    std::uint32_t Renderer() const noexcept { return _nRenderer; } ///< 0..3
    /// What lies under an open view; freed while there is none.
    GFX::STexture& Backdrop() noexcept { return _sBackdrop; }

private:
    bool Create(bool a_bStores);

    CGUI& _piGUI;
    std::uint32_t _nRenderer = GFX::DefaultRenderer;
    GFX::SCreatedRenderer _sCreated; // ready, or none
    GFX::STexture _sBackdrop;
    std::optional<std::uint32_t> _nRenewedMs; // the last time
    std::function<void()> _piRenewed;
};

} // namespace KAV::GUI
