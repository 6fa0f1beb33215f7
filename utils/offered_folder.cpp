#include "utils/offered_folder.h"

#include "platform/whole_file.h"
#include "utils/path.h"

#include <system_error>

namespace KAV::Utils {

COfferedFolder::COfferedFolder(std::u16string_view path) {
    const auto folder = ToSystemPath(path).parent_path();
    std::error_code error;
    for (auto missing = folder; !std::filesystem::exists(missing, error) && !error;
         missing = missing.parent_path())
        _made.push_back(missing);
    Platform::MakeFolders(folder);
}

COfferedFolder::~COfferedFolder() {
    std::error_code error; // a folder that isn't empty is an error, too
    for (const auto& folder : _made) std::filesystem::remove(folder, error);
}

} // namespace KAV::Utils
