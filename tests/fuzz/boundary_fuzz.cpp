// Any sequence of host calls: opcodes, indexes, values, rates, block sizes, layouts and audio of any bits.
// The sanitizers and the guard bytes after each text detect failures.

#include "plugin/device_dsp.h"
#include "vst/vst2.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::VST;

namespace {

class CBytes final {
public:
    CBytes(const std::uint8_t* data, std::size_t size) : _data(data), _size(size) {}
    bool Empty() const { return _size == 0; }
    template<typename T>
    T Take() {
        T value{};
        const std::size_t length = _size < sizeof(T) ? _size : sizeof(T);
        std::memcpy(&value, _data, length);
        _data += length;
        _size -= length;
        return value;
    }

private:
    const std::uint8_t* _data;
    std::size_t _size;
};

std::intptr_t Host(
    AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t, void*, float value) {
    if (opcode == audioMasterVersion) return kVstVersion;
    static int depth = 0; // a host may call back from inside our call
    if (opcode == audioMasterAutomate && depth == 0) {
        ++depth;
        effect->setParameter(effect, index, -value);
        --depth;
    }
    return 0;
}

void Text(AEffect* effect, std::int32_t opcode, std::int32_t index, std::size_t capacity) {
    std::vector<char> text(capacity); // the sanitizer guards its end
    effect->dispatcher(effect, opcode, index, 0, text.data(), 0.0f);
    if (std::memchr(text.data(), 0, capacity) == nullptr) std::abort();
}

void Process(AEffect* effect, CBytes& bytes) {
    const auto frames = static_cast<std::int32_t>(bytes.Take<std::uint16_t>() % 3000);
    const auto pattern = bytes.Take<float>();
    const auto channels = static_cast<std::size_t>(effect->numInputs);
    std::vector<std::vector<float>> audio(
        channels, std::vector<float>(static_cast<std::size_t>(frames), pattern));
    std::vector<float*> pointers;
    for (auto& channel : audio) pointers.push_back(channel.data());
    effect->processReplacing(effect, pointers.data(), pointers.data(), frames);
}

using Arrangement = SpeakerArrangement<64>;

/// The bytes of a record that are compared.
std::string Content(const VstSpeakerArrangement& record) {
    const auto channels = static_cast<std::size_t>(std::clamp(record.numChannels, 0, 64));
    const auto size = offsetof(Arrangement, speakers) + channels * sizeof(VstSpeakerProperties);
    return {reinterpret_cast<const char*>(&record), size};
}

struct SArrangements {
    VstSpeakerArrangement* input = nullptr;
    VstSpeakerArrangement* output = nullptr;
};

SArrangements HandedOut(AEffect* effect) {
    SArrangements records;
    effect->dispatcher(effect, effGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&records.input),
        &records.output, 0.0f);
    return records;
}

/// Each side is a record of the host, or one that the effect has returned, for the same side or the other
/// one. What is accepted must be returned unchanged.
void Arrange(AEffect* effect, CBytes& bytes) {
    Arrangement ownInput{};
    Arrangement ownOutput{};
    ownInput.numChannels = bytes.Take<std::int8_t>();
    ownOutput.numChannels = bytes.Take<std::int8_t>();
    const auto choice = bytes.Take<std::uint8_t>();
    ownInput.type = choice;
    ownOutput.type = -choice;
    for (std::size_t n = 0; n < 64; ++n) {
        ownInput.speakers[n].type = static_cast<std::int32_t>(n) + choice;
        ownOutput.speakers[n].type = -static_cast<std::int32_t>(n) - choice;
    }
    const SArrangements handed = HandedOut(effect);
    const auto pick = [&handed](unsigned which, Arrangement& own) {
        auto* const record = reinterpret_cast<VstSpeakerArrangement*>(&own);
        if (handed.input == nullptr || which % 3 == 0) return record;
        return which % 3 == 1 ? handed.input : handed.output;
    };
    VstSpeakerArrangement* const input = pick(choice, ownInput);
    VstSpeakerArrangement* const output = pick(choice / 3u, ownOutput);
    const std::string wantedInput = Content(*input);
    const std::string wantedOutput = Content(*output);
    const bool taken = effect->dispatcher(effect, effSetSpeakerArrangement, 0,
                           reinterpret_cast<std::intptr_t>(input), output, 0.0f) != 0;
    if (effect->numInputs < 0 || effect->numInputs > 16 || effect->numInputs != effect->numOutputs)
        std::abort();
    if (!taken) return;
    const SArrangements now = HandedOut(effect);
    if (Content(*now.input) != wantedInput || Content(*now.output) != wantedOutput) std::abort();
    if (now.input->numChannels != effect->numInputs) std::abort();
}

