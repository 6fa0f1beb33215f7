#pragma once

#include "state/host_queue.h"
#include "vst/audio_effect_x.h"

#include <cstdint>

namespace KAV {

/// From the host queue of an instance to its VST 2.4 host.
class CHostRoad final : public IHostRoad {
public:
    /// `effect` is the instance that owns this object.
    explicit CHostRoad(AudioEffectX& effect) noexcept : _effect(effect) {}

    void BeginEdit(std::int32_t index) noexcept override { _effect.beginEdit(index); }
    void Value(std::int32_t index, float normal) noexcept override {
        _effect.setParameterAutomated(index, normal);
    }
    void EndEdit(std::int32_t index) noexcept override { _effect.endEdit(index); }
    /// The host looks for the new latency in the record, so that is set first.
    void Latency(std::int32_t samples) noexcept override;
    void Size(std::int32_t width, std::int32_t height) noexcept override {
        _effect.sizeWindow(width, height);
    }
    std::uint32_t NowMs() const noexcept override;

private:
    AudioEffectX& _effect;
};

} // namespace KAV
