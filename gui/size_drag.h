#pragma once

#include <cstdint>
#include <functional>

namespace KAV::GUI {

class CGUI;

/// The user drags the right edge of the window, or its lower right corner, to another size of the same shape.
/// Threads: the window's.
class CSizeDrag final {
public:
    using Sized = std::function<void(std::int32_t a_nWidth, std::int32_t a_nHeight)>;

    explicit CSizeDrag(CGUI& a_piGUI) noexcept : _piGUI(a_piGUI) {}
    CSizeDrag(const CSizeDrag&) = delete;
    CSizeDrag& operator=(const CSizeDrag&) = delete;

    /// From now on sizes of at least `a_nLeastWidth` pixels can be dragged. `a_fAspect`: width by height.
    void Offer(std::int32_t a_nLeastWidth, float a_fAspect, Sized a_iSized);

    // Events of the pointer, before the widgets get them; true: they are the drag's.
    bool Press(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    bool Move(std::int32_t x, std::int32_t y);
    bool Release(std::uint32_t a_nFlags);
    /// The drag is over without a release.
    void End();

private:
    bool IsAtEdge(std::int32_t x) const noexcept;

    CGUI& _piGUI;
    std::int32_t _nLeastWidth = 0; // 0: the size is fixed
    float _fAspect = 1.0f;
    Sized _iSized;
    bool _bActive = false;
    std::int32_t _nOffsetX = 0; // from the pointer to the edge
};

} // namespace KAV::GUI
