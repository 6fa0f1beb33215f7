#include "tools/kavhost/tags/markers.h"

#include "tools/kavhost/tags/bytes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace KAV::Host {

namespace {

constexpr auto Low = EByteOrder::LowFirst;
constexpr auto High = EByteOrder::HighFirst;
constexpr std::size_t CueBytes = 24;
constexpr std::size_t LoopBytes = 24;
constexpr std::size_t LoopsPlace = 36;      // in "smpl"
constexpr std::size_t MostMarkers = 32'000; // AIFF's numbers have 15 bits, and a loop needs two
constexpr double SemitoneFraction = 4294967296.0;

std::uint32_t Number32(std::string_view bytes, std::size_t place, EByteOrder order) noexcept {
    return static_cast<std::uint32_t>(NumberAt(bytes, place, 4, order));
}

int SignedByte(std::string_view bytes, std::size_t place) noexcept {
    return static_cast<std::int8_t>(NumberAt(bytes, place, 1, Low));
}

int Signed16(std::string_view bytes, std::size_t place) noexcept {
    return static_cast<std::int16_t>(NumberAt(bytes, place, 2, High));
}

/// The labels of a list of cue points, by the point's number.
std::map<std::uint32_t, std::string> LabelsOf(std::string_view list, std::vector<std::string>& without) {
    std::map<std::uint32_t, std::string> labels;
    bool hasMore = false;
    for (std::size_t place = 4; place + 8 <= list.size();) {
        const auto name = list.substr(place, 4);
        const auto size = static_cast<std::size_t>(NumberAt(list, place + 4, 4, Low));
        const auto body = list.substr(place + 8, size);
        if (name == "labl" && body.size() >= 4)
            labels.emplace(Number32(body, 0, Low), ChunkText(body.substr(4)));
        else
            hasMore = true;
        place += 8 + size + (size & 1);
    }
    if (hasMore) without.emplace_back("LIST adtl (notes and regions)");
    return labels;
}

std::vector<SMarker> CuesOf(std::string_view cue, const std::map<std::uint32_t, std::string>& labels) {
    std::vector<SMarker> markers;
    const auto count = Number32(cue, 0, Low);
    for (std::size_t i = 0; i < count && 4 + (i + 1) * CueBytes <= cue.size(); ++i) {
        const auto point = cue.substr(4 + i * CueBytes, CueBytes);
        const auto label = labels.find(Number32(point, 0, Low));
        markers.push_back({Number32(point, 20, Low), label == labels.end() ? std::string() : label->second});
    }
    return markers;
}

void TakeInst(std::string_view inst, SInstrument& instrument) {
    instrument.note = SignedByte(inst, 0);
    instrument.detuneCents = SignedByte(inst, 1);
    instrument.gainDb = SignedByte(inst, 2);
    instrument.lowNote = SignedByte(inst, 3);
    instrument.highNote = SignedByte(inst, 4);
    instrument.lowVelocity = SignedByte(inst, 5);
    instrument.highVelocity = SignedByte(inst, 6);
}

void TakeSmpl(std::string_view smpl, bool hasInst, SMarkers& result) {
    auto& instrument = *result.instrument;
    if (!hasInst) {
        instrument.note = static_cast<int>(std::min<std::uint32_t>(Number32(smpl, 12, Low), 127));
        const auto cents = std::lround(100 * Number32(smpl, 16, Low) / SemitoneFraction);
        instrument.detuneCents = static_cast<int>(cents > 50 ? cents - 100 : cents);
        if (cents > 50 && instrument.note < 127) ++instrument.note;
    }
    const auto loops = Number32(smpl, 28, Low);
    const auto kind = Number32(smpl, LoopsPlace + 4, Low);
    const auto end = Number32(smpl, LoopsPlace + 12, Low);
    const bool isThere = loops > 0 && smpl.size() >= LoopsPlace + LoopBytes;
    const bool hasCounterpart = isThere && kind <= 1 && end < std::numeric_limits<std::uint32_t>::max();
    if (hasCounterpart) instrument.loop = {Number32(smpl, LoopsPlace + 8, Low), end + 1, kind == 1};
    if (loops > 1 || (isThere && !hasCounterpart)) result.without.emplace_back("smpl (further loops)");
}

std::string PascalText(std::string_view text) {
    const auto cut = CutUtf8(text, 255);
    std::string bytes(1, static_cast<char>(cut.size()));
    bytes += cut;
    if ((bytes.size() & 1) != 0) bytes.push_back('\0');
    return bytes;
}

void AppendMark(std::string& bytes, std::uint64_t number, std::uint32_t frame, std::string_view label) {
    AppendNumber(bytes, number, 2, High);
    AppendNumber(bytes, frame, 4, High);
    bytes += PascalText(label);
}

std::string WavCues(std::span<const SMarker> markers) {
    std::string cue;
    AppendNumber(cue, markers.size(), 4, Low);
    for (std::size_t i = 0; i < markers.size(); ++i) {
        AppendNumber(cue, i + 1, 4, Low);
        AppendNumber(cue, markers[i].frame, 4, Low);
        cue += "data";
        AppendNumber(cue, 0, 8, Low);
        AppendNumber(cue, markers[i].frame, 4, Low);
    }
    return cue;
}

std::string WavLabels(std::span<const SMarker> markers) {
    std::string list = "adtl";
    for (std::size_t i = 0; i < markers.size(); ++i) {
        if (markers[i].label.empty()) continue;
        list += "labl";
        AppendNumber(list, 4 + markers[i].label.size() + 1, 4, Low);
        AppendNumber(list, i + 1, 4, Low);
        list.append(markers[i].label).push_back('\0');
        if ((list.size() & 1) != 0) list.push_back('\0');
    }
    return list;
}

std::string WavSampler(const SInstrument& instrument, int rateHz) {
    std::string smpl;
    AppendNumber(smpl, 0, 8, Low); // no maker, no product
    AppendNumber(smpl, static_cast<std::uint64_t>(std::llround(1e9 / rateHz)), 4, Low);
    const bool isFlat = instrument.detuneCents < 0; // fractions only go up
    AppendNumber(smpl, static_cast<std::uint64_t>(std::max(instrument.note - (isFlat ? 1 : 0), 0)), 4, Low);
    const double cents = instrument.detuneCents + (isFlat ? 100 : 0);
    AppendNumber(smpl, static_cast<std::uint64_t>(std::llround(cents / 100 * SemitoneFraction)), 4, Low);
    AppendNumber(smpl, 0, 8, Low); // no time code
    AppendNumber(smpl, 1, 4, Low); // one loop, and
    AppendNumber(smpl, 0, 4, Low); // nothing after it
    AppendNumber(smpl, 0, 4, Low);
    AppendNumber(smpl, instrument.loop->alternates ? 1 : 0, 4, Low);
    AppendNumber(smpl, instrument.loop->begin, 4, Low);
    AppendNumber(smpl, instrument.loop->end - 1, 4, Low);
    AppendNumber(smpl, 0, 8, Low); // no fraction of a frame, for ever
    return smpl;
}

std::string InstOf(const SInstrument& instrument) {
    std::string inst;
    for (const int value : {instrument.note, instrument.detuneCents, instrument.gainDb, instrument.lowNote,
             instrument.highNote, instrument.lowVelocity, instrument.highVelocity}) {
        inst.push_back(static_cast<char>(value));
    }
    return inst;
}

} // namespace

