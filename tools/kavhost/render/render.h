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
    bool settles = true; ///< lets a fresh effect fade in before the file begins
    bool aligns = true;  ///< the output lies under the input, whatever the effect's delay
    bool dithers = true;
    std::optional<ESampleFormat> samples; ///< else those of the input, where the output's container has them
    std::filesystem::path state;          ///< gets the state that the file was rendered with; may be empty
    std::filesystem::path plot;     ///< gets a picture, or is a folder for them, as the output; may be empty
    std::filesystem::path plotData; ///< the same for the numbers behind it
    std::vector<std::string> changes; ///< settings that differ from a fresh effect's, in words
};

/// Runs files through fresh instances of an effect. The library must outlive it.
/// Threads: Render() on any number at once. Instances are made, prepared, started and ended one after the
/// other, as hosts do it; effects rely on that.
class CRenderer final {
public:
    CRenderer(const CEffectLibrary& library, CSetup setup, const SRenderOptions& options);

    /// The job is one of PlanJobs(). Throws CFailure or CInterruption; none of the job's files is there then.
    SRenderReport Render(const SRenderJob& job, CProgressPart& progress);

private:
    /// What is known of the effect before a file runs through it.
    struct SEffectTraits {
        SDelay delay;
        std::vector<double> idleGainsDb; ///< of each channel
    };

    /// Ends an instance in its turn.
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
    std::mutex _turn; ///< held while an instance is made, prepared, started or ended
    std::mutex _measuring;
    std::map<std::pair<int, int>, SEffectTraits>
        _traits; ///< by rate and channels: all else is the same for all files
};

/// One job per input. `output` is the file for a single input; it is a folder, made when missing, when it
/// ends like one, is one, or there are more inputs. Throws CUsageError when a name does not tell a container,
/// or one that does not hold the sample format asked for, when two inputs would give the same file, or when
/// an output would replace an input; or when a state is to be saved of more than one file, or in place of an
/// input or the output. Pictures and their data go to files or folders by the same rules.
std::vector<SRenderJob> PlanJobs(const std::vector<std::filesystem::path>& inputs,
    const std::filesystem::path& output, const SRenderOptions& options);

} // namespace KAV::Host
