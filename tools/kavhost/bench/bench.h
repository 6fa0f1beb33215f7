#pragma once

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/named_value.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/setup.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace KAV::Host {

class CEffectLibrary;

struct SBenchOptions {
    int rateHz = 48000;
    int channels = 2;
    std::int32_t blockSize = 512;
    double seconds = 10; ///< of audio per run
    double gainDb = 0;   ///< by which the sound is made louder; minus infinity is silence
    int runs = 7;
    std::filesystem::path input; ///< audio to measure with; empty: music-like sound
};

/// The sound to measure with, at a peak of about -3 dBFS unless it comes from a file.
struct SMaterial {
    int rateHz;
    CPlanarBuffer audio;
};

/// Music-like sound: notes of a few partials that begin and die away, each channel with its own phases, over
/// a noise floor with beats. The same in every run.
SMaterial MakeMaterial(const SBenchOptions& options);

/// The file's rate and channels, and up to `seconds` of it. Throws CFailure for an empty file.
SMaterial ReadMaterial(const SBenchOptions& options);

/// One effect, prepared and ready to be measured.
class CBenchSubject final {
public:
    /// Throws CFailure if the effect doesn't support the material's channels. The library and the material
    /// must outlive it.
    CBenchSubject(const CEffectLibrary& library, const CSetup& setup, const SMaterial& material,
        std::int32_t blockSize);

    /// Runs the material until the gains of a fresh effect have settled and caches are warm.
    void WarmUp();

    /// Thread-CPU nanoseconds per frame of one run of the material, which is repeated as often as the clock
    /// needs. The material is restored first, because an effect may write to its inputs.
    double Run();

    const CEffect& Effect() const noexcept { return _effect; }

private:
    double Seconds() const noexcept; ///< of audio in a run
    void Process();

    const SMaterial& _material;
    CEffect _effect;
    CPlanarBuffer _in;  // as long as the material
    CPlanarBuffer _out; // one block
};

/// Nanoseconds that one `pass` takes. It is repeated until twenty steps of the clock have gone by, so that
/// even a clock of coarse steps is right within 5 %. `nowNs` is the time, `stepNs` its step. Throws CFailure
/// if the clock stands still through `mostPasses`.
double TimeOfAPass(const std::function<void()>& pass, const std::function<std::int64_t()>& nowNs,
    std::int64_t stepNs, int mostPasses = 1'000'000);

struct SBenchResult {
    std::vector<double> first;  ///< nanoseconds per frame, run by run
    std::vector<double> second; ///< of the other effect in runs that alternate with these; may be empty
};

/// Measures one effect, or two in turns, so that anything that slows the machine for a while slows both.
/// `second` may be null.
SBenchResult Measure(CBenchSubject& first, CBenchSubject* second, int runs);

/// A result, and the conditions of its measurement.
struct SBenchReport {
    std::string first; ///< the effects, by name
    std::string second;
    int rateHz = 0;
    std::size_t channels = 0;
    std::int32_t blockSize = 0;
    double seconds = 0;                ///< of audio per run
    std::string patch;                 ///< of the first effect; empty: none
    std::vector<SNamedValue> settings; ///< of the first effect, which differ from its built-in values
    SBenchResult result;
};
void PrintBench(std::ostream& out, const SBenchReport& report);
std::string BenchAsJson(const SBenchReport& report);

/// The middle value, or the mean of the two in the middle; not of nothing.
double Median(std::vector<double> values);

/// The median of first / second, run by run.
double MedianRatio(const SBenchResult& result);

} // namespace KAV::Host
