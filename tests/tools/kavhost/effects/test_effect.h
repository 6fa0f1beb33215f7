#pragma once

#include "vst/vst2.h"

#include <string>

namespace KAV::Tests {

/// A VST 2 effect for tests: the record, the texts and the channel counts. A test's effect derives from it,
/// and its entry returns the record of a new one, which effClose deletes.
class CTestEffect {
public:
    CTestEffect(VST::HostCallback host, std::int32_t uniqueId, std::int32_t parameters);
    virtual ~CTestEffect() = default;
    CTestEffect(const CTestEffect&) = delete;
    CTestEffect& operator=(const CTestEffect&) = delete;

    VST::AEffect* Record() noexcept { return &_record; }

protected:
    virtual void Process(float** inputs, float** outputs, std::int32_t frames) = 0;
    virtual void SetParameter(std::int32_t, float) {}
    virtual float Parameter(std::int32_t) { return 0; }
    virtual std::string Name() { return "Test Effect"; }
    virtual std::string ParameterName(std::int32_t) { return {}; }
    virtual std::string ParameterDisplay(std::int32_t) { return {}; }
    virtual std::string ParameterLabel(std::int32_t) { return {}; }
    virtual bool TakesChannels(int) { return false; }
    virtual void SetRate(double) {}
    virtual void Activate() {}
    /// Handles calls for which there is no other operation here.
    virtual std::intptr_t Answer(
        std::int32_t /*opcode*/, std::int32_t /*index*/, std::intptr_t /*value*/, void* /*pointer*/) {
        return 0;
    }

    std::intptr_t AskHost(std::int32_t opcode) const {
        return _host(const_cast<VST::AEffect*>(&_record), opcode, 0, 0, nullptr, 0);
    }
    int Channels() const noexcept { return _record.numInputs; }

    VST::AEffect _record{};
    VST::HostCallback _host;

private:
    std::intptr_t Dispatch(
        std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option);
    static CTestEffect& Of(VST::AEffect* record) noexcept {
        return *static_cast<CTestEffect*>(record->object);
    }
};

} // namespace KAV::Tests

#if defined(_WIN32)
#define KAV_TEST_EXPORT extern "C" __declspec(dllexport)
#else
#define KAV_TEST_EXPORT extern "C" __attribute__((visibility("default")))
#endif
