#pragma once

#include "tools/kavhost/audio/sample_format.h"
#include "tools/kavhost/measure/delay.h"
#include "tools/kavhost/measure/loudness.h"
#include "tools/kavhost/render/speakers.h"
#include "tools/kavhost/report/report.h"
#include "tools/kavhost/setup/reference.h"
#include "tools/kavhost/setup/setup.h"
#include "utils/channels.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Host {

class CAudioReader;
class CEffect;
class CEffectLibrary;
class CProgressPart;
class CStateFile;

inline constexpr int MostRenderChannels = Utils::MostChannels;

struct SRenderOptions {
    std::int32_t blockSize = 512;
    bool settles = true; ///< a fresh effect fades in before the file begins
    bool aligns = true;  ///< the output lines up with the input, whatever the effect's delay
    bool dithers = true;
    bool measures =
        true; ///< levels, gains and loudness, of which a picture is made; otherwise only the delay
    bool isDualMono = false;              ///< loudness counts a single channel as two
    bool isAlbum = false;                 ///< the files are one programme, and share a state
    bool isStrict = false;                ///< a grave note is a failure, and leaves no file
    bool keepsExisting = false;           ///< no file is replaced; a job that would replace one is skipped
    std::optional<ESampleFormat> samples; ///< by default the input's, if the container supports it
    std::string extension; ///< of outputs in a folder, or the container of standard output; may be empty
    std::optional<SLayoutChoice> layout; ///< by default the input's speakers
    std::filesystem::path state;    ///< where to save the state that the file was rendered with; may be empty
    std::filesystem::path plot;     ///< a picture, or a folder for pictures, like the output; may be empty
    std::filesystem::path plotData; ///< the same for the numbers of the picture
    std::shared_ptr<const CReference> reference; ///< what the report compares settings with; may be null
};

/// A change to the setup of an effect, for one file.
struct SGainChange {
    std::vector<SSetting> settings;
    bool isSearched = false; ///< a saved state is to bring the very same samples
    double louderDb = 0;     ///< by how much that raises the effect's gain while there is nothing to limit
};

/// A file that is complete, with all that belongs to it. It appears with Commit(), and never without that.
class CRendering final {
public:
    CRendering();
    CRendering(CRendering&&) noexcept;
    CRendering& operator=(CRendering&&) noexcept;
    ~CRendering();

    SRenderReport& Report() noexcept { return _report; }
    const std::filesystem::path& PendingAudio() const; ///< the name that the audio has until then
    void Commit();

private:
    friend class CRenderer;
    struct SFiles;

    SRenderReport _report;
    std::unique_ptr<SFiles> _files;
};

/// Runs files through fresh instances of an effect. The library must outlive it.
/// Threads: Render() on any number at once. Instances are created, set up, started and ended one after
/// another, as hosts do it; effects rely on that.
class CRenderer final {
public:
    CRenderer(const CEffectLibrary& library, CSetup setup, const SRenderOptions& options);

    /// The job is one of PlanJobs(). Throws CFailure or CInterruption; then none of the job's files exist.
    SRenderReport Render(const SRenderJob& job, CProgressPart& progress);

    /// The same in two steps, with a change. A job whose files never appear has been done for nothing.
    CRendering Prepare(const SRenderJob& job, const SGainChange& change, CProgressPart& progress);

    /// Renders without storing anything: the report is that of the sound as the effect gives it. `onTenth`
    /// gets its loudness tenth by tenth.
    SRenderReport Try(const SRenderJob& job, const SGainChange& change, const CLoudness::TenthSink& onTenth,
        CProgressPart& progress);

    /// What is measured of the effect before a file runs through it.
    struct SEffectTraits {
        SDelay delay;
        std::vector<double> idleGainsDb; ///< of each channel
        std::optional<double> onsetDb;   ///< as MeasureOnset() has it, if it was asked for
    };
    SEffectTraits TraitsFor(const SAudioFormat& format, const std::string& name, bool withOnset = false);

    /// Rate, channels and speakers that the job's file counts as. Throws CFailure.
    SAudioFormat FormatOf(const SRenderJob& job) const;

    /// How loudness weighs the channels of a file.
    SSpeakerWeights WeightsOf(const SAudioFormat& format) const;

private:
    /// Destroys an instance while no other one is created, set up, started or ended.
    struct SEnd {
        std::mutex* turn;
        void operator()(CEffect* effect) const;
    };
    using EffectPtr = std::unique_ptr<CEffect, SEnd>;

    SAudioFormat FormatOf(const CAudioReader& reader, const SRenderJob& job) const;
    EffectPtr MakeEffect(
        const SAudioFormat& format, const std::string& name, std::span<const SSetting> settings = {});
    /// What the report says about the settings of a stopped effect.
    void Describe(const CEffect& effect, SRenderReport& report);
    void SaveState(CEffect& effect, const std::filesystem::path& file, const SGainChange& change,
        std::optional<CStateFile>& state);
    void Start(CEffect& effect);
    EffectPtr MakeStarted(const SAudioFormat& format, const SRenderJob& job, const SGainChange& change,
        SRenderReport& report, std::optional<CStateFile>* state);

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
