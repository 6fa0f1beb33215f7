#pragma once

#include "artwork/bitmap.h"

#include <array>

namespace KAV::Artwork {

/// The sides of the icons that desktops ask for, in pixels.
inline constexpr std::array IconSides{16, 24, 32, 48, 64, 128, 256};

/// The icon for menus and file managers: the vendor's mark in a display that is set into a key of the panel.
/// Small ones have the mark alone on the key, with stronger lines.
CBitmap DrawIcon(int side);

} // namespace KAV::Artwork
