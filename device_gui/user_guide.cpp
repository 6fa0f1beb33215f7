#include "device_gui/user_guide.h"

#include "patch/patch_files.h"
#include "utils/location.h"
#include "utils/path.h"
#include "utils/product.h"

#include <array>

namespace KAV {

std::u16string FindUserGuide(std::u16string_view a_sLibrary) {
    struct SPlace {
        std::u16string sFolder; // empty: there is no such folder
        std::u16string_view sName;
    };
    const auto beside = a_sLibrary.empty() ? std::u16string() : Utils::GetFolder(a_sLibrary);
    const auto documents = beside.empty() ? beside : beside + u"../../share/doc/" KAV_PACKAGE "/";
    const std::array<SPlace, 3> places{
        {{PatchFolder(), u"" KAV_OWN_GUIDE}, {beside, u"" KAV_GUIDE}, {documents, u"" KAV_GUIDE}}};
    for (const auto& place : places) {
        auto file = place.sFolder + std::u16string(place.sName);
        if (!place.sFolder.empty() && Utils::ExistsUniversal(file)) return file;
    }
    return {};
}

} // namespace KAV
