#include "dsp/meters.h"

#include "dsp/meter_scale.h"
#include "utils/bits.h"

namespace KAV::DSP {

void CMeters::SetBlockRate(float rateHz) noexcept {
    _levelSmoother.SetRate(rateHz);
    _entrySmoother.SetRate(rateHz);
}

void CMeters::StepSources(std::uint32_t heard, const Peaks& peaks) noexcept {
    Utils::ForEachBit(heard | _source.nonZero, [&](std::size_t entry) {
        _source.Step(_levelSmoother, entry, (heard >> entry & 1) != 0 ? SevenPointScale(peaks[entry]) : 0.0f);
    });
}

void CMeters::StepEntries(std::uint32_t heard, const Peaks& inputPeaks, const Peaks& outputPeaks) noexcept {
    Utils::ForEachBit(heard | _input.nonZero | _output.nonZero, [&](std::size_t entry) {
        const bool has = (heard >> entry & 1) != 0;
        _input.Step(_entrySmoother, entry, has ? FivePointScale(inputPeaks[entry]) : 0.0f);
        _output.Step(_entrySmoother, entry, has ? FivePointScale(outputPeaks[entry]) : 0.0f);
    });
}

void CMeters::MoveGroup(std::size_t group, float peak) noexcept {
    _group.Step(_levelSmoother, group, SevenPointScale(peak));
}

} // namespace KAV::DSP
