#pragma once

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

/// Patches and routings that come with the plug-in, in the user's documents, where the plug-in looks for
/// patches and routings. What is there and was not installed, or has been changed since, belongs to the user:
/// it is neither overwritten nor removed.
namespace KAV::Host {

/// What became of one file, or how it is.
enum class EContentFate {
    Installed, ///< new, or again
    Renewed,   ///< had been installed from an older version, and not changed since
    There,     ///< is there with this content already
    Users,     ///< another file of the name is there
    Missing,
    Removed,
    Failed, ///< the system refused
};

struct SContentLine {
    std::string place; ///< UTF-8, relative to the documents folder
    EContentFate fate;
};
using ContentReport = std::vector<SContentLine>;

/// Copies what lies in `content`/Patches and `content`/Routings, and remembers what it has copied. Throws
/// CFailure, with nothing changed, when there is no content or no documents folder, or when what is
/// remembered cannot be read or written.
ContentReport InstallContent(const std::filesystem::path& content, const std::filesystem::path& documents);

/// Removes what was installed and is unchanged, and then the folders that are left empty. Throws CFailure.
ContentReport UninstallContent(const std::filesystem::path& documents);

/// How each file of the content is: There when it was installed, Renewed when an older one is, Users, or
/// Missing. Throws CFailure.
ContentReport ListContent(const std::filesystem::path& content, const std::filesystem::path& documents);

/// Files that stand out, one line each, and how many there are of each kind.
void PrintChanges(std::ostream& out, const ContentReport& report);
/// Every file with its state.
void PrintContent(std::ostream& out, const ContentReport& report);

bool HasFailed(const ContentReport& report) noexcept;

} // namespace KAV::Host
