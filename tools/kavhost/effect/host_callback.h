#pragma once

#include "vst/vst2.h"

namespace KAV::Host {

/// What an effect may ask about the audio that it gets.
struct SStream {
    double rateHz;
    std::int32_t blockSize; ///< most frames of one call
};

/// The host's half of the interface. It never looks into the record that an effect passes: an effect may call
/// from inside its own entry, with a record that the host has not seen and that need not be complete. Any
/// thread.
std::intptr_t HostCallback(VST::AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value,
    void* pointer, float option);

/// For its life, calls with an unknown record that this thread makes are answered for `stream`: an effect is
/// being made. The scopes of a thread nest.
class CEntryScope final {
public:
    explicit CEntryScope(const SStream& stream) noexcept;
    ~CEntryScope();
    CEntryScope(const CEntryScope&) = delete;
    CEntryScope& operator=(const CEntryScope&) = delete;

private:
    const SStream* _outer;
};

/// From now on calls with that record are answered for `stream`, until it is forgotten. Any thread.
void RememberEffect(const VST::AEffect* effect, const SStream& stream);
void ForgetEffect(const VST::AEffect* effect) noexcept;

} // namespace KAV::Host
