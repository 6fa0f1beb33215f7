#include "tests/support/recording_host.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace KAV::Tests {

namespace {

CRecordingHost* current =
    nullptr; // the interface's callback has no pointer for the host's data before there is a record

std::intptr_t Receive(VST::AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value,
    void* pointer, float option) {
    CRecordingHost& host = *current;
    if (host.record) {
        const bool hasText = opcode == VST::audioMasterCanDo && pointer != nullptr;
        host.calls.push_back(
            {effect, opcode, index, value, option, hasText ? static_cast<const char*>(pointer) : ""});
    }
    if (host.answer) {
        const auto result = host.answer(effect, opcode, index, pointer, option);
        if (result != 0) return result;
    }
    return opcode == VST::audioMasterVersion ? host.version : 0;
}

} // namespace

CRecordingHost::CRecordingHost() {
    current = this;
}

CRecordingHost::~CRecordingHost() {
    current = nullptr;
}

VST::HostCallback CRecordingHost::Callback() const noexcept {
    return Receive;
}

std::size_t CRecordingHost::Count(std::int32_t opcode) const {
    return static_cast<std::size_t>(std::count_if(
        calls.begin(), calls.end(), [opcode](const auto& call) { return call.opcode == opcode; }));
}

std::string CHostedEffect::Text(std::int32_t opcode, std::int32_t index, std::size_t capacity) {
    std::vector<char> buffer(capacity + 64, '#');
    Dispatch(opcode, index, 0, buffer.data());
    const auto text = std::string(buffer.data(), strnlen(buffer.data(), buffer.size()));
    EXPECT_LT(text.size(), capacity);
    EXPECT_TRUE(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(text.size() + 1), buffer.end(),
        [](char byte) { return byte == '#'; }))
        << "bytes after the closing zero were changed";
    return text;
}

bool CHostedEffect::SetChannels(std::int32_t inputs, std::int32_t outputs) {
    VST::SpeakerArrangement<64> in{};
    VST::SpeakerArrangement<64> out{};
    in.numChannels = inputs;
    out.numChannels = outputs;
    return Dispatch(VST::effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out) != 0;
}

void CHostedEffect::Process(std::vector<std::vector<float>>& channels) {
    std::vector<float*> pointers;
    for (auto& channel : channels) pointers.push_back(channel.data());
    _record->processReplacing(
        _record, pointers.data(), pointers.data(), static_cast<std::int32_t>(channels.front().size()));
}

} // namespace KAV::Tests
