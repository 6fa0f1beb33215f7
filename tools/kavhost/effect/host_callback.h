#pragma once

#include "vst/vst2.h"

namespace KAV::Host {

/// What an effect may ask about the audio that it gets.
struct SStream {
    double rateHz;
    std::int32_t blockSize; ///< most frames of one call
};

/// What a host with a window and a transport answers in addition. Called on any thread of the effect.
class IEffectHost {
public:
    virtual ~IEffectHost() = default;

    virtual bool ResizeEditor(std::int32_t width, std::int32_t height) noexcept = 0; ///< false: not possible
    virtual void NoteIoChange() noexcept = 0; ///< delay or channels have changed
    /// Null without a transport.
    virtual const VST::VstTimeInfo* Time() noexcept = 0;
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

/// For its life, calls with that record that this thread makes are answered without a lock: the effect is
/// processing audio.
class CProcessScope final {
public:
    CProcessScope(const VST::AEffect* effect, const SStream& stream, IEffectHost* host) noexcept;
    ~CProcessScope();
    CProcessScope(const CProcessScope&) = delete;
    CProcessScope& operator=(const CProcessScope&) = delete;
};

/// From now on calls with that record are answered for `stream`, until it is forgotten, and by `host`, which
/// may be null and lives until then. Any thread.
void RememberEffect(const VST::AEffect* effect, const SStream& stream, IEffectHost* host = nullptr);
void ForgetEffect(const VST::AEffect* effect) noexcept;

} // namespace KAV::Host
