#pragma once

#include "state/panel_state.h"

namespace KAV {

/// A widget that shows a part of what the instance keeps besides values.
class IPanelView {
public:
    /// Copies its part without notifying anyone. Called within a turn, so it must not wait for anything.
    virtual void ShowPanel(const SPanelState& a_psPanel) = 0;

protected:
    IPanelView() = default;
    ~IPanelView() = default;
};

} // namespace KAV
