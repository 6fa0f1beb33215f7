#pragma once

#include <cstdint>

namespace KAV {

/// What the host hears of an instance's values. Never called within a turn. Threads: any but the audio
/// thread.
class IHostVoice {
public:
    /// The parameter `tag` has the value 0..1. Nothing is thrown.
    virtual void Changed(std::int32_t tag, float normal) noexcept = 0;

protected:
    IHostVoice() = default;
    ~IHostVoice() = default;
};

} // namespace KAV
