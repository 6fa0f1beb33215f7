#include "tools/kavhost/tags/chunk_file.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <limits>
#include <system_error>

namespace KAV::Host {

namespace {

using namespace std::string_view_literals;

constexpr std::uint64_t MostChunkBytes = std::uint64_t{64} << 20;
constexpr std::uint64_t MostBytes = std::uint64_t{128} << 20; // of all chunks of a file
constexpr std::size_t MostChunks = 10'000;                    // that are looked at
constexpr std::uint64_t Endless = 0xFFFFFFFF;                 // a size that is elsewhere, or not known
constexpr std::size_t HeadBytes = 12;
constexpr std::size_t ChunkHeadBytes = 8;
constexpr std::size_t WideSizePlace = 20; // of the whole file in an RF64 file's first chunk

constexpr std::array CarriedInWav{"bext"sv, "iXML"sv, "axml"sv, "chna"sv, "cue "sv, "smpl"sv, "inst"sv,
    "cart"sv, "acid"sv, "id3 "sv, "ID3 "sv, "_PMX"sv};
constexpr std::array CarriedInAiff{
    "NAME"sv, "AUTH"sv, "(c) "sv, "ANNO"sv, "COMT"sv, "MARK"sv, "INST"sv, "MIDI"sv, "ID3 "sv};
constexpr std::array OfSamples{"PEAK"sv, "levl"sv, "LEVL"sv, "MD5 "sv};
constexpr std::array Storage{"fmt "sv, "data"sv, "fact"sv, "ds64"sv, "JUNK"sv, "junk"sv, "PAD "sv, "FLLR"sv,
    "COMM"sv, "SSND"sv, "FVER"sv, "CHAN"sv, "desc"sv, "pakt"sv, "kuki"sv, "chan"sv, "free"sv};

bool Has(std::span<const std::string_view> names, std::string_view name) noexcept {
    return std::ranges::find(names, name) != names.end();
}

bool IsName(std::string_view name) noexcept {
    return name.size() == 4 && name[0] != ' ' &&
           std::ranges::all_of(name, [](char letter) { return letter >= ' ' && letter <= '~'; });
}

/// How the chunks of a kind of file are written.
struct SLayout {
    EByteOrder order = EByteOrder::LowFirst;
    std::size_t sizeBytes = 4;
    std::size_t nameBytes = 4;
    std::uint64_t sizeIncludes = 0; ///< bytes of the chunk's head that its size counts
    std::uint64_t alignment = 2;
};

/// Goes from chunk to chunk.
class CChunkWalk final {
public:
    explicit CChunkWalk(std::istream& stream) : _stream(stream) {
        _stream.seekg(0, std::ios::end);
        const auto end = _stream.tellg();
        _size = _stream && end > 0 ? static_cast<std::uint64_t>(end) : 0;
        _position = Begin(Bytes(0, 40));
    }

    SChunkList Walk() {
        if (_list.kind == EChunkFile::None) return std::move(_list);
        std::size_t count = 0;
        while (Step()) {
            if (++count < MostChunks) continue;
            _list.leftOut.push_back(
                "everything after the first " + std::to_string(MostChunks) + " chunks: too many");
            break;
        }
        return std::move(_list);
    }

private:
    std::string Bytes(std::uint64_t place, std::uint64_t count) {
        std::string bytes(static_cast<std::size_t>(std::min(count, place < _size ? _size - place : 0)), '\0');
        _stream.clear();
        _stream.seekg(static_cast<std::streamoff>(place));
        _stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(_stream.gcount(), 0)));
        return bytes;
    }

    /// Finds out what kind of file begins with `head`; returns the place of its first chunk.
    std::uint64_t Begin(std::string_view head) {
        if (head.size() < HeadBytes) return 0;
        const auto mark = head.substr(0, 4), form = head.substr(8, 4);
        _wide = mark == "RF64" || mark == "BW64";
        if ((mark == "RIFF" || _wide) && form == "WAVE") {
            _list.kind = EChunkFile::Wav;
            _carried = CarriedInWav;
        } else if (mark == "FORM" && (form == "AIFF" || form == "AIFC")) {
            _list.kind = EChunkFile::Aiff;
            _carried = CarriedInAiff;
            _layout.order = EByteOrder::HighFirst;
        } else if (mark == "RIFX" && form == "WAVE") {
            _list.kind = EChunkFile::Foreign;
            _layout.order = EByteOrder::HighFirst;
        } else if (mark == "caff") {
            _list.kind = EChunkFile::Foreign;
            _layout = {EByteOrder::HighFirst, 8, 4, 0, 1};
            return 8;
        } else if (mark == "riff" && head.size() == 40 && head.substr(24, 4) == "wave") {
            _list.kind = EChunkFile::Foreign;
            _layout = {EByteOrder::LowFirst, 8, 16, 24, 8};
            return 40;
        }
        const auto size = NumberAt(head, 4, 4, _layout.order);
        _end = size == Endless || size <= 8 ? _size : size + 8; // a recorder that was cut off leaves neither
        _sizeIsKnown = size != Endless && size > 8;
        return HeadBytes;
    }

