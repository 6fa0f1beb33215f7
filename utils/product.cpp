#include "utils/product.h"

namespace KAV::Utils {

constinit const std::u16string_view ProductVersion = u"" KAV_VERSION;
constinit const std::string_view ProductVersionUtf8 = KAV_VERSION;

} // namespace KAV::Utils
