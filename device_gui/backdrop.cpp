#include "device_gui/backdrop.h"

#include "gfx/pixel_format.h"
#include "gui/gui.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace KAV {

namespace {

/// Widgets that aren't drawn while it lives, however far they have faded.
class CHidden final {
public:
    void Add(GUI::CWidget& a_piWidget) {
        _vsWere.emplace_back(&a_piWidget, a_piWidget.sVisible);
        a_piWidget.sVisible.Jump(0.0f);
    }
    CHidden() = default;
    ~CHidden() {
        for (const auto& [widget, visible] : _vsWere) widget->sVisible = visible;
    }
    CHidden(const CHidden&) = delete;
    CHidden& operator=(const CHidden&) = delete;

private:
    std::vector<std::pair<GUI::CWidget*, GUI::SAnimValue>> _vsWere;
};

} // namespace

CBackdrop::CBackdrop(GUI::CGUI& a_piGUI, const GUI::SWidgetInfo& a_sInfo) : CWidget(a_piGUI, a_sInfo) {
    Take();
    a_piGUI.Screen().TellRenewal([this] { Take(); });
}

CBackdrop::~CBackdrop() {
    auto& root = Root();
    root.Screen().TellRenewal(nullptr);
    root.Frame().Guard([&root] {
        auto& texture = root.Screen().Backdrop();
        if (texture.piGDIP != 0) root.GPU().FreeTexture(texture);
    });
}

void CBackdrop::Take() {
    auto& root = Root();
    {
        CHidden hidden;
        hidden.Add(root.Hint());
        const auto& widgets = root.AllWidgets();
        for (auto own = std::find(widgets.begin(), widgets.end(), this); own != widgets.end(); ++own)
            hidden.Add(**own);
        root.Invalidate();
        root.Frame().RenderUnseen(); // without the view, whose renderer may be a new one
    }
    root.GPU().MakeBackdrop(root.Screen().Backdrop(), root.Width(), root.Height());
    root.Invalidate();
}

void CBackdrop::DrawImage() {
    auto& texture = Root().Screen().Backdrop();
    if (texture.piGDIP == 0) MakePlain();
    if (texture.piGDIP != 0)
        DrawFrameOf(texture, 0.0f, GUI::Faded(ImageColor(), sVisible.fValue), PixelRect());
}

/// One white pixel, if there is no picture of the panel.
void CBackdrop::MakePlain() {
    auto& gpu = Root().GPU();
    GFX::STexture texture;
    const std::int32_t side = GFX::TextureSide(1, gpu.AnySizeTextures());
    gpu.CreateTextureBits(&GFX::White, sizeof(GFX::White), GFX::Argb32, texture, 1, 1, side, side);
    if (texture.piGDIP == 0) return;
    texture.nW = texture.nH = 1;
    texture.fU = texture.fV = 1.0f / static_cast<float>(side);
    Root().Screen().Backdrop() = texture;
}

} // namespace KAV
