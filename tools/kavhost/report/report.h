#pragma once

#include "tools/kavhost/audio/sample_format.h"
#include "tools/kavhost/measure/delay.h"
#include "tools/kavhost/measure/gain_meter.h"
#include "tools/kavhost/measure/level_meter.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>
#include <span>
#include <string>

namespace KAV::Host {

struct SRenderJob {
    std::filesystem::path input;
    std::filesystem::path output;     ///< its extension names a container
    std::filesystem::path plot{};     ///< may be empty
    std::filesystem::path plotData{}; ///< .csv or .json; may be empty
};

struct SRenderReport {
    SRenderJob job;
    SAudioFormat format; ///< of the output
    std::uint64_t frames = 0;
    bool isAligned = false;
    SDelay delay; ///< that was removed, of aligned files
    std::int32_t reportedDelay = 0;
    SLevels before;
    SLevels after;                  ///< as stored: rounded, clipped
    std::optional<SGainRange> gain; ///< of aligned files
    std::uint64_t clipped = 0;      ///< samples beyond the output format's range
    double realTimeFactor = 0;      ///< seconds of audio per second that the effect ran
};

/// The report of one file, for people.
void PrintReport(std::ostream& out, const SRenderReport& report);

/// Reports for programs: a JSON array with one object per file. Values that a build does not measure, and
/// minus infinity, are null.
std::string ReportsAsJson(std::span<const SRenderReport> reports);

} // namespace KAV::Host
