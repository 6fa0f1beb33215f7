#pragma once

#include "device_gui/xxx_gui.h"
#include "gfx/draw.h"
#include "gui/widget.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV {

/// The running history of the gain reduction of the group that is shown: a curve that hangs from the upper
/// edge, linear in gain, and moves one pixel to the left at each tick of the window. A change of group leaves
/// it as it is, a change of width empties it. Threads: the window's.
class CGR final : public GUI::CWidget {
public:
    explicit CGR(CXXXGUI& a_piPlugin);

    /// The step of a tick. Asks for a redraw only if the curve looks different afterwards.
    void Poll();
    void Draw(std::uint32_t a_nMs) override;

private:
    void FitToWidth();
    float ReadReduction() const;
    bool Shift() noexcept;
    void DrawCurve();
    void DrawFill(float a_fAlpha);
    void DrawLine(float a_fAlpha);

    CXXXGUI& _piPlugin;
    std::vector<float> _vfSamples; // one per pixel, the oldest first; 0: no reduction, 1: all of the height
    std::vector<GFX::SPoint> _vsPoints; // two per pixel
    bool _bActive = false;              // something is left to show at the next step
    bool _bShown = false;               // the curve is drawn
};

} // namespace KAV
