#pragma once

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/measure/gain_meter.h"
#include "tools/kavhost/measure/level_meter.h"
#include "tools/kavhost/measure/timeline.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace KAV::Host {

class CAudioReader;
class CEffect;
struct SRenderReport;

struct SPassOptions {
    std::int64_t delay = 0;      ///< drops as many of the first frames, and feeds as much silence at the end
    bool measures = true;        ///< otherwise only samples that are not finite are counted
    std::vector<double> weights; ///< of the channels, for loudness
    std::vector<double> idleGainsDb; ///< of the channels; if empty, no gain is measured
    STimeline* timeline = nullptr;   ///< filled if there is one, and the pass measures
    CLoudness::TenthSink onTenth{};  ///< of what was stored, if the pass measures
};

/// One file on its way through a started effect. Reading, the effect, storing, and measuring before and after
/// run side by side, as a pipeline of blocks. The results do not depend on how they share the processors.
class CPass final {
public:
    /// Stores whole frames, and leaves in `interleaved` what a reader of the result will find.
    using Store = std::function<void(std::span<float> interleaved)>;

    /// The reader is at its beginning. All that it is made with must outlive it.
    CPass(CAudioReader& reader, CEffect& effect, const SPassOptions& options);

    /// Works through the whole file. `store` is called on one other thread, `onFrames` with the number of
    /// frames that were read on this one. When it returns or throws, no other thread is at work. Throws what
    /// reader and store throw, and CInterruption if the user interrupts. Call once.
    void Run(const Store& store, const std::function<void(std::uint64_t)>& onFrames);

    /// What was measured.
    void Report(SRenderReport& report) const;

    /// Of what was stored, to measure several passes as one; only if the pass measures.
    const CLoudness& StoredLoudness() const noexcept { return _after->Loudness(); }

private:
    using Samples = std::vector<float>;                   ///< interleaved
    using SharedSamples = std::shared_ptr<const Samples>; ///< read by two steps

    /// What was read, and silence that follows it.
    struct SInput {
        SharedSamples samples;
        std::size_t silence; ///< frames
    };

    void MakeMeters(const SPassOptions& options, int rateHz);
    std::size_t Silence(std::size_t room);
    void MeasureInput(std::span<const float> samples);
    Samples Process(const SInput& input);
    void MeasureOutput(std::span<const float> samples);

    CAudioReader& _reader;
    CEffect& _effect;
    std::size_t _channels;
    std::int64_t _toDrop;  ///< frames at the output's front that are the effect's delay
    std::int64_t _toFlush; ///< frames of silence that bring the last ones out
    std::uint64_t _frames = 0;
    std::uint64_t _notFiniteBefore = 0; ///< counted here if the pass does not measure
    std::uint64_t _notFiniteAfter = 0;
    CPlanarBuffer _in;
    CPlanarBuffer _out;
    STimeline* _timeline;
    std::optional<CLevelMeter> _before;
    std::optional<CLevelMeter> _after;
    std::optional<CGainMeter> _gain;
};

} // namespace KAV::Host
