#pragma once

#include "platform/system_info.h"
#include "platform/x11/display_thread.h"

#include <chrono>
#include <xcb/xcb.h>

namespace KAV::Platform {

/// The first screen of the X11 display, with its monitors and the scale that the desktop has set; no monitors
/// if there is no display on this machine or it doesn't answer within that time.
SDisplay ScreenOfDisplay(std::chrono::milliseconds limit = LongestDisplayWait);

/// Dots per inch as the desktop announces them in a property of the root window, which has lines
/// "name:\tvalue". 96 if there is no such line. Waits for the display without limit.
int DotsPerInch(xcb_connection_t* connection, xcb_window_t root);

} // namespace KAV::Platform
