#include "tools/kavhost/tags/tags.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/tags/bext.h"
#include "tools/kavhost/tags/markers.h"
#include "tools/kavhost/tags/text_chunks.h"
#include "utils/product.h"

#include <algorithm>
#include <array>
#include <fstream>

namespace KAV::Host {

namespace {

constexpr std::size_t MostNames = 12;                           // in a note
constexpr std::size_t MostCommentBytes = std::size_t{15} << 20; // FLAC counts a block's bytes in 24 bits

bool IsId3(std::string_view name) noexcept {
    return name == "id3 " || name == "ID3 ";
}

/// A tag that can't be read has the names of values that are outdated by rendering.
bool MentionsOutdated(std::string bytes) {
    std::erase(bytes, '\0'); // as texts of two bytes a letter have them
    std::ranges::transform(bytes, bytes.begin(),
        [](char letter) { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter; });
    constexpr std::array<std::string_view, 5> names{"REPLAYGAIN_", "R128_", "MP3GAIN_", "ITUNNORM", "RVA2"};
    return std::ranges::any_of(names, [&](auto name) { return bytes.find(name) != std::string::npos; });
}

/// Names of the blocks of a FLAC file that belong to no other container.
std::vector<std::string> FlacBlocks(std::istream& stream) {
    std::vector<std::string> names;
    std::string mark(4, '\0');
    stream.clear();
    stream.seekg(0);
    if (!stream.read(mark.data(), 4) || mark != "fLaC") return names;
    for (int count = 0; count < 1000; ++count) {
        std::string head(8, '\0');
        if (!stream.read(head.data(), 8)) break;
        const auto kind = NumberAt(head, 0, 1, EByteOrder::HighFirst) & 0x7F;
        const auto size = NumberAt(head, 1, 3, EByteOrder::HighFirst);
        if (kind == 2) names.push_back("APPLICATION " + ChunkText(head.substr(4)));
        if (kind == 5) names.emplace_back("CUESHEET");
        if (head[0] < 0) break; // the last one
        stream.seekg(static_cast<std::streamoff>(size) - 4, std::ios::cur);
    }
    return names;
}

std::string Printable(std::string text) {
    std::ranges::replace_if(
        text, [](char letter) { return static_cast<unsigned char>(letter) < ' ' || letter == '\x7F'; }, '?');
    return std::string(CutUtf8(text, 60));
}

void AddNote(
    SRenderReport& report, const std::string& reason, std::vector<std::string> names, bool isGrave = false) {
    std::vector<std::string> each;
    for (auto& name : names) {
        if (std::ranges::find(each, name) == each.end()) each.push_back(std::move(name));
    }
    if (each.empty()) return;
    std::string text = reason;
    for (std::size_t i = 0; i < std::min(each.size(), MostNames); ++i)
        text.append(i == 0 ? ": " : ", ").append(Printable(each[i]));
    if (each.size() > MostNames) text += " and " + std::to_string(each.size() - MostNames) + " more";
    report.notes.push_back({text, isGrave});
}

void Append(std::vector<std::string>& names, const std::vector<std::string>& more) {
    names.insert(names.end(), more.begin(), more.end());
}

SLoudnessFigures FiguresOf(const SRenderReport& report) {
    const auto& after = report.after;
    return {after.loudnessLufs, after.loudnessRangeLu, after.truePeakDbtp, after.highestMomentaryLufs,
        after.highestShortTermLufs};
}

/// A line of a coding history after EBU Recommendation R 98.
std::string HistoryLine(const SAudioFormat& format, EContainer container, const std::string& effect) {
    std::string line = "A=PCM";
    if (format.samples == ESampleFormat::Coded) line = "A=VORBIS";
    line += ",F=" + std::to_string(format.rateHz);
    if (format.samples != ESampleFormat::Coded)
        line += ",W=" + std::to_string(8 * SampleBytes(format.samples));
    if (format.channels <= 2) line += format.channels == 1 ? ",M=mono" : ",M=stereo";
    line += ",T=";
    for (const char letter : effect)
        line.push_back(letter >= ' ' && letter <= '~' && letter != ',' ? letter : ' ');
    if (format.channels > 2) line += "; " + std::to_string(format.channels) + " channels";
    if (IntegerBits(format.samples) == 0 && format.samples != ESampleFormat::Coded)
        line += "; floating point";
    if (container != EContainer::Wav) line += "; " + std::string(ContainerName(container));
    return (line + "; kavhost ").append(Utils::ProductVersionUtf8);
}

} // namespace

/// What goes into one file, and what doesn't.
class CTags::CPlan final {
public:
    CPlan(const CTags& source, EContainer container, const std::string& effect, const SRenderReport& report)
        : _source(source), _report(report), _container(container),
          _line(HistoryLine(report.format, container, effect)), _leftOut(source._leftOut) {
        const auto kind = source._chunks.kind;
        const bool isOfOneKind = (container == EContainer::Wav && kind == EChunkFile::Wav) ||
                                 (container == EContainer::Aiff && kind == EChunkFile::Aiff);
        if (isOfOneKind)
            CopyChunks();
        else
            Translate();
    }

