#pragma once

#include "device_gui/plugin_widget.h"

namespace KAV {

/// Whether a routing entry belongs to the current group. Its text is the entry's label; an entry that the
/// routing doesn't have is hidden.
class CChannelBtn final : public CPluginButton {
public:
    /// `a_nChannel` 0..15.
    CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel);
};

} // namespace KAV
