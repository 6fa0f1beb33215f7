#include "tools/kavhost/base/scratch_folder.h"

#include "tools/kavhost/base/errors.h"

#include <system_error>

namespace KAV::Host {

std::filesystem::path ScratchFolder() {
    std::error_code error;
    auto folder = std::filesystem::temp_directory_path(error);
    if (error) throw CFailure("there is no folder for temporary files: " + error.message());
    return folder;
}

} // namespace KAV::Host
