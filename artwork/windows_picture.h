#pragma once

#include "artwork/bitmap.h"

#include <string>
#include <vector>

namespace KAV::Artwork {

/// The bytes of a .bmp file of 24 bits per pixel; the alpha of the pixels is left out.
std::string BmpOf(const SPixels& picture);

/// The bytes of an .ico file with one picture of each size, uncompressed, 32 bits per pixel.
std::string IcoOf(const std::vector<SPixels>& pictures);

} // namespace KAV::Artwork
