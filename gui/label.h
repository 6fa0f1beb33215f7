#pragma once

#include "gui/widget.h"

#include <string>
#include <string_view>

namespace KAV::GUI {

/// A widget with a text. Threads: the text on any.
class CLabel : public CWidget {
public:
    CLabel(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    std::u16string Text() const; ///< a copy: another thread may load a patch meanwhile
    virtual void SetText(std::u16string_view a_sText);

private:
    std::u16string _sText; // under the root's lock
};

} // namespace KAV::GUI
