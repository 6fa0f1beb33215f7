#pragma once

#include "platform/system_info.h"

namespace KAV::Platform {

/// The first screen of the X11 display, with its monitors and the scale that the desktop has set; no monitors
/// if there is no display on this machine or it doesn't answer.
SDisplay ScreenOfDisplay();

} // namespace KAV::Platform
