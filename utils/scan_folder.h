#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace KAV::Utils {

/// The names of a folder's entries without their extensions, sorted by code units. `filter` is a list of
/// extensions in lower case, separated by ";": a file counts if its own, in lower case, is one of them; a
/// folder counts if "{dir}" is one of them. With an empty filter everything counts. Links count as their
/// targets; links to nothing and names that aren't text are left out. Empty for an empty, missing or
/// unreadable folder. Any thread but the audio thread. Throws only if memory runs out.
std::vector<std::u16string> ScanFolder(std::u16string_view folder, std::u16string_view filter);

} // namespace KAV::Utils
