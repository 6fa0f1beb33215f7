#pragma once

#include "gfx/gpu.h"
#include "pixels/bitmap.h"

#include <array>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace KAV::Tests {

/// A picture with soft edges and all sorts of colours, in a grid of cells that differ.
Pixels::SBitmap SpottedPicture(
    std::int32_t cellWidth, std::int32_t cellHeight, std::int32_t columns = 1, std::int32_t rows = 1);
/// Opaque, with a slow course of colours.
Pixels::SBitmap Backdrop(std::int32_t width, std::int32_t height);

/// A texture with its record, as the cache fills it.
GFX::STexture MakeTexture(
    GFX::GPU& gpu, const Pixels::SBitmap& bitmap, std::int32_t columns = 1, std::int32_t rows = 1);
/// One cell of a texture's grid.
GFX::STexturePart CellOf(const GFX::STexture& texture, std::int32_t column, std::int32_t row);

/// What a scene must have in common with the plain renderer: the largest difference of a channel, and the
/// mean.
struct SCloseness {
    int most = 0;
    double mean = 0.0;
};

struct SScene {
    std::string name;
    SCloseness closeness;
    std::function<void(GFX::GPU& gpu)> draw; ///< after a backdrop
    bool isAtOwnSize = false;                ///< quads only, at their own size and at whole pixels
};

/// For the messages of failed tests.
inline void PrintTo(const SScene& scene, std::ostream* stream) {
    *stream << scene.name;
}

inline constexpr std::int32_t SceneWidth = 160;
inline constexpr std::int32_t SceneHeight = 120;
const std::vector<SScene>& Scenes();
/// A whole frame.
void DrawScene(GFX::GPU& gpu, const SScene& scene);

using Frame = std::vector<std::uint32_t>;
Frame FrameOf(GFX::GPU& gpu, std::int32_t width = SceneWidth, std::int32_t height = SceneHeight);
SCloseness DifferenceOf(const Frame& one, const Frame& other);

} // namespace KAV::Tests
