#pragma once

#include "gui/widget.h"

#include <cstdint>

namespace KAV {

/// What lies under an open view: the panel, dark and out of focus. It catches what the pointer does, so that
/// nothing of the panel can be pressed. The view's own widgets are made after it. Threads: the window's.
class CBackdrop final : public GUI::CWidget {
public:
    CBackdrop(GUI::CGUI& a_piGUI, const GUI::SWidgetInfo& a_sInfo);
    ~CBackdrop() override;

    /// Takes the panel's picture again, without what lies above: at first, with another renderer, and when
    /// the device was lost. Draws at once.
    void Take();
    void DrawImage() override;

private:
    void MakePlain();
};

} // namespace KAV
