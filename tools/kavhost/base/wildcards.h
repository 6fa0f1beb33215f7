#pragma once

#include <filesystem>
#include <vector>

namespace KAV::Host {

/// The plain files that a name with the wildcards `*` and `?` stands for, sorted. They may stand in names of
/// folders as well. As in a shell, a name that exists stands for itself, a leading dot must be written, and
/// where nothing fits the name stays as it is. Ignores ASCII case, since the system that needs this does.
std::vector<std::filesystem::path> ExpandWildcards(const std::filesystem::path& name);

} // namespace KAV::Host
