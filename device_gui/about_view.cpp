#include "device_gui/about_view.h"

#include "utils/product.h"

#include <array>
#include <string>
#include <string_view>

namespace KAV {

namespace {

// Points of a rectangle, as SWidgetInfo::nAnchor names them.
constexpr std::uint32_t TopLeft = 0;
constexpr std::uint32_t TopCentre = 1;
constexpr std::uint32_t TopRight = 2;
constexpr std::uint32_t BottomCentre = 7;

/// Fractions of the editor; a negative height is one of its width, so that proportions stay.
struct SPlace {
    std::uint32_t nAnchor = TopLeft;
    float fX = 0.0f, fY = 0.0f, fW = 1.0f, fH = 1.0f;
};

GUI::SWidgetInfo InfoAt(std::u16string_view a_sName, const SPlace& a_sPlace) {
    GUI::SWidgetInfo info;
    info.sName = a_sName;
    info.nAnchor = a_sPlace.nAnchor;
    info.fX = a_sPlace.fX;
    info.fY = a_sPlace.fY;
    info.fW = a_sPlace.fW;
    info.fH = a_sPlace.fH;
    return info;
}

GUI::SWidgetInfo BackgroundInfo() {
    constexpr std::uint32_t dark = 0xFF808080;
    auto info = InfoAt(u"Background", {});
    info.nColor = info.nColorHover = dark;
    info.bInteractive = true;
    info.bHint = false;
    return info;
}

GUI::SWidgetInfo TextInfo() {
    auto info = InfoAt(u"Text", {TopLeft, 0.0f, 0.223f, 1.0f, 0.55f});
    info.sText = std::u16string(Utils::ProductName) + u" VST2 v" + std::u16string(Utils::ProductVersion);
    info.fFontSize = 0.013f;
    return info;
}

/// Their texts say all that a hint could.
GUI::SWidgetInfo ButtonInfo(std::u16string_view a_sName, std::u16string_view a_sText, float a_fX) {
    auto info = InfoAt(a_sName, {BottomCentre, a_fX, 0.95f, 0.15f, -0.06f});
    info.sImage = u"DialogBtn##Sz-1x-1pxSb0.png";
    info.sText = a_sText;
    info.fFontSize = 0.08f;
    info.nColor = 0x96FFFFFF;
    info.bHint = false;
    return info;
}

GUI::SWidgetInfo LogoInfo() {
    auto info = InfoAt(u"" KAV_VENDOR " | Web Site", {TopCentre, 0.5f, 0.03f, 0.15f, -0.099f});
    info.sImage = u"Logo##Sz-1x-1pxSb0.png";
    return info;
}

GUI::SWidgetInfo RendererInfo() {
    auto info = InfoAt(u"GUI Rendering", {TopRight, 0.988f, 0.027f, 0.08f, -0.08f});
    info.sImage = u"SwitchGPU2((3x3))##Sz-1x-1pxSb0.png";
    info.sList = u"CPU||OpenGL||Direct3D9";
    return info;
}

GUI::SWidgetInfo SimdInfo() {
    auto info = InfoAt(u"SIMD (experimental)", {TopRight, 0.988f, 0.21f, 0.08f, -0.045f});
    info.sImage = u"SwitchSIMD((2x2))##Sz-1x-1pxSb0.png";
    info.sList = u"Off||On";
    return info;
}

} // namespace

CAboutView::CAboutView(CXXXGUI& a_piPlugin)
    : _piPlugin(a_piPlugin), _iBackground(a_piPlugin, BackgroundInfo()), _iText(a_piPlugin, TextInfo()),
      _iOk(a_piPlugin, ButtonInfo(u"BtnOk", u"OK", 0.586f)),
      _iHelp(a_piPlugin, ButtonInfo(u"BtnHelp", u"Help", 0.414f)), _iLogo(a_piPlugin, LogoInfo()),
      _iRenderer(a_piPlugin, RendererInfo()), _iSimd(a_piPlugin, SimdInfo()) {
    _iOk.piOnClick = this;
    _iHelp.piOnClick = this;
}

void CAboutView::OnClick(GUI::CButton* a_piButton) {
    if (a_piButton == &_iOk) Close();
    if (a_piButton == &_iHelp) _piPlugin.Maker().OpenUserManual();
}

void CAboutView::Close() {
    const std::array<GUI::CWidget*, 7> all{
        &_iBackground, &_iText, &_iOk, &_iHelp, &_iLogo, &_iRenderer, &_iSimd};
    for (auto* const widget : all) widget->SetVisible(false, 0);
    _piPlugin.OnMouseLeave(); // the pointer is over one of them
}

void CAboutView::Step() noexcept {
    _iRenderer.ShowPresent();
    _iSimd.ShowPresent();
}

} // namespace KAV
