#include "tools/kavhost/tags/text_chunks.h"

#include "tools/kavhost/tags/bytes.h"

#include <algorithm>
#include <array>

namespace KAV::Host {

namespace {

struct SName {
    std::string_view chunk;
    std::string_view key;
};

/// Where two chunks mean the same, the first is written.
constexpr std::array InfoNames{
    SName{"INAM", "TITLE"},
    SName{"IART", "ARTIST"},
    SName{"IPRD", "ALBUM"},
    SName{"ICMT", "COMMENT"},
    SName{"ICRD", "DATE"},
    SName{"IGNR", "GENRE"},
    SName{"IPRT", "TRACKNUMBER"},
    SName{"ITRK", "TRACKNUMBER"},
    SName{"ICOP", "COPYRIGHT"},
    SName{"IENG", "ENGINEER"},
    SName{"ITCH", "ENCODEDBY"},
    SName{"ISFT", "ENCODER"},
    SName{"IMUS", "COMPOSER"},
    SName{"IWRI", "LYRICIST"},
    SName{"IPRO", "PRODUCER"},
    SName{"ILNG", "LANGUAGE"},
    SName{"IMED", "MEDIA"},
    SName{"ISRC", "SOURCE"},
    SName{"ISBJ", "SUBJECT"},
    SName{"IKEY", "KEYWORDS"},
    SName{"ICMS", "COMMISSIONED"},
    SName{"IARL", "ARCHIVALLOCATION"},
};

constexpr std::array AiffNames{
    SName{"NAME", "TITLE"},
    SName{"AUTH", "ARTIST"},
    SName{"(c) ", "COPYRIGHT"},
    SName{"ANNO", "COMMENT"},
};

} // namespace

std::vector<std::string> AddInfoFields(std::string_view list, STagSet& tags) {
    std::vector<std::string> without;
    for (std::size_t place = 4; place + 8 <= list.size();) {
        const auto name = list.substr(place, 4);
        const auto size = static_cast<std::size_t>(NumberAt(list, place + 4, 4, EByteOrder::LowFirst));
        const auto known = std::ranges::find(InfoNames, name, &SName::chunk);
        if (known != InfoNames.end())
            tags.AddMissing(known->key, ChunkText(list.substr(place + 8, size)));
        else
            without.emplace_back(name);
        place += 8 + size + (size & 1);
    }
    return without;
}

std::string InfoOf(const STagSet& tags, bool& isWhole) {
    std::string list = "INFO";
    auto rest = tags;
    for (const auto& name : InfoNames) {
        const auto several = std::ranges::count(rest.fields, name.key, &STagField::key) > 1;
        isWhole = isWhole && !several;
        const auto text = rest.Take(name.key);
        if (text.empty()) continue;
        list += name.chunk;
        AppendNumber(list, text.size() + 1, 4, EByteOrder::LowFirst);
        list.append(text).push_back('\0');
        if ((list.size() & 1) != 0) list.push_back('\0');
    }
    isWhole = isWhole && rest.fields.empty();
    return list.size() > 4 ? list : std::string();
}

bool AddAiffText(const SChunk& chunk, STagSet& tags) {
    if (const auto known = std::ranges::find(AiffNames, chunk.name, &SName::chunk);
        known != AiffNames.end()) {
        tags.AddMissing(known->key, ChunkText(chunk.bytes));
        return true;
    }
    if (chunk.name != "COMT") return false;
    const std::string_view bytes = chunk.bytes;
    std::size_t place = 2; // after the count of comments, each with a time and a marker
    while (place + 8 <= bytes.size()) {
        const auto size = static_cast<std::size_t>(NumberAt(bytes, place + 6, 2, EByteOrder::HighFirst));
        if (const auto text = ChunkText(bytes.substr(place + 8, size)); !text.empty())
            tags.fields.push_back({"COMMENT", text});
        place += 8 + size + (size & 1);
    }
    return true;
}

} // namespace KAV::Host
