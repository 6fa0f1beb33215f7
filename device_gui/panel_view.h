#pragma once

#include "state/panel_state.h"

namespace KAV {

/// A widget that shows a part of what the instance keeps besides values.
class IPanelView {
public:
    /// Takes its part over; nobody is told. Within a turn, and so without anything that may wait.
    virtual void ShowPanel(const SPanelState& a_psPanel) = 0;

protected:
    IPanelView() = default;
    ~IPanelView() = default;
};

} // namespace KAV
