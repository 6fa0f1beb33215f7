#pragma once

#include "artwork/colour.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV::Artwork {

/// A picture file in memory: 8 bits of red, green, blue and plain (not multiplied) alpha per pixel, row by
/// row.
struct SPixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;

    const std::uint8_t* At(int x, int y) const {
        return rgba.data() +
               (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
                   4;
    }
    std::uint8_t* At(int x, int y) {
        return rgba.data() +
               (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
                   4;
    }
};

/// A picture being drawn: floats, colour multiplied by alpha, in the screen's encoding, because that is where
/// the plug-in's renderers blend.
class CBitmap final {
public:
    CBitmap() = default;
    CBitmap(int width, int height);
    explicit CBitmap(const SPixels& pixels);

    int Width() const { return _width; }
    int Height() const { return _height; }
    SColour& At(int x, int y) { return _pixels[Index(x, y)]; }
    const SColour& At(int x, int y) const { return _pixels[Index(x, y)]; }

    /// Lays `top` over this, its corner at (x, y); what falls outside is dropped. `modulate` multiplies it.
    void Over(const CBitmap& top, int x = 0, int y = 0, const SColour& modulate = {1, 1, 1, 1});
    /// Replaces a rectangle of this by `part`.
    void Paste(const CBitmap& part, int x, int y);
    /// A copy of a rectangle that lies inside.
    CBitmap Cut(int x, int y, int width, int height) const;
    /// The picture at another size: each new pixel is the mean of the area that it covers, or, when
    /// enlarging, interpolated.
    CBitmap Resized(int width, int height) const;

    /// 8 bits per channel. `grain` adds a fixed noise of this many 255ths to the opaque pixels, equal in all
    /// three colours: it hides the steps of slow gradients and is the texture of the panel's lacquer.
    SPixels Quantised(double grain = 0) const;

private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(_width) + static_cast<std::size_t>(x);
    }

    int _width = 0;
    int _height = 0;
    std::vector<SColour> _pixels;
};

} // namespace KAV::Artwork
