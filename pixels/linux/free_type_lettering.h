#pragma once

#include "pixels/lettering.h"
#include "pixels/linux/glyph_search.h"
#include "platform/freetype/freetype_library.h"

#include <memory>

namespace KAV::Pixels {

/// The lettering with another library and another search than the process's; both live longer. Null as for
/// CLettering::Create().
std::unique_ptr<CLettering> MakeLettering(const Platform::SFreeType& freeType, CGlyphSearch& search);

} // namespace KAV::Pixels
