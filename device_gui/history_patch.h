#pragma once

#include "gui/history.h"

#include <string>

namespace KAV {

class CDeviceState;

/// All parameters and macros as they were before a patch was loaded. Routing, names and settings stay as they
/// are.
class CHistoryPatch final : public GUI::IHistory {
public:
    /// Takes the present state.
    explicit CHistoryPatch(CDeviceState& a_piState);

    void Redo() override { Swap(); }
    void Undo() override { Swap(); }
    bool Differs(const IHistory& a_piOther) const override;

private:
    void Swap();

    CDeviceState& _piState;
    std::string _sText;
};

} // namespace KAV
