#pragma once

#include <filesystem>
#include <ostream>

namespace KAV::Host {

class CEffect;
struct SProfile;

/// What an effect reports about itself and its parameters; with full names where `profile`, which may be
/// null, has them.
void PrintInfo(
    std::ostream& out, const std::filesystem::path& file, const CEffect& effect, const SProfile* profile);

/// The same as one JSON object, for programs.
void PrintInfoAsJson(
    std::ostream& out, const std::filesystem::path& file, const CEffect& effect, const SProfile* profile);

} // namespace KAV::Host
