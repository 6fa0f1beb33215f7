#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Routings as files of the user, and the layouts that old patches refer to by number. Threads: any but the
/// audio thread.
namespace KAV {

/// The folder of routings, with a slash at the end; empty if the system has no folder for documents. It need
/// not exist.
std::u16string RoutingFolder();

/// The names of all routings, sorted by code units, followed by "Not found".
std::vector<std::u16string> RoutingNames();

/// The document of that name, with that name inside as well. Empty if it can't be read. "Not found" returns
/// the document of a new instance if there is no such file.
std::string ReadRoutingFile(std::u16string_view name);

/// How many entries the document's map has.
std::size_t RoutingEntryCount(std::string_view document) noexcept;

/// The layouts of old patches, each file read once. Threads: one at a time.
class CLegacyRoutings final {
public:
    /// The routing block of group `group` for layout `index`; empty if there is no such layout or its file is
    /// missing.
    std::string Block(float index, int group);

private:
    std::map<int, std::string> _documents; // empty: missing
};

} // namespace KAV
