#include "gui/screen.h"

#include "gui/gui.h"
#include "gui/settings.h"

namespace KAV::GUI {

namespace {

constexpr std::u16string_view StoredRenderer = u"GFX";

} // namespace

CScreen::CScreen(CGUI& a_piGUI) : _piGUI(a_piGUI) {
    const auto stored = StoredNumber(StoredRenderer);
    if (stored && *stored < GFX::RendererCount) _nRenderer = *stored;
}

bool CScreen::Create(bool a_bStores) {
    auto& window = _piGUI.Window();
    if (!window.Exists()) return false;
    const std::uint32_t chosen = _nRenderer;
    _sCreated = GFX::CreateRenderer(window.Handle(), _piGUI.Width(), _piGUI.Height(), chosen,
        [&window](std::u16string_view a_sTitle, std::u16string_view a_sText) {
            window.ShowBox(a_sTitle, a_sText);
        });
    _nRenderer = _sCreated.nRenderer;
    if (!_sCreated.IsReady()) return false;
    GPU().SetStretching(_piGUI.IsResizing());
    if (_nRenderer != chosen && a_bStores) StoreNumber(StoredRenderer, _nRenderer);
    _piGUI.Invalidate();
    return true;
}

void CScreen::Release() {
    if (_sCreated.piGPU == nullptr) return;
    auto& frame = _piGUI.Frame();
    // Step by step: the renderer ends whatever fails on the way.
    frame.Guard([this] {
        if (_sBackdrop.piGDIP != 0) GPU().FreeTexture(_sBackdrop);
    });
    for (auto* const widget : _piGUI.AllWidgets()) frame.Guard([widget] { widget->ReleaseTextures(); });
    frame.Guard([this] { _piGUI.Textures().Clear(); });
    frame.Guard([this] { GPU().Shutdown(); });
    _sCreated = {};
}

bool CScreen::SetRenderer(std::uint32_t a_nRenderer) {
    if (a_nRenderer == _nRenderer || a_nRenderer >= GFX::RendererCount) return GPU().IsReady();
    Release();
    _nRenderer = a_nRenderer;
    if (!Create()) return false;
    StoreNumber(StoredRenderer, _nRenderer);
    return true;
}

void CScreen::RenewIfDue(std::uint32_t a_nTimeMs) {
    constexpr std::uint32_t pauseMs = 1000; // a device that is lost at once would be made at each tick
    if (!GPU().IsRenewalDue() || (_nRenewedMs && a_nTimeMs - *_nRenewedMs < pauseMs)) return;
    _nRenewedMs = a_nTimeMs;
    Release();
    if (Create(false) && _piRenewed) _piRenewed();
}

} // namespace KAV::GUI