SMarkers MarkersOfWav(std::span<const SChunk> chunks) {
    SMarkers result;
    std::map<std::uint32_t, std::string> labels;
    for (const auto& chunk : chunks) {
        if (chunk.name == "LIST" && chunk.bytes.starts_with("adtl"))
            labels.merge(LabelsOf(chunk.bytes, result.without));
    }
    bool hasInst = false;
    for (const auto& chunk : chunks) {
        if (chunk.name == "cue ")
            std::ranges::move(CuesOf(chunk.bytes, labels), std::back_inserter(result.markers));
        if (chunk.name != "inst" || chunk.bytes.size() < 7) continue;
        TakeInst(chunk.bytes, result.instrument.emplace());
        hasInst = true;
    }
    for (const auto& chunk : chunks) {
        if (chunk.name != "smpl" || chunk.bytes.size() < LoopsPlace) continue;
        if (!result.instrument) result.instrument.emplace();
        TakeSmpl(chunk.bytes, hasInst, result);
    }
    return result;
}

SMarkers MarkersOfAiff(std::span<const SChunk> chunks) {
    SMarkers result;
    std::map<int, SMarker> markers;
    for (const auto& chunk : chunks) {
        if (chunk.name != "MARK") continue;
        const std::string_view bytes = chunk.bytes;
        for (std::size_t place = 2; place + 7 <= bytes.size();) {
            const auto size = static_cast<std::size_t>(NumberAt(bytes, place + 6, 1, High));
            markers.emplace(Signed16(bytes, place),
                SMarker{Number32(bytes, place + 2, High), ChunkText(bytes.substr(place + 7, size))});
            place += 7 + size + ((size & 1) == 0 ? 1 : 0);
        }
    }
    for (const auto& chunk : chunks) {
        const std::string_view bytes = chunk.bytes;
        if (chunk.name != "INST" || bytes.size() < 20) continue;
        auto& instrument = result.instrument.emplace();
        instrument = {SignedByte(bytes, 0), SignedByte(bytes, 1), Signed16(bytes, 6), SignedByte(bytes, 2),
            SignedByte(bytes, 3), SignedByte(bytes, 4), SignedByte(bytes, 5), std::nullopt};
        const auto begin = markers.find(Signed16(bytes, 10)), end = markers.find(Signed16(bytes, 12));
        const int mode = Signed16(bytes, 8);
        if (mode >= 1 && mode <= 2 && begin != markers.end() && end != markers.end() &&
            end->second.frame > begin->second.frame) {
            instrument.loop = {begin->second.frame, end->second.frame, mode == 2};
            // Markers without a name that are there for the loop alone.
            for (const int number : {begin->first, end->first}) {
                const auto used = markers.find(number);
                if (used != markers.end() && used->second.label.empty()) markers.erase(used);
            }
        }
        if (Signed16(bytes, 14) != 0) result.without.emplace_back("INST (release loop)");
    }
    for (auto& [number, marker] : markers) result.markers.push_back(std::move(marker));
    return result;
}