    void WriteTo(const std::filesystem::path& file, SRenderReport& report) {
        const auto append = [&] { return AppendChunks(file, _chunks); };
        if (!_chunks.empty() && !Naming(Utf8(report.job.output), append)) {
            for (const auto& chunk : _chunks)
                _leftOut.push_back(
                    ChunkLabel(chunk.name, chunk.bytes) + ": the file would be longer than 4 GiB");
        }
        if (!_comments.fields.empty() || !_comments.pictures.empty()) {
            bool isDone = false;
            try {
                isDone = _source._library != nullptr &&
                         _source._library->WriteComments(file, _container, _comments);
            } catch (const CFailure& failure) {
                throw CFailure(Utf8(report.job.output) + ": " + failure.what());
            } catch (...) {
                throw CFailure(Utf8(report.job.output) + ": its tags cannot be written");
            }
            if (!isDone)
                _leftOut.emplace_back(
                    "tags: " + std::string(ContainerName(_container)) + " tags cannot be written");
        }
        AddNote(report, "dropped because they describe the old samples", _source._chunks.ofSamples);
        AddNote(report, "dropped because they describe the old loudness or coding", _source._tags.outdated);
        AddNote(report, "dropped because kavhost doesn't know what they mean", _source._chunks.unknown);
        AddNote(report, "dropped because " + std::string(ContainerName(_container)) + " can't store them",
            _without);
        AddNote(report, "left out", _leftOut, true);
    }

private:
    void CopyChunks() {
        _chunks = _source._chunks.carried;
        for (auto& chunk : _chunks) {
            if (chunk.name == "bext")
                chunk.bytes = UpdatedBext(std::move(chunk.bytes), FiguresOf(_report), _line);
        }
    }

    void Translate() {
        if (!_source._unreadable.empty()) _leftOut.push_back("tags: " + _source._unreadable);
        auto tags = _source._tags;
        const auto markers = ReadSource(tags);
        Append(_without, _source._blocks);
        if (_container == EContainer::Wav) {
            if (const auto bext = TakeBext(tags); !bext.empty())
                _chunks.push_back({"bext", UpdatedBext(bext, FiguresOf(_report), _line)});
            bool isWhole = tags.pictures.empty() && tags.id3.empty();
            if (const auto info = InfoOf(tags, isWhole); !info.empty()) _chunks.push_back({"LIST", info});
            if (!isWhole) AddId3("id3 ", tags);
            std::ranges::move(WavMarkers(markers, _report.format.rateHz), std::back_inserter(_chunks));
            Append(_without, markers.without);
        } else if (_container == EContainer::Aiff) {
            if (!tags.IsEmpty()) AddId3("ID3 ", tags);
            std::ranges::move(AiffMarkers(markers), std::back_inserter(_chunks));
            Append(_without, markers.without);
        } else {
            Append(_without, tags.only);
            KeepWhatFits(tags);
            _comments = std::move(tags);
        }
    }

