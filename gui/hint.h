#pragma once

#include "gui/label.h"

#include <cstdint>
#include <string_view>

namespace KAV::GUI {

/// The text that appears over the panel when the pointer has been on a widget for a while. It is drawn last,
/// stays within the editor, and takes the size of its text. It stands at the pointer, or where the widget
/// wants it. Threads: the window's.
class CHint final : public CLabel {
public:
    static constexpr std::uint32_t DelayMs = 500;

    CHint(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    /// The pointer is on this widget now, or on none.
    void HoverChanged(CWidget* a_piWidget);
    void Reset() { HoverChanged(nullptr); }
    /// The widget is about to end.
    void Forget(const CWidget& a_piWidget);
    /// The wait goes on; the hint appears at its end.
    void Advance(std::uint32_t a_nMs);
    /// Takes the widget's text of the moment, and its place for that. Before each drawing.
    void PrepareDraw();
    /// PrepareDraw() and Draw().
    void DrawOnTop(std::uint32_t a_nMs);
    /// Takes the size of its text, which may have changed with the fonts.
    void Fit();

    void OnGuiResize(std::int32_t a_nWidth, std::int32_t a_nHeight) override;
    /// Of the root, since its own size follows the text.
    float FontBasis() const override;
    void SetText(std::u16string_view a_sText) override;

    std::uint32_t nWaitMs = 0; ///< since the pointer came; DelayMs: the hint appears at the next tick
    std::int32_t nAnchorX = 0; ///< where the pointer's picture acts
    std::int32_t nAnchorY = 0;
    CWidget* piFor = nullptr; ///< what the hint is about, not owned
    bool bPending = false;    ///< it waits
    bool bFirst = false;      ///< it hasn't been placed for this widget yet

private:
    void PlaceAtWidget();
    void StayWithinRoot();
    void Move(SAnimValue& a_rsValue, float a_fTarget);
};

} // namespace KAV::GUI