/// Opcodes whose pointer and value describe memory get memory; all others get arbitrary values.
void Dispatch(AEffect* effect, CBytes& bytes) {
    const auto opcode = bytes.Take<std::int32_t>();
    const auto index = bytes.Take<std::int32_t>();
    const auto value = bytes.Take<std::int32_t>();
    const auto option = bytes.Take<float>();
    switch (opcode) {
    case effClose:
        return;
    case effSetSpeakerArrangement:
        Arrange(effect, bytes);
        return;
    case effGetSpeakerArrangement:
        effect->dispatcher(effect, opcode, index, 0, nullptr, option);
        HandedOut(effect);
        return;
    case effSetChunk: { // the bytes that the effect has returned, or their beginning
        void* chunk = nullptr;
        const std::intptr_t size = effect->dispatcher(effect, effGetChunk, index & 1, 0, &chunk, 0.0f);
        if (chunk == nullptr || size <= 0) std::abort();
        const auto part = value < 0 ? size : 1 + value % size;
        effect->dispatcher(effect, effSetChunk, index, part, chunk, option);
        break;
    }
    case effSetBlockSize:
        effect->dispatcher(effect, opcode, index, value % 8192, nullptr, option);
        return;
    default:
        break;
    }
    std::array<char, 256> memory{};
    effect->dispatcher(effect, opcode, index, value < 256 ? value : 256, memory.data(), option);
    effect->dispatcher(effect, opcode, index, value, nullptr, option);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CBytes bytes(data, size);
    auto* device = new CDeviceDSP(Host);
    AEffect* effect = device->Record();
    for (int call = 0; call < 64 && !bytes.Empty(); ++call) {
        switch (bytes.Take<std::uint8_t>() % 8) {
        case 0:
            Dispatch(effect, bytes);
            break;
        case 1: {
            const auto index = bytes.Take<std::int32_t>();
            effect->setParameter(effect, index, bytes.Take<float>());
            break;
        }
        case 2: {
            const auto index = static_cast<std::int32_t>(bytes.Take<std::uint8_t>());
            effect->setParameter(effect, index, bytes.Take<float>());
            effect->getParameter(effect, index);
            Text(effect, effGetParamDisplay, index, 8);
            Text(effect, effGetParamName, index, 8);
            Text(effect, effGetParamLabel, index, 8);
            Text(effect, effGetProgramNameIndexed, index, 24);
            break;
        }
        case 3:
            Arrange(effect, bytes);
            break;
        case 4: {
            const auto tag = static_cast<std::int32_t>(bytes.Take<std::int16_t>());
            const auto value = bytes.Take<float>();
            device->SetParam(tag, value, bytes.Take<std::uint8_t>());
            break;
        }
        case 5: {
            const auto macro = bytes.Take<std::uint8_t>() % CMacro::Macros;
            const auto tag = static_cast<std::int32_t>(bytes.Take<std::int16_t>());
            device->AssignMacro(macro, tag, bytes.Take<float>());
            device->SetCurrentGroup(bytes.Take<std::int8_t>());
            device->BeginEdit(tag);
            device->EndEdit(tag);
            break;
        }
        case 6: {
            const auto rate = bytes.Take<std::uint32_t>() % 400000u;
            effect->dispatcher(effect, effSetSampleRate, 0, 0, nullptr, static_cast<float>(rate));
            break;
        }
        default:
            Process(effect, bytes);
            break;
        }
    }
    effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    return 0;
}
