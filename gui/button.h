#pragma once

#include "gui/label.h"
#include "gui/value_widget.h"

#include <cstdint>

namespace KAV::GUI {

/// A button that is on (1) or off (0). Of the buttons of a radio group one is on.
class CButton : public CLabel, public CValueWidget {
public:
    CButton(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    bool SetValue(float a_fNormal, bool a_bHistory) override;
    void SetFromHost(float a_fNormal) override;
    CValueWidget& HistoryTarget() override;
    bool HasHistory() const noexcept override { return Id() >= 0; }

private:
    std::int32_t _nRadioGroup;
    bool _bFromHost = false; // the value being set comes from the device
};

} // namespace KAV::GUI
