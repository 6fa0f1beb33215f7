#pragma once

#include "gui/window.h"
#include "native/menu_model.h"
#include "pixels/bitmap.h"
#include "pixels/lettering.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace KAV::Native {

/// How an open menu looks. Only what is visible is drawn, so that a menu of thousands of entries opens as
/// quickly as a short one. Throws std::bad_alloc. Threads: that of the lettering.
class CMenuPainter final {
public:
    CMenuPainter(Pixels::CLettering& lettering, const SMenuMetrics& metrics) noexcept
        : _lettering(lettering), _metrics(metrics) {}

    /// The width of a window in which all of these entries' texts have room.
    std::int32_t WidthOf(const GUI::Menu& items);
    /// One window of the menu, opaque.
    Pixels::SBitmap Paint(const SMenuLevel& level);
    /// Fonts have been found: the widths of characters are no longer true.
    void Forget() noexcept { _widths.clear(); }

private:
    Pixels::STextLine LineOf(const GUI::SMenuItem& item) const;
    float AboutWidthOf(const GUI::SMenuItem& item);
    void PaintRow(Pixels::SBitmap& to, const SMenuLevel& level, std::size_t item, std::int32_t top);
    /// The check mark, and the arrow of a sub-menu.
    void PaintMarks(Pixels::SBitmap& to, const GUI::SMenuItem& item, float middle, std::uint32_t ink) const;
    void PaintArrows(Pixels::SBitmap& to, const SMenuLevel& level) const;

    Pixels::CLettering& _lettering;
    SMenuMetrics _metrics;
    std::unordered_map<std::u16string, float> _widths; // of single characters, bold ones after a mark
};

} // namespace KAV::Native
