#pragma once

#include "gui/gui.h"
#include "utils/number.h"
#include "utils/text.h"

#include <cstdint>
#include <string>
#include <vector>

namespace KAV::Tests {

/// Turns that live longer than the root.
struct SOwnTurns {
    Utils::CTurns turns;
};

/// The root of an editor without a device. It keeps what its widgets report, in order: "begin 5", "5 = 0.500"
/// and "end 5" for parameter 5.
class CRecordingRoot : private SOwnTurns, public GUI::CGUI {
public:
    explicit CRecordingRoot(const GUI::SSurroundings& surroundings = {}, const GUI::SWidgetInfo& hint = {})
        : GUI::CGUI(turns, Utils::SMakerService{}, hint, surroundings) {}

    void SetParameter(std::int32_t id, float normal) override {
        told.push_back(std::to_string(id) + " = " + Utils::FormatFixed(static_cast<double>(normal), 3));
    }
    void BeginEdit(std::int32_t id) override { told.push_back("begin " + std::to_string(id)); }
    void EndEdit(std::int32_t id) override { told.push_back("end " + std::to_string(id)); }

    std::vector<std::string> told;
};

inline GUI::SWidgetInfo WidgetInfo(std::int32_t id, float value = 0.0f, int radioGroup = -1) {
    GUI::SWidgetInfo info;
    info.nId = id;
    info.fValue = value;
    info.nRadioGroup = radioGroup;
    return info;
}

} // namespace KAV::Tests
