#pragma once

#include "tools/kavhost/audio/sample_format.h"
#include "tools/kavhost/measure/delay.h"
#include "tools/kavhost/report/report.h"
#include "tools/kavhost/setup/setup.h"
#include "utils/channels.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Host {

class CEffect;
class CEffectLibrary;
class CProgressPart;

inline constexpr int MostRenderChannels = Utils::MostChannels;

struct SRenderOptions {
    std::int32_t blockSize = 512;
    bool settles = true; ///< a fresh effect fades in before the file begins
    bool aligns = true;  ///< the output lines up with the input, whatever the effect's delay
    bool dithers = true;
    std::optional<ESampleFormat> samples; ///< by default the input's, if the container supports it
    std::filesystem::path state;    ///< where to save the state that the file was rendered with; may be empty
    std::filesystem::path plot;     ///< a picture, or a folder for pictures, like the output; may be empty
    std::filesystem::path plotData; ///< the same for the numbers of the picture
    std::vector<std::string> changes; ///< settings that differ from a fresh effect's, in words
};

/// Runs files through fresh instances of an effect. The library must outlive it.
/// Threads: Render() on any number at once. Instances are created, set up, started and ended one after
/// another, as hosts do it; effects rely on that.
class CRenderer final {
public:
    CRenderer(const CEffectLibrary& library, CSetup setup, const SRenderOptions& options);

    /// The job is one of PlanJobs(). Throws CFailure or CInterruption; then none of the job's files exist.
    SRenderReport Render(const SRenderJob& job, CProgressPart& progress);

private:
    /// What is measured of the effect before a file runs through it.
    struct SEffectTraits {
        SDelay delay;
        std::vector<double> idleGainsDb; ///< of each channel
    };

    /// Destroys an instance while no other one is created, set up, started or ended.
    struct SEnd {
        std::mutex* turn;
        void operator()(CEffect* effect) const;
    };
    using EffectPtr = std::unique_ptr<CEffect, SEnd>;

    EffectPtr MakeEffect(const SAudioFormat& format, const std::string& name);
    void Start(CEffect& effect);
    SEffectTraits TraitsFor(const SAudioFormat& format, const std::string& name);

    const CEffectLibrary& _library;
    CSetup _setup;
    SRenderOptions _options;
    std::mutex _turn; ///< held while an instance is created, set up, started or ended
    std::mutex _measuring;
    std::map<std::pair<int, int>, SEffectTraits>
        _traits; ///< by rate and channels: everything else is the same for all files
};

/// One job per input. `output` is the file for a single input. It is a folder, created if missing, if its
/// name ends like a folder's, it is one, or there are several inputs. Throws CUsageError if a name selects no
/// container, or one that doesn't support the requested sample format; if two inputs would produce the same
/// file; if an output would replace an input; or if a state would be saved for more than one file, or over an
/// input or the output. The same rules apply to pictures and their data.
std::vector<SRenderJob> PlanJobs(const std::vector<std::filesystem::path>& inputs,
    const std::filesystem::path& output, const SRenderOptions& options);

} // namespace KAV::Host
