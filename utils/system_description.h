#pragma once

#include <string>

/// The machine in words, for the session log. Any thread but the audio thread.
namespace KAV::Utils {

/// The system's name and version.
std::u16string DescribeOS();

/// The processor's name; "Undef" when the system doesn't tell.
std::u16string DescribeCPU();

/// Free and total physical memory in whole gigabytes, like "3/15GB".
std::u16string DescribeMemory();

/// Monitors, and size, rate and scale of the first screen, like "2, 1:1920x1080@60, dpi=100%". Empty without
/// a display.
std::u16string DescribeDisplay();

/// A text for this machine that tells nothing else of it; empty when the system gives none.
std::u16string MachineId();

} // namespace KAV::Utils
