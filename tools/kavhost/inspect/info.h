#pragma once

#include "tools/kavhost/content/named_content.h"
#include "tools/kavhost/setup/setup.h"

#include <filesystem>
#include <ostream>
#include <vector>

namespace KAV::Host {

class CEffect;
struct SProfile;

/// What `info` describes, which must outlive the call.
struct SInfoSubject {
    const std::filesystem::path& file; ///< the library
    const CEffect& effect;
    const SProfile* profile;        ///< full names and ranges; may be null
    std::vector<SNeedAnswer> needs; ///< of its patch
    const SContentFolders* folders; ///< the patches and routings that have names; null if the effect has none
};

/// What an effect reports about itself and its parameters.
void PrintInfo(std::ostream& out, const SInfoSubject& subject);

/// The same as one JSON object, for programs.
void PrintInfoAsJson(std::ostream& out, const SInfoSubject& subject);

} // namespace KAV::Host
