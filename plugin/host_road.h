#pragma once

#include "state/host_queue.h"
#include "vst/audio_effect_x.h"

#include <cstdint>

namespace KAV {

/// Passes the entries of an instance's host queue to its VST 2.4 host.
class CHostRoad final : public IHostRoad {
public:
    /// `effect` is the instance that owns this object.
    explicit CHostRoad(AudioEffectX& effect) noexcept : _effect(effect) {}

    void BeginEdit(std::int32_t index) noexcept override { _effect.beginEdit(index); }
    void Value(std::int32_t index, float normal) noexcept override {
        _effect.setParameterAutomated(index, normal);
    }
    void EndEdit(std::int32_t index) noexcept override { _effect.endEdit(index); }
    /// Sets the latency in the record first, because the host reads it there.
    void Latency(std::int32_t samples) noexcept override;
    bool Size(std::int32_t width, std::int32_t height) noexcept override {
        return _effect.sizeWindow(width, height);
    }
    std::uint32_t NowMs() const noexcept override;

private:
    AudioEffectX& _effect;
};

} // namespace KAV
