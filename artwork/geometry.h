#pragma once

#include "panel/rect.h"

namespace KAV::Artwork {

using Panel::SRect;

} // namespace KAV::Artwork
