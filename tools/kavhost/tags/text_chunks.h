#pragma once

#include "tools/kavhost/tags/chunk_file.h"
#include "tools/kavhost/tags/tag_set.h"

#include <string>
#include <string_view>
#include <vector>

/// The plain texts of WAV and AIFF files.
namespace KAV::Host {

/// Adds the texts of a chunk "LIST" of the kind "INFO" to tags that don't have them. Returns the names of
/// those that have no counterpart.
std::vector<std::string> AddInfoFields(std::string_view list, STagSet& tags);

/// Such a chunk's bytes with those fields that it has a name for; empty if there are none. Says in `isWhole`
/// whether it holds all there is.
std::string InfoOf(const STagSet& tags, bool& isWhole);

/// Adds the text of an AIFF chunk: "NAME", "AUTH", "(c) ", "ANNO", "COMT". False for other chunks.
bool AddAiffText(const SChunk& chunk, STagSet& tags);

} // namespace KAV::Host
