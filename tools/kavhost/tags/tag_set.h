#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Host {

struct STagField {
    std::string key;   ///< in capitals, as Vorbis comments name it: "TITLE", "ALBUMARTIST"
    std::string value; ///< UTF-8

    bool operator==(const STagField&) const = default;
};

struct STagPicture {
    int type = 0; ///< of ID3v2's APIC and of FLAC: 3 is the front cover
    std::string mime;
    std::string description;
    int width = 0; ///< 0: not stored
    int height = 0;
    int depth = 0;
    int colours = 0;
    std::string bytes;

    bool operator==(const STagPicture&) const = default;
};

/// Text and pictures of a file, whatever its container keeps them in.
struct STagSet {
    std::vector<STagField> fields; ///< a key may occur several times; the order of its values counts
    std::vector<STagPicture> pictures;
    std::string id3;                   ///< the same and more as an ID3v2 tag, if the file has one
    std::vector<std::string> only;     ///< what the ID3v2 tag alone can hold: "PRIV"
    std::vector<std::string> outdated; ///< what has been taken out, since it described the audio as it was

    bool IsEmpty() const noexcept { return fields.empty() && pictures.empty() && id3.empty(); }
    const std::string* Find(std::string_view key) const noexcept; ///< the first value; null if there is none
    void AddMissing(std::string_view key, std::string value);     ///< unless it is empty, or the key exists
    std::string Take(std::string_view key); ///< removes the key; returns its values, joined by "; "
};

/// The value of that key describes loudness or coding of the file that it comes from, and would be wrong in
/// any other. `key` in any case.
bool IsOutdatedByRendering(std::string_view key);

} // namespace KAV::Host
