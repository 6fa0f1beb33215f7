#include "tools/kavhost/setup/patch_file.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/file_bytes.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/state_text.h"
#include "utils/marked_text.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace KAV::Host {

namespace {

// Where an .fxp record has what, in bytes; all numbers have their highest byte first.
constexpr std::string_view Magic = "CcnK"; // at 0
constexpr std::size_t FormAt = 8;
constexpr std::size_t UniqueIdAt = 16;
constexpr std::size_t CountAt = 24; // of parameters
constexpr std::size_t NameAt = 28;
constexpr std::size_t ValuesAt = 56;
constexpr std::size_t ChunkSizeAt = 56;
constexpr std::size_t ChunkAt = 60;

/// `size` bytes at `place`; throws CFailure when the record ends before.
std::string_view Part(std::string_view record, std::size_t place, std::size_t size) {
    if (place > record.size() || size > record.size() - place)
        throw CFailure("not a complete patch: too short");
    return record.substr(place, size);
}

std::uint32_t Number(std::string_view record, std::size_t place) {
    std::uint32_t number = 0;
    for (const char byte : Part(record, place, 4)) number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

float Value(std::string_view record, std::size_t index) {
    const auto value = std::bit_cast<float>(Number(record, ValuesAt + 4 * index));
    if (value >= 0 && value <= 1) return value; // not-a-number is neither
    throw CFailure(
        "not a patch: the value of parameter " + std::to_string(index) + " is not between 0 and 1");
}

std::vector<float> ReadValues(std::string_view record) {
    const std::size_t count = Number(record, CountAt);
    std::vector<float> values; // which grows with what is there, whatever the count says
    for (std::size_t i = 0; i < count; ++i) values.push_back(Value(record, i));
    return values;
}

/// A text names its effect. A file that is called a patch counts as one even so: it is another effect's.
void CheckText(std::string_view bytes, const std::filesystem::path& file) {
    if (ReadRouting(bytes)) throw CFailure("a routing, not a patch");
    const bool isCalledSo = EqualIgnoringCase(Utf8(file.extension()), ".kvp");
    if (!isCalledSo &&
        Utils::FindMark(bytes.substr(0, bytes.find('\0')), "<plugin_id") == std::string_view::npos)
        throw CFailure("not a patch: it does not begin like one");
}

} // namespace

bool CPatchFile::IsRecord(std::string_view bytes) noexcept {
    return bytes.starts_with(Magic) || Magic.starts_with(bytes);
}

CPatchFile::CPatchFile(const std::filesystem::path& file) : _file(Utf8(file.filename())) {
    const auto bytes = ReadFileBytes(file, LargestPatch);
    Naming(Utf8(file), [&] {
        if (IsRecord(bytes)) {
            ReadRecord(bytes);
        } else {
            CheckText(bytes, file);
            ReadText(bytes);
            _name = Utf8(file.stem());
        }
    });
}

CPatchFile CPatchFile::Of(const CEffect& effect) {
    CPatchFile patch;
    patch._file = patch._name = effect.ProgramName();
    patch._uniqueId = effect.UniqueId();
    auto chunk = effect.HasChunks() ? effect.Chunk(EChunk::Program) : std::string();
    if (!chunk.empty()) {
        patch._content = std::move(chunk);
        return patch;
    }
    std::vector<float> values;
    values.reserve(static_cast<std::size_t>(std::max(effect.Parameters(), 0)));
    for (std::int32_t i = 0; i < effect.Parameters(); ++i) values.push_back(effect.Parameter(i));
    patch._content = std::move(values);
    return patch;
}

void CPatchFile::ReadText(const std::string& bytes) {
    const auto text = std::string_view(bytes).substr(0, bytes.find('\0'));
    if (const auto number = ReadIndex(Utils::ExtractTag(text, "<plugin_id", ">", "<"))) _uniqueId = *number;
    _content = bytes; // with the zero that ends it
}

void CPatchFile::ReadRecord(const std::string& bytes) {
    const std::string_view record(bytes);
    const auto form = Part(record, FormAt, 4);
    _uniqueId = static_cast<std::int32_t>(Number(record, UniqueIdAt));
    if (form == "FPCh") {
        _content = std::string(Part(record, ChunkAt, Number(record, ChunkSizeAt)));
    } else if (form == "FxCk") {
        _content = ReadValues(record);
        // The record has room for more than effects need to have.
        const auto name = Part(record, NameAt, VST::kVstMaxProgNameLen - 1);
        _name = name.substr(0, name.find('\0'));
    } else {
        throw CFailure("not a patch of one program: its format is unknown");
    }
}

void CPatchFile::Apply(CEffect& effect) const {
    if (_uniqueId != effect.UniqueId()) {
        throw CFailure("Patch \"" + _file + "\" was created for another plug-in");
    }
    if (const auto* const chunk = Chunk()) {
        if (!effect.SetChunk(*chunk, EChunk::Program)) {
            throw CFailure(_file + ": " + effect.Name() + " does not accept this patch");
        }
    } else {
        const auto& values = std::get<std::vector<float>>(_content);
        if (values.size() > static_cast<std::size_t>(effect.Parameters())) {
            throw CFailure(_file + ": the patch has " + std::to_string(values.size()) + " parameters, " +
                           effect.Name() + " has " + std::to_string(effect.Parameters()));
        }
        for (std::size_t i = 0; i < values.size(); ++i)
            effect.SetParameter(static_cast<std::int32_t>(i), values[i]);
    }
    if (!_name.empty()) effect.SetProgramName(_name);
}

} // namespace KAV::Host
