#pragma once

#include "gui/widget.h"
#include "panel/layout.h"

namespace KAV {

/// What a widget of the toolkit is made from, as a row of the panel has it.
GUI::SWidgetInfo InfoOf(const Panel::SPanelRow& a_sRow);

} // namespace KAV
