#pragma once

#include "gui/widget.h"

#include <cstdint>

namespace KAV::GUI {

/// A widget of the root's own, without a picture. It takes part in everything and does nothing of its own.
class CLight final : public CWidget {
public:
    explicit CLight(CGUI& a_piGUI);

    void OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
};

} // namespace KAV::GUI
