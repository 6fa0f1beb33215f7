#pragma once

#include "platform/system_info.h"

#include <string>

/// The machine in words, for the session log. Any thread but the audio thread.
namespace KAV::Utils {

/// The system's name and version.
std::u16string DescribeOS();

/// The processor's name; "Undef" when the system doesn't tell.
std::u16string DescribeCPU();

/// Free and total physical memory in whole gigabytes, what is above them left out, like "3/15GB". Of this
/// machine, or as measured.
std::u16string DescribeMemory();
std::u16string DescribeMemory(const Platform::SMemory& memory);

/// Monitors, and size, rate and scale of the first screen, like "2, 1:1920x1080@60, dpi=100%". Empty without
/// a display. Of this machine, or as measured.
std::u16string DescribeDisplay();
std::u16string DescribeDisplay(const Platform::SDisplay& display);

/// A text for this machine that tells nothing else of it; empty when the system gives none.
std::u16string MachineId();

} // namespace KAV::Utils
