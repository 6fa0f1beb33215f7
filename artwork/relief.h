#pragma once

#include "artwork/bitmap.h"
#include "artwork/material.h"

#include <functional>
#include <vector>

namespace KAV::Artwork {

/// A point of a relief. Without a material there is nothing: the shadow falls through to what is drawn below.
struct SSurface {
    double height = 0; ///< above the panel, in panel pixels
    const SMaterial* material = nullptr;
};

/// A frame of a picture: its pixels, and how many of them make a panel pixel. The two scales differ where the
/// layout stretches the picture.
struct SFrame {
    int width = 0;
    int height = 0;
    double scaleX = 1;
    double scaleY = 1;
};

/// How a relief meets the panel below.
struct SSetting {
    double shadow = 0.55;     ///< darkness of the shadow that falls next to it, 0 none
    double shadowSteep = 1.5; ///< height over length of that shadow
    double occlusion = 0.8;   ///< how much narrow places darken
    double reach = 9;         ///< how far heights are looked for, in panel pixels
    double turnX = 0;         ///< the centre of turned grooves
    double turnY = 0;
};

/// The height and material at a point in panel pixels from the frame's corner.
using Shape = std::function<SSurface(double x, double y)>;

/// Lights a shape from above left: 4 x 4 samples a pixel, in linear light, with shadows and ambient occlusion
/// taken from the heights around. The same light for every picture. Any thread; the result depends only on
/// the arguments.
CBitmap RenderRelief(const SFrame& frame, const Shape& shape, const SSetting& setting);

} // namespace KAV::Artwork