std::vector<SChunk> WavMarkers(const SMarkers& markers, int rateHz) {
    std::vector<SChunk> chunks;
    if (!markers.markers.empty()) {
        chunks.push_back({"cue ", WavCues(markers.markers)});
        if (auto labels = WavLabels(markers.markers); labels.size() > 4)
            chunks.push_back({"LIST", std::move(labels)});
    }
    if (!markers.instrument) return chunks;
    chunks.push_back({"inst", InstOf(*markers.instrument)});
    if (markers.instrument->loop) chunks.push_back({"smpl", WavSampler(*markers.instrument, rateHz)});
    return chunks;
}

std::vector<SChunk> AiffMarkers(const SMarkers& markers) {
    std::string marks;
    std::uint64_t count = 0;
    for (const auto& marker : markers.markers) {
        if (count < MostMarkers) AppendMark(marks, ++count, marker.frame, marker.label);
    }
    std::string inst;
    if (const auto& instrument = markers.instrument) {
        for (const int value : {instrument->note, instrument->detuneCents, instrument->lowNote,
                 instrument->highNote, instrument->lowVelocity, instrument->highVelocity}) {
            inst.push_back(static_cast<char>(value));
        }
        AppendNumber(inst, static_cast<std::uint64_t>(instrument->gainDb), 2, High);
        const auto& loop = instrument->loop;
        AppendNumber(inst, !loop ? 0 : loop->alternates ? 2 : 1, 2, High);
        for (const auto frame : {loop ? loop->begin : 0, loop ? loop->end : 0}) {
            AppendNumber(inst, loop ? ++count : 0, 2, High);
            if (loop) AppendMark(marks, count, frame, {});
        }
        inst.resize(20); // no loop for the release
    }
    std::vector<SChunk> chunks;
    if (count > 0) {
        std::string bytes;
        AppendNumber(bytes, count, 2, High);
        chunks.push_back({"MARK", bytes + marks});
    }
    if (!inst.empty()) chunks.push_back({"INST", inst});
    return chunks;
}

} // namespace KAV::Host
