#pragma once

#include "tools/kavhost/audio/sample_format.h"
#include "tools/kavhost/tags/tag_set.h"

#include <filesystem>
#include <string>

namespace KAV::Host {

/// A library that knows the tags of FLAC, Ogg and MP3 files, and ID3v2. All operations may throw anything.
/// What IsOutdatedByRendering() names is never in the tags that are read.
class ITagLibrary {
public:
    virtual ~ITagLibrary() = default;

    /// Empty for a file of a kind that the library doesn't read. Memory is bounded.
    virtual STagSet ReadFile(const std::filesystem::path& file) const = 0;

    /// An ID3v2 tag. Unless something had to be taken out, the result has the same bytes.
    virtual STagSet ReadId3(const std::string& bytes) const = 0;

    /// `tags.id3` with what it lacks of the fields and pictures.
    virtual std::string MakeId3(const STagSet& tags) const = 0;

    /// Adds fields and pictures to a complete FLAC or Ogg file. False, with the file as it was, if the
    /// library does not understand the file; when it throws, the file is of no use.
    virtual bool WriteComments(
        const std::filesystem::path& file, EContainer container, const STagSet& tags) const = 0;
};

/// The library of this build; null if it has none.
const ITagLibrary* TagLibrary();

} // namespace KAV::Host
