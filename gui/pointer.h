#pragma once

#include "gui/window.h"

#include <cstdint>

namespace KAV::GUI {

class CGUI;
class CWidget;

/// A widget that begins something with a press and has to end it when the release goes elsewhere.
class ICaptured {
public:
    /// Another press or release, the window's end, or the system has taken the drag away. May come when there
    /// is nothing to end.
    virtual void OnCaptureLost() = 0;

protected:
    ICaptured() = default;
    ~ICaptured() = default;
};

/// Which widget the pointer's events go to: the one under it, the one that was pressed or wheeled last, and
/// the one that has the drag. Threads: as its root.
class CPointer final {
public:
    explicit CPointer(CGUI& a_piGUI) noexcept : _piGUI(a_piGUI) {}
    CPointer(const CPointer&) = delete;
    CPointer& operator=(const CPointer&) = delete;

    // Positions are pixels of the root, flags as MouseFlag.
    void Press(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    void Release(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    void Move(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    void Leave();
    void Wheel(float a_fNotches, std::uint32_t a_nFlags);

    /// The time of the events to come, in milliseconds.
    void SetTime(std::uint32_t a_nTimeMs) noexcept { _nTimeMs = a_nTimeMs; }
    /// Whether a press at that time would be the second of a double click.
    bool IsDoubleClick(std::int32_t x, std::int32_t y, std::uint32_t a_nTimeMs) const;
    /// The widget that has the drag ends what it began. It has the drag until the release.
    void CancelDrag();
    /// The drag is over without a release.
    void LoseCapture();
    /// The widget goes.
    void Forget(const CWidget& a_piWidget) noexcept;

    CWidget* Hover() const noexcept { return _piHover; }
    CWidget* Focus() const noexcept { return _piFocus; }
    CWidget* Capture() const noexcept { return _piCapture; }
    std::int32_t X() const noexcept { return _nMouseX; } ///< of the last move
    std::int32_t Y() const noexcept { return _nMouseY; }
    /// The bits of the buttons that are held.
    std::uint32_t Held() const noexcept;

private:
    CWidget* HitAt(std::int32_t x, std::int32_t y, bool a_bBelowHint) const;
    void HoverOver(CWidget* a_piWidget);

    CGUI& _piGUI;
    CWidget* _piHover = nullptr;
    CWidget* _piFocus = nullptr;
    CWidget* _piCapture = nullptr;
    std::int32_t _nMouseX = 0, _nMouseY = 0;
    std::int32_t _nPressX = 0, _nPressY = 0;
    std::uint32_t _nTimeMs = 0;
    std::uint32_t _nLastPress = 0; // of the left button, when; 0 after a double click
    bool _bLeftDown = false, _bRightDown = false;
};

} // namespace KAV::GUI
