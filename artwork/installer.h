#pragma once

#include "artwork/bitmap.h"

#include <vector>

namespace KAV::Artwork {

/// What the installer for Windows shows: the icon at each of its sizes, the picture in the head of its pages,
/// and the one beside the first and the last page.
std::vector<SPixels> PaintInstallerIcon();
SPixels PaintInstallerHeader();
SPixels PaintInstallerSide();

} // namespace KAV::Artwork
