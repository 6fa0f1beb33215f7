#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Patches and routings by their bare names, such as "Master - Streaming": those of the user, which lie where
/// the plug-in looks for them, and those of the factory, which need not be installed.
namespace KAV::Host {

enum class ENamedContent { Patch, Routing };

/// Where names are looked up. Either may be empty or missing.
struct SContentFolders {
    std::filesystem::path documents; ///< the user's
    std::filesystem::path factory;   ///< with the folders Patches and Routings
};

/// The patch that a new instance begins with. This name is never looked up as another one.
inline constexpr std::string_view DefaultPatchName = "default";

struct SContentName {
    std::string name; ///< UTF-8
    std::filesystem::path file;
    bool isUsers = false;
};

/// Every name that FindContent() knows, once and sorted, with the file that it stands for.
std::vector<SContentName> ContentNames(ENamedContent kind, const SContentFolders& folders);

/// The file that a user means by `wanted`: the file of that name if it exists, otherwise the user's patch or
/// routing of that name, otherwise the factory's. Of an .fxp and a .kvp with one name it is the .fxp, as in
/// the plug-in. What contains a slash is a path and nothing else, and DefaultPatchName is returned as it is.
/// Throws CFailure, with the nearest name if one is similar, when there is nothing of the name.
std::filesystem::path FindContent(
    ENamedContent kind, const std::filesystem::path& wanted, const SContentFolders& folders);

/// `text` as one word for a shell.
std::string ShellWord(std::string_view text);

/// The option that takes the name, as it is written on a command line: `--patch "Master - Streaming"`.
std::string OptionFor(ENamedContent kind, std::string_view name);

} // namespace KAV::Host