    /// Takes text and markers from the source's chunks, and names all others.
    SMarkers ReadSource(STagSet& tags) {
        const auto& list = _source._chunks;
        const bool hasMarkers = _container == EContainer::Wav || _container == EContainer::Aiff;
        SMarkers markers;
        if (list.kind == EChunkFile::Wav) markers = MarkersOfWav(list.carried);
        if (list.kind == EChunkFile::Aiff) markers = MarkersOfAiff(list.carried);
        for (const auto& chunk : list.carried) {
            const bool isInfo = chunk.name == "LIST" && chunk.bytes.starts_with("INFO");
            const bool isMarker = chunk.name == "cue " || chunk.name == "smpl" || chunk.name == "inst" ||
                                  (chunk.name == "LIST" && !isInfo) || chunk.name == "MARK" ||
                                  chunk.name == "INST";
            if (IsId3(chunk.name) || (isMarker && hasMarkers)) continue;
            if (chunk.name == "bext") {
                AddBextFields(UpdatedBext(chunk.bytes, FiguresOf(_report), _line), tags);
            } else if (isInfo) {
                for (const auto& name : AddInfoFields(chunk.bytes, tags)) _without.push_back("INFO " + name);
            } else if (list.kind != EChunkFile::Aiff || !AddAiffText(chunk, tags)) {
                _without.push_back(ChunkLabel(chunk.name, chunk.bytes));
            }
        }
        return markers;
    }

    void AddId3(const std::string& name, const STagSet& tags) {
        if (_source._library == nullptr) {
            _leftOut.emplace_back("tags: this build has no library for them");
            return;
        }
        try {
            if (auto bytes = _source._library->MakeId3(tags); !bytes.empty())
                _chunks.push_back({name, std::move(bytes)});
        } catch (...) {
            _leftOut.emplace_back("tags: they cannot be written as ID3v2");
        }
    }

    void KeepWhatFits(STagSet& tags) {
        std::size_t bytes = 0;
        const auto isTooMuch = [&](std::size_t more, const std::string& name) {
            if (bytes + more <= MostCommentBytes) {
                bytes += more;
                return false;
            }
            _leftOut.push_back(name + ": too large");
            return true;
        };
        std::erase_if(tags.fields, [&](const STagField& field) {
            return isTooMuch(field.key.size() + field.value.size() + 5, field.key);
        });
        std::erase_if(tags.pictures, [&](const STagPicture& picture) {
            if (picture.bytes.size() < MostCommentBytes) return false; // each has a block of its own
            _leftOut.emplace_back("a picture: too large");
            return true;
        });
    }

    const CTags& _source;
    const SRenderReport& _report;
    EContainer _container;
    std::string _line;
    std::vector<SChunk> _chunks;
    STagSet _comments;
    std::vector<std::string> _without;
    std::vector<std::string> _leftOut;
};

CTags::CTags(const std::filesystem::path& file, const ITagLibrary* library) : _library(library) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return; // the reader of the audio will say so
    _chunks = ReadChunks(stream);
    _blocks = FlacBlocks(stream);
    Append(_leftOut, _chunks.leftOut);
    for (auto& chunk : _chunks.carried) {
        if (IsId3(chunk.name)) ReadId3(chunk);
    }
    std::erase_if(
        _chunks.carried, [](const SChunk& chunk) { return IsId3(chunk.name) && chunk.bytes.empty(); });
    if (_chunks.kind == EChunkFile::None) Read([&] { _tags = _library->ReadFile(file); });
}

template<typename OPERATION>
void CTags::Read(OPERATION&& operation) {
    try {
        if (_library != nullptr)
            operation();
        else
            _unreadable = "this build has no library for them";
    } catch (const CFailure& failure) {
        _unreadable = failure.what();
    } catch (...) {
        _unreadable = "they cannot be read";
    }
}

void CTags::ReadId3(SChunk& chunk) {
    Read([&] {
        auto tags = _library->ReadId3(chunk.bytes);
        chunk.bytes = tags.id3;
        Append(tags.outdated, _tags.outdated);
        if (_tags.IsEmpty())
            _tags = std::move(tags);
        else
            _tags.outdated = std::move(tags.outdated);
    });
    if (_unreadable.empty() || !MentionsOutdated(chunk.bytes)) return;
    // It may be wrong by now, and can't be taken out.
    _leftOut.push_back(ChunkLabel(chunk.name, chunk.bytes) + ": " + _unreadable);
    chunk.bytes.clear();
}

void CTags::AddTo(const std::filesystem::path& file, EContainer container, const std::string& effect,
    SRenderReport& report) const {
    CPlan plan(*this, container, effect, report);
    plan.WriteTo(file, report);
}

} // namespace KAV::Host
