#include "device_gui/gain_reduction.h"

#include "device/value_flags.h"
#include "device_gui/row_info.h"
#include "gfx/renderers.h"

#include <algorithm>
#include <utility>

namespace KAV {

namespace {

constexpr std::int32_t LimiterTag = 34; // of the current group
constexpr std::size_t LeastColumns = 2;

constexpr float FillAlpha = 0.5f;
constexpr float FadeHeight = 0.15f; // of the height: a smaller reduction is filled more faintly
constexpr std::uint32_t FillColor = 0x00FF3968;
constexpr std::uint32_t FillColorAbove = 0x00FF3A68; // transparent; one step of green off, deliberately
constexpr float LineRed = 1.0f;
constexpr float LineGreen = 0.22352941f;
constexpr float LineBlue = 0.40784314f;
constexpr float LineShare = 0.008f; // of the width

} // namespace

CGR::CGR(CXXXGUI& a_piPlugin)
    : CWidget(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::GR))), _piPlugin(a_piPlugin) {}

// The history

void CGR::FitToWidth() {
    const auto columns = static_cast<std::size_t>(std::max(PixelRect().nW, 0));
    if (columns == _vfSamples.size()) return;
    _vfSamples.assign(columns, 0.0f);
    _vsPoints.assign(2 * columns, {});
    _bActive = _bShown = false;
}

/// A limiter that is off keeps its last gain.
float CGR::ReadReduction() const {
    auto& device = _piPlugin.Device();
    if (device.GetParam(LimiterTag, Normalized | GroupRelative) == 0.0f) return 0.0f;
    auto& controls = _piPlugin.Controls();
    const int group = device.GetCurrentGroup();
    const auto gain = static_cast<float>(controls.GetReportedGain(group));
    controls.RequestReportedGain(group);
    return std::clamp(1.0f - gain, 0.0f, 1.0f);
}

/// One pixel towards the start, which leaves the newest one in place. Whether anything looks different.
bool CGR::Shift() noexcept {
    bool differs = false;
    for (std::size_t n = 0; n + 1 < _vfSamples.size(); ++n) {
        differs = differs || _vfSamples[n] != _vfSamples[n + 1];
        _vfSamples[n] = _vfSamples[n + 1];
    }
    return differs;
}

void CGR::Poll() {
    FitToWidth();
    const float reduction = ReadReduction();
    if (_vfSamples.size() < LeastColumns) return;
    bool differs = std::exchange(_vfSamples.back(), reduction) != reduction;
    const bool appears = std::exchange(_bShown, _bActive) != _bActive; // or vanishes
    if (!_bActive) {
        _bActive = reduction != 0.0f;
        differs = false; // as nothing is drawn
    } else {
        differs = Shift() || differs;
        _bActive = std::any_of(
            _vfSamples.begin(), _vfSamples.end() - 1, [](float a_fSample) { return a_fSample != 0.0f; });
    }
    if (differs || appears) Root().Invalidate();
}

// The curve

void CGR::Draw(std::uint32_t) {
    FitToWidth();
    if (!_bShown) return;
    const auto rect = PixelRect();
    auto& gpu = Root().GPU();
    gpu.UnbindTexture();
    gpu.SetClip(static_cast<float>(rect.nL), static_cast<float>(rect.nT), static_cast<float>(rect.nW),
        static_cast<float>(rect.nH));
    const auto unclip = [&gpu] { gpu.SetClip(0.0f, 0.0f, 0.0f, 0.0f); };
    try {
        DrawCurve();
    } catch (...) {
        unclip();
        throw;
    }
    unclip();
}

void CGR::DrawCurve() {
    const float alpha = std::clamp(sVisible.fValue, 0.0f, 1.0f);
    DrawFill(alpha);
    DrawLine(alpha);
}

/// A line from each pixel of the curve up to the edge, fading out on its way. All but Direct2D draw them as
/// one strip, which goes down one and up the next.
void CGR::DrawFill(float a_fAlpha) {
    const auto rect = PixelRect();
    const auto top = static_cast<float>(rect.nT);
    const auto height = static_cast<float>(rect.nH);
    const bool isStrip = _piPlugin.Screen().Renderer() != GFX::Direct2D;
    const float fade = FadeHeight * height;
    for (std::size_t n = 0; n < _vfSamples.size(); ++n) {
        const auto x = static_cast<float>(rect.nL) + static_cast<float>(n);
        const float depth = height * _vfSamples[n];
        const float share = isStrip && depth <= fade ? depth / fade : 1.0f;
        const auto alpha = static_cast<std::uint32_t>(a_fAlpha * FillAlpha * share * 255.0f);
        const std::size_t lower = isStrip && n % 2 != 0 ? 1 : 0;
        _vsPoints[2 * n + lower] = {x, top + depth, 0.0f, alpha << 24 | FillColor};
        _vsPoints[2 * n + 1 - lower] = {x, top, 0.0f, FillColorAbove};
    }
    auto& gpu = Root().GPU();
    gpu.SetLineWidth(1.0f);
    gpu.SetLineSmooth(false);
    gpu.DrawLines(static_cast<std::int32_t>(_vsPoints.size()), _vsPoints.data(), true, isStrip);
}

void CGR::DrawLine(float a_fAlpha) {
    const auto rect = PixelRect();
    const auto width = static_cast<float>(rect.nW);
    const auto height = static_cast<float>(rect.nH);
    const std::size_t count = _vfSamples.size();
    for (std::size_t n = 0; n < count; ++n) {
        const float along = width * static_cast<float>(n) / static_cast<float>(count - 1);
        const float y = static_cast<float>(rect.nT) + height * _vfSamples[n] - 1.0f;
        _vsPoints[n] = {static_cast<float>(rect.nL) + along, y, 0.0f, GFX::White};
    }
    auto& gpu = Root().GPU();
    gpu.SetLineColor(LineRed, LineGreen, LineBlue, a_fAlpha);
    gpu.SetLineWidth(width * LineShare);
    gpu.SetLineSmooth(true);
    gpu.DrawLines(static_cast<std::int32_t>(count), _vsPoints.data(), false, true);
    gpu.SetLineSmooth(false);
}

} // namespace KAV
