#include "tests/dsp/engine_subject.h"

#include "tests/support/system_call_counter.h"

namespace KAV::Tests {

void CEngineSubject::Apply(const Reference::SSettings& settings) {
    auto& values = _engine.parameters;
    for (std::size_t g = 0; g < 4; ++g) {
        for (std::size_t entry = 0; entry < 16; ++entry) {
            values.channelInGroup[entry][g] = settings.channelInGroup[entry][g];
            const auto& pair = settings.map[g][entry];
            _engine.routing[g].SetPair(static_cast<int>(entry), pair[0], pair[1]);
        }
        _engine.routing[g].type = static_cast<ERoutingType>(settings.type[g]);
        values.solo[g] = settings.solo[g];
        values.mute[g] = settings.mute[g];
        values.inputGain[g].SetBase(settings.inputGain[g]);
        values.threshold[g].SetBase(settings.threshold[g]);
        values.release[g].SetBase(settings.release[g]);
        values.ceiling[g].SetBase(settings.ceiling[g]);
        values.autoRelease[g] = settings.autoRelease[g];
        values.limiter[g] = settings.limiter[g];
    }
    values.oversampling = settings.oversampling;
    values.highQuality = settings.highQuality;
    values.mainInputGain.SetBase(settings.mainInput);
    values.mainOutputGain.SetBase(settings.mainOutput);
    _engine.hostBypass = settings.hostBypass;
    _engine.groupsParallel = settings.groupsParallel;
    _engine.simd = settings.simd;
    _engine.currentGroup = static_cast<std::uint32_t>(settings.editedGroup);
}

void CEngineSubject::Process(float* const* channels, int channelCount, int frames) {
    const CSystemCallCounter counter;
    _engine.Process(
        const_cast<float**>(channels), nullptr, channelCount, frames); // the pointers stay as they are
    _systemCalls += counter.Allocations() + counter.Locks();
}

float CEngineSubject::Meter(int tag) {
    const auto& meters = _engine.Meters();
    const auto place = [tag](int first) { return static_cast<std::size_t>(first - tag); };
    return tag > -20   ? meters.Source(place(-4))
           : tag > -24 ? meters.Group(place(-20))
           : tag > -40 ? meters.Input(place(-24))
                       : meters.Output(place(-40));
}

} // namespace KAV::Tests
