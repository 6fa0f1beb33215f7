#pragma once

#include "plugin/device_dsp.h"
#include "vst/vst2.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// One call to the host.
struct SHostCall {
    VST::AEffect* effect;
    std::int32_t opcode;
    std::int32_t index;
    std::intptr_t value;
    float option;
    std::string text; ///< of audioMasterCanDo
};

/// A host that records its calls and answers as the test says. One at a time; calls may come from any thread
/// if `record` is off.
class CRecordingHost final {
public:
    CRecordingHost();
    ~CRecordingHost();
    CRecordingHost(const CRecordingHost&) = delete;
    CRecordingHost& operator=(const CRecordingHost&) = delete;

    VST::HostCallback Callback() const noexcept;

    std::intptr_t version = VST::kVstVersion; ///< answer to audioMasterVersion
    bool record = true;
    std::vector<SHostCall> calls;
    /// Called first; a result other than 0 is the answer.
    std::function<std::intptr_t(
        VST::AEffect*, std::int32_t opcode, std::int32_t index, void* pointer, float option)>
        answer;

    std::size_t Count(std::int32_t opcode) const;
};

/// An instance as the entry creates it, driven through its record the way a host does.
class CHostedEffect final {
public:
    /// Only queries the test's own server, whatever server the build was configured with, and has only the
    /// test's windows, whatever the system has.
    explicit CHostedEffect(VST::HostCallback callback, const Utils::SMakerService& service = {},
        std::unique_ptr<IEditorSystem> system = std::make_unique<IEditorSystem>())
        : _device(new CDeviceDSP(callback, service, std::move(system))), _record(_device->Record()) {}
    ~CHostedEffect() { Dispatch(VST::effClose); }
    CHostedEffect(const CHostedEffect&) = delete;
    CHostedEffect& operator=(const CHostedEffect&) = delete;

    std::intptr_t Dispatch(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
        void* pointer = nullptr, float option = 0.0f) {
        return _record->dispatcher(_record, opcode, index, value, pointer, option);
    }
    void Set(std::int32_t index, float value) { _record->setParameter(_record, index, value); }
    float Get(std::int32_t index) { return _record->getParameter(_record, index); }
    /// The text of one of the text calls; fails the test if the byte at `capacity` or a later one is changed.
    std::string Text(std::int32_t opcode, std::int32_t index, std::size_t capacity);
    std::string Name(std::int32_t index) { return Text(VST::effGetParamName, index, 8); }
    std::string Label(std::int32_t index) { return Text(VST::effGetParamLabel, index, 8); }
    std::string Display(std::int32_t index) { return Text(VST::effGetParamDisplay, index, 8); }
    bool SetChannels(std::int32_t inputs, std::int32_t outputs);
    /// Processes `channels`, all of the same length, in place.
    void Process(std::vector<std::vector<float>>& channels);

    VST::AEffect& Record() noexcept { return *_record; }
    CDeviceDSP& Device() noexcept { return *_device; }

private:
    CDeviceDSP* _device; // owned by the record: effClose destroys it
    VST::AEffect* _record;
};

} // namespace KAV::Tests
