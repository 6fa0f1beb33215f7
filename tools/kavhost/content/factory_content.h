#pragma once

#include "tools/kavhost/content/named_content.h"

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

/// Patches, routings and the user guide that come with the plug-in, in the user's documents, where the
/// plug-in looks for them. Files that were not installed, or have been changed since, belong to the user:
/// they are neither overwritten nor removed.
namespace KAV::Host {

/// The result for one file, or its state.
enum class EContentFate {
    Installed, ///< new, or again
    Renewed,   ///< had been installed from an older version, and not changed since
    There,     ///< already there with this content
    Users,     ///< another file of this name is there
    Missing,
    Removed,
    Failed, ///< the system refused
};

struct SContentLine {
    std::string place; ///< UTF-8, relative to the documents folder
    EContentFate fate;
};
using ContentReport = std::vector<SContentLine>;

/// What can be installed: the files in `folder`/Patches and `folder`/Routings, and the guide, if that exists.
struct SContentSource {
    std::filesystem::path folder;
    std::filesystem::path guide;
};

/// Copies the content, and records what it has copied. Throws CFailure, with nothing changed, if there is no
/// content or no documents folder, or if the record cannot be read or written.
ContentReport InstallContent(const SContentSource& source, const std::filesystem::path& documents);

/// Removes files that were installed and are unchanged, and then folders that are left empty. Throws
/// CFailure.
ContentReport UninstallContent(const std::filesystem::path& documents);

/// The state of each file of the content: There if it was installed, Renewed if an older one is, Users, or
/// Missing. Throws CFailure.
ContentReport ListContent(const SContentSource& source, const std::filesystem::path& documents);

/// Notable files, one line each, and the count of each kind.
void PrintChanges(std::ostream& out, const ContentReport& report);
/// Every file with its state and, where it has one, the option that names it; then the user's further patches
/// and routings.
void PrintContent(std::ostream& out, const ContentReport& report, const SContentFolders& folders);

bool HasFailed(const ContentReport& report) noexcept;

} // namespace KAV::Host
