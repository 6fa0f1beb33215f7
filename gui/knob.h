#pragma once

#include "gui/meter.h"
#include "gui/pointer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KAV::GUI {

/// A value that the user drags up and down, turns with the wheel or types. While it is dragged it is in the
/// user's hand: the device's values don't reach it, and the whole drag is one edit and one step of history.
class CKnob : public CMeter, public ICaptured {
public:
    CKnob(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);
    ~CKnob() override;

    // Operations of its own; their order is fixed
    /// The value that the pointer asks for, by its way since the last move. It may lie outside 0..1.
    virtual float ValueFromPointer(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) const;
    virtual void SetDefault(float a_fNormal);

    // CWidget
    const std::u16string& GetText(bool a_bValueOnly) override;
    void SetFromHost(float a_fNormal) override;
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) override;
    void SoakTest() override;
    // CValueWidget
    void SetPlain(float a_fPlain, bool a_bHistory) override; ///< an edit
    bool HasHistory() const noexcept override { return nId >= 0; }
    // ICaptured
    void OnCaptureLost() override;

    bool bPointerHidden = false;         ///< the pointer always stays where it is, so nothing sets this
    std::int32_t nDragX = 0, nDragY = 0; ///< the pointer at the last move of a drag
    std::int32_t nGrabX = 0, nGrabY = 0; ///< the press, from the widget's corner
    std::uint32_t nDragPx;               ///< pixels for the whole way
    std::uint32_t nWheelPx;              ///< ten of these pixels are a notch
    float fTextFor;                      ///< the value that the text was made for
    float fDefault;                      ///< 0..1
    float fTravelFrom, fTravelTo;        ///< where a hidden pointer would come back
    bool bDragging = false, bDragged = false;
    bool bHorizontal = false; ///< dragged sideways; no knob is

private:
    std::u16string PlainText() const;
    void EndDrag();
};

} // namespace KAV::GUI
