#pragma once

#include <cstdint>
#include <ctime>
#include <string>

/// What a user's report should say about the machine. Texts are UTF-8, and empty if the system doesn't
/// provide them. Any thread.
namespace KAV::Platform {

/// Milliseconds since the system started, modulo 2^32; only differences mean something.
std::uint32_t TickMs() noexcept;

/// The current local time.
std::tm LocalTime() noexcept;

/// The system's name and version, in words.
std::string SystemName();

/// The processor's name, as its manufacturer writes it.
std::string ProcessorName();

/// The machine's name in its network.
std::string MachineName();

/// A text that is always the same for this machine (Windows) or this user on this machine (elsewhere), and
/// different on any other. Except on Windows, the machine's own identifier cannot be derived from it.
std::string MachineIdentifier();

struct SMemory {
    std::uint64_t freeBytes = 0;
    std::uint64_t totalBytes = 0;
};

/// Physical memory; zeros if the system doesn't report it.
SMemory PhysicalMemory() noexcept;

struct SDisplay {
    int monitors = 0; ///< 0: no display
    int width = 0;    ///< pixels of the first screen
    int height = 0;
    int refreshHz = 0;
    int scalePercent = 100; ///< what the user has set for text and controls
    int dotsPerInch = 96;   ///< the same, 100 percent being 96
    int primaryWidth = 0;   ///< pixels of the primary monitor; 0: not known
};

SDisplay Display();
/// The same for a host that waits: a display that takes longer than a second counts as missing.
SDisplay DisplayAtOnce();

} // namespace KAV::Platform
