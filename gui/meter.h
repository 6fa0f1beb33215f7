#pragma once

#include "gui/label.h"
#include "gui/value_widget.h"

#include <cstdint>

namespace KAV::GUI {

/// Shows a value by the frames of its picture.
class CMeter : public CLabel, public CValueWidget {
public:
    CMeter(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    float GetDrawValue() const override { return sValue.fValue; }
    void SetFromHost(float a_fNormal) override;
    void Tick(std::uint32_t a_nMs) override;
    void SoakTest() override;
};

} // namespace KAV::GUI