    bool Step() {
        const auto headBytes = _layout.nameBytes + _layout.sizeBytes;
        const auto head = Bytes(_position, headBytes);
        if (head.size() < headBytes) return false;
        const auto name = head.substr(0, 4);
        if (!IsName(name)) {
            // What follows the last chunk is none of ours, but inside the file there should be chunks only.
            if (_position < _end) _list.leftOut.emplace_back("what follows the last readable chunk: damaged");
            return false;
        }
        const auto claimed = NumberAt(head, _layout.nameBytes, _layout.sizeBytes, _layout.order);
        const auto body = _position + headBytes;
        const auto size = TrueSize(name, claimed, body);
        if (name == "ds64") _dataBytes = NumberAt(Bytes(body, 16), 8, 8, _layout.order);
        Sort(name, body, size);
        if (size > _size - body) return false;
        _position = Next(body + size);
        return _position < _size;
    }

    std::uint64_t TrueSize(std::string_view name, std::uint64_t claimed, std::uint64_t body) const {
        if (name == "data" && _layout.sizeBytes == 4) {
            if (claimed == Endless) return _wide ? _dataBytes : _size - body;
            if (claimed == 0 && !_sizeIsKnown && !_wide) return _size - body;
        }
        return claimed - std::min(claimed, _layout.sizeIncludes);
    }

    /// The place after a chunk that ends at `end`. Some programs forget the byte that fills up an odd one.
    std::uint64_t Next(std::uint64_t end) {
        const auto rest = end % _layout.alignment;
        if (rest == 0) return end;
        const auto padded = end + _layout.alignment - rest;
        const auto here = Bytes(end, 4);
        const bool isForgotten = (Has(_carried, here) || here == "LIST") && !IsName(Bytes(padded, 4));
        return isForgotten ? end : padded;
    }

    void Sort(const std::string& name, std::uint64_t body, std::uint64_t size) {
        if (Has(Storage, name)) return;
        const auto kind = name == "LIST" ? Bytes(body, 4) : std::string();
        const auto label = ChunkLabel(name, kind);
        if (Has(OfSamples, name)) {
            _list.ofSamples.push_back(label);
        } else if (!Has(_carried, name) && !IsCarriedList(kind)) {
            _list.unknown.push_back(label);
        } else if (size > _size - body) {
            _list.leftOut.push_back(label + ": cut off");
        } else if (size > MostChunkBytes || _total + size > MostBytes) {
            _list.leftOut.push_back(label + ": too large");
        } else {
            _total += size;
            _list.carried.push_back({name, Bytes(body, size)});
        }
    }

    bool IsCarriedList(std::string_view kind) const noexcept {
        return _list.kind == EChunkFile::Wav && (kind == "INFO" || kind == "adtl");
    }

    std::istream& _stream;
    std::uint64_t _size = 0; ///< of the file
    std::uint64_t _end = 0;  ///< of the chunks, as the file says
    std::uint64_t _position = 0;
    std::uint64_t _dataBytes = 0; ///< of the audio, in the wide form
    std::uint64_t _total = 0;     ///< bytes carried
    bool _wide = false;
    bool _sizeIsKnown = false;
    SLayout _layout;
    std::span<const std::string_view> _carried;
    SChunkList _list;
};

} // namespace

std::string ChunkLabel(std::string_view name, std::string_view bytes) {
    std::string label(Trim(name));
    if (name == "LIST" && IsName(bytes.substr(0, 4))) label.append(" ").append(Trim(bytes.substr(0, 4)));
    return label;
}

SChunkList ReadChunks(std::istream& stream) {
    return CChunkWalk(stream).Walk();
}

bool AppendChunks(const std::filesystem::path& file, std::span<const SChunk> chunks) {
    errno = 0;
    const auto check = [](bool isDone) {
        if (isDone) return;
        const int number = errno;
        throw CFailure("cannot be written" +
                       (number != 0 ? ": " + std::generic_category().message(number) : std::string()));
    };
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    std::string head(HeadBytes, '\0');
    check(static_cast<bool>(stream.read(head.data(), static_cast<std::streamsize>(head.size()))));
    const bool isWide = head.starts_with("RF64");
    const auto order = head.starts_with("FORM") ? EByteOrder::HighFirst : EByteOrder::LowFirst;
    stream.seekp(0, std::ios::end);
    const auto place = stream.tellp();
    check(stream && place > 0);

    const auto odd = static_cast<std::uint64_t>(place) & 1;
    std::uint64_t end = static_cast<std::uint64_t>(place) + odd;
    for (const auto& chunk : chunks) end += ChunkHeadBytes + chunk.bytes.size() + (chunk.bytes.size() & 1);
    const auto size = end - ChunkHeadBytes;
    if (!isWide && size > std::numeric_limits<std::uint32_t>::max()) return false;

    if (odd != 0) stream.put('\0');
    for (const auto& chunk : chunks) {
        std::string lead = chunk.name;
        AppendNumber(lead, chunk.bytes.size(), 4, order);
        stream.write(lead.data(), static_cast<std::streamsize>(lead.size()));
        stream.write(chunk.bytes.data(), static_cast<std::streamsize>(chunk.bytes.size()));
        if ((chunk.bytes.size() & 1) != 0) stream.put('\0');
    }
    std::string number;
    AppendNumber(number, size, isWide ? 8 : 4, order);
    stream.seekp(isWide ? WideSizePlace : 4);
    stream.write(number.data(), static_cast<std::streamsize>(number.size()));
    stream.close();
    check(!stream.fail());
    return true;
}

} // namespace KAV::Host
