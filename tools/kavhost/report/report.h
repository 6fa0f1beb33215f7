#pragma once

#include "tools/kavhost/audio/sample_format.h"
#include "tools/kavhost/base/named_value.h"
#include "tools/kavhost/measure/delay.h"
#include "tools/kavhost/measure/gain_meter.h"
#include "tools/kavhost/measure/level_meter.h"
#include "tools/kavhost/measure/speaker_weights.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace KAV::Host {

struct SRenderJob {
    std::filesystem::path input;      ///< "-" is standard input
    std::filesystem::path output;     ///< "-" is standard output
    std::filesystem::path plot{};     ///< may be empty
    std::filesystem::path plotData{}; ///< .csv or .json; may be empty
    std::filesystem::path state{}; ///< where to save the state that the file is rendered with; may be empty
    std::optional<EContainer> container{}; ///< of the output; by default its extension names it
    bool keepsExisting = false;            ///< none of these files may replace one
    std::filesystem::path source{}; ///< a file with the input's content, if the input is none; may be empty

    /// What to read.
    const std::filesystem::path& Source() const noexcept { return source.empty() ? input : source; }
};

/// What a user should know of a file that came out nevertheless.
struct SNote {
    std::string text;     ///< without the file's name, begins in lower case: "channels 3-6 pass unlimited"
    bool isGrave = false; ///< to a user who asks for strictness, a failure
};

/// A loudness or a true peak that was aimed at, and what came of it.
struct STargetReport {
    std::optional<double> wantedLufs;
    std::optional<double> wantedDbtp;
    std::optional<double> mostReductionDb;
    double inputGainDb = 0; ///< of the effect, as found
    double outputGainDb = 0;
    bool hasInputGain = false; ///< it was searched for
    bool hasOutputGain = false;
    std::string binds;                 ///< what kept the file from being louder, in words
    std::string inTheWay;              ///< why it is only the nearest that can be had; empty if it fits
    int renders = 0;                   ///< of each file, the stored one included
    std::size_t files = 1;             ///< that count as one programme
    std::optional<double> reachedLufs; ///< of all of them, as stored
    std::optional<double> reachedDbtp;
    bool isDualMono = false; ///< a single channel counted as two
};

struct SRenderReport {
    SRenderJob job;
    SAudioFormat format; ///< of the output
    std::uint64_t frames = 0;
    bool isAligned = false;
    SDelay delay; ///< that was removed, of aligned files
    std::int32_t reportedDelay = 0;
    SLevels before;
    SLevels after;                   ///< as stored: rounded, clipped
    bool isMeasured = true;          ///< otherwise there are no levels, gains, speakers
    SSpeakerWeights speakers;        ///< how loudness weighs the channels
    std::optional<SGainRange> gain;  ///< of aligned files
    std::vector<double> idleGainsDb; ///< of each channel, while there is nothing to limit; of aligned files
    std::optional<SReduction> reduction; ///< of aligned files
    std::uint64_t clipped = 0;           ///< samples more than a step of the output format beyond its range
    double clippedBySteps = 0;           ///< how far the farthest of them lay beyond it
    double realTimeFactor = 0;           ///< seconds of audio per second of the whole job
    std::string patch;                   ///< that the effect had; empty: none
    std::vector<SNamedValue> settings;   ///< that differ from the effect's built-in values
    std::vector<SNote> notes;
    std::optional<STargetReport> target;
};

/// The report of one file, for people.
void PrintReport(std::ostream& out, const SRenderReport& report);

/// The input's name in texts: "standard input" for "-".
std::string InputName(const SRenderJob& job);

/// How a job is named in texts: "song.wav -> limited.wav".
std::string TitleOf(const SRenderJob& job);

/// Objects for programs, in several lines or in one.
enum class EJson { Lines, OneLine };

/// The report of one file. Values that a build does not measure, and minus infinity, are null.
std::string ReportAsJson(const SRenderReport& report, EJson form);

/// A file without a report: its names, and `reason` under the key `fate`.
std::string FateAsJson(const SRenderJob& job, const char* fate, const std::string& reason, EJson form);

} // namespace KAV::Host
