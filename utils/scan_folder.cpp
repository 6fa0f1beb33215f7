#include "utils/scan_folder.h"

#include "platform/directory.h"
#include "utils/path.h"
#include "utils/text.h"

#include <algorithm>

namespace KAV::Utils {

std::vector<std::u16string> ScanFolder(std::u16string_view folder, std::u16string_view filter) {
    std::vector<std::u16string> names;
    if (folder.empty()) return names;
    const auto path = ToSystemPath(NormalizePath(std::u16string(folder) + u'/'));
    if (path.empty()) return names;
    const auto wanted = Split(filter, u";");
    const auto isWanted = [&](std::u16string_view kind) {
        return wanted.empty() || std::find(wanted.begin(), wanted.end(), kind) != wanted.end();
    };
    const bool wantsFolders = isWanted(u"{dir}");
    for (const auto& entry : Platform::ListDirectory(path)) {
        const auto name = ToUtf16(entry.name);
        if (entry.isFolder ? wantsFolders : isWanted(GetExtension(name)))
            names.push_back(StripExtension(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace KAV::Utils
