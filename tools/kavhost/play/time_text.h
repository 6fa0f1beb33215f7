#pragma once

#include <string>

namespace KAV::Host {

/// A time as people read it: "0:12", "3:45", "1:02:03". Whole seconds, cut.
std::string TimeText(double seconds);

} // namespace KAV::Host
