#pragma once

#include "platform/system_info.h"

#include <string>

/// The machine in words, for the session log. Any thread but the audio thread.
namespace KAV::Utils {

/// The system's name and version.
std::u16string DescribeOS();

/// The processor's name; "Undef" if the system doesn't report it.
std::u16string DescribeCPU();

/// Free and total physical memory in whole gigabytes, rounded down, like "3/15GB". Of this machine, or of the
/// given measurement.
std::u16string DescribeMemory();
std::u16string DescribeMemory(const Platform::SMemory& memory);

/// Number of monitors, and size, rate and scale of the first screen, like "2, 1:1920x1080@60, dpi=100%".
/// Empty without a display. Of this machine, or of the given measurement.
std::u16string DescribeDisplay();
std::u16string DescribeDisplay(const Platform::SDisplay& display);

/// A text that identifies this machine and reveals nothing else about it; empty if the system provides none.
std::u16string MachineId();

} // namespace KAV::Utils
