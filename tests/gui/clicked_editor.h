#pragma once

#include "gui/button.h"
#include "tests/gui/doubled_editor.h"

#include <functional>
#include <vector>

namespace KAV::Tests {

/// Keeps the buttons that were clicked, in order.
struct SClicks final : GUI::CButton::IOnClick {
    void OnClick(GUI::CButton* button) override {
        buttons.push_back(button);
        if (during) during();
    }
    std::vector<GUI::CButton*> buttons;
    std::function<void()> during;
};

class ClickedEditor : public DoubledEditor {
protected:
    SClicks clicks;

    static GUI::SWidgetInfo At(float x, std::int32_t id, float value = 0.0f, std::int32_t group = -1) {
        auto info = Info(id, value);
        info.fX = x;
        info.nRadioGroup = group;
        return info;
    }
};

} // namespace KAV::Tests
