#pragma once

#include "tools/kavhost/delay.h"
#include "tools/kavhost/gain_meter.h"
#include "tools/kavhost/level_meter.h"
#include "tools/kavhost/preparation.h"
#include "tools/kavhost/sample_format.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace KAV::Host {

class CEffectLibrary;

inline constexpr int MostRenderChannels = 16;

struct SRenderOptions {
    std::int32_t blockSize = 512;
    bool settles = true; ///< lets a fresh effect fade in before the file begins
    bool aligns = true;  ///< the output lies under the input, whatever the effect's delay
    bool dithers = true;
    std::optional<ESampleFormat> samples; ///< else those of the input, where the output's container has them
    std::filesystem::path state;          ///< gets the state that the file was rendered with; may be empty
};

struct SRenderJob {
    std::filesystem::path input;
    std::filesystem::path output; ///< its extension names a container
};

struct SRenderReport {
    SRenderJob job;
    SAudioFormat format; ///< of the output
    std::uint64_t frames = 0;
    bool isAligned = false;
    SDelay delay; ///< that was taken out, of aligned files
    std::int32_t reportedDelay = 0;
    SLevels before;
    SLevels after;                  ///< as stored: rounded, clipped
    std::optional<SGainRange> gain; ///< of aligned files
    std::uint64_t clipped = 0;      ///< samples that did not fit the output's format
    double realTimeFactor = 0;      ///< seconds of audio per second that the effect ran
};

/// Runs files through fresh instances of an effect. The library must outlive it.
class CRenderer final {
public:
    CRenderer(const CEffectLibrary& library, CPreparation preparation, const SRenderOptions& options);

    /// The job is one of PlanJobs(). Throws CFailure or CInterruption; there is no output file then.
    SRenderReport Render(const SRenderJob& job);

private:
    SDelay DelayFor(const SAudioFormat& format);

    const CEffectLibrary& _library;
    CPreparation _preparation;
    SRenderOptions _options;
    std::map<std::pair<int, int>, SDelay>
        _delays; ///< by rate and channels: all else is the same for all files
};

/// One job per input. `output` is the file for a single input; it is a folder, made when missing, when it
/// ends like one, is one, or there are more inputs. Throws CUsageError when a name does not tell a container,
/// or one that does not hold the sample format asked for, when two inputs would give the same file, or when
/// an output would replace an input; or when a state is to be saved of more than one file, or in place of an
/// input or the output.
std::vector<SRenderJob> PlanJobs(const std::vector<std::filesystem::path>& inputs,
    const std::filesystem::path& output, const SRenderOptions& options);

} // namespace KAV::Host
