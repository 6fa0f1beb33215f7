#pragma once

#include "gui/widget.h"

#include <string>
#include <string_view>

namespace KAV::GUI {

/// A widget with a text.
class CLabel : public CWidget {
public:
    CLabel(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    const std::u16string& Text() const noexcept { return _sText; }
    virtual void SetText(std::u16string_view a_sText);

private:
    std::u16string _sText;
};

} // namespace KAV::GUI
