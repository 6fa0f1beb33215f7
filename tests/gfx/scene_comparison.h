#pragma once

#include "gfx/transform.h"
#include "tests/gfx/cpu_scenes.h"
#include "tests/support/plain_renderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// How the frame of a back end is compared with that of the plain renderer. Graphics hardware neither softens
/// the edges of a quad nor rounds as software does, so that two rules apply:
///
/// - Quads at their own size and at whole pixels have every pixel within 1 of 255.
/// - Elsewhere the pixels near an edge don't count: those whose centre is at most one pixel away from the
/// edge
///   of a quad or slice. Of the others, 0.5 % may be off by more than 8 of 255.
///
/// Lines have no such edges here: a thin line would have nothing else. Only colours count, not alpha.
namespace KAV::Tests {

inline constexpr int MostAtOwnSize = 1;
inline constexpr int MostElsewhere = 8;
inline constexpr double ShareElsewhere = 0.005;

/// Which pixels of a frame are near an edge: draw the frame with it.
class CEdgeMap final : public GFX::GPU {
public:
    CEdgeMap(std::int32_t width, std::int32_t height)
        : _width(width), _height(height),
          _near(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0) {}

    bool IsNear(std::size_t pixel) const { return _near[pixel] != 0; }

    bool IsReady() const override { return true; }
    void CreateTexture(const Pixels::SBitmap&, GFX::STexture& texture, std::int32_t, std::int32_t) override {
        texture.piGDIP = 1;
    }
    void SetClip(float left, float top, float width, float height) override {
        if (width > 0.0f && height > 0.0f) MarkOutline({left, top, width, height}, nullptr);
    }
    void DrawTexture(const GFX::STexture&, const GFX::SDraw& draw) override {
        const auto flat = GFX::FlatPart(GFX::MatrixOf(draw.sTo, draw.sTransform));
        MarkOutline(draw.sTo, &flat);
    }
    void DrawTexture9(const GFX::STexture&, const GFX::SDraw9& draw) override {
        const auto flat = GFX::FlatPart(GFX::MatrixOf(draw.sTo, draw.sTransform));
        const auto& [left, top, width, height] = draw.sTo;
        const std::array columns{left, left + static_cast<float>(draw.nMrgL),
            left + width - static_cast<float>(draw.nMrgR), left + width};
        const std::array rows{top, top + static_cast<float>(draw.nMrgT),
            top + height - static_cast<float>(draw.nMrgB), top + height};
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                MarkOutline({columns[column], rows[row], columns[column + 1] - columns[column],
                                rows[row + 1] - rows[row]},
                    &flat);
            }
        }
    }

private:
    struct SPlace {
        float x = 0.0f, y = 0.0f;
    };
    void MarkOutline(const GFX::SRect& rect, const GFX::SFlatMatrix* flat) {
        const auto moved = [flat](float x, float y) -> SPlace {
            if (flat == nullptr) return {x, y};
            return {x * flat->m11 + y * flat->m21 + flat->dx, x * flat->m12 + y * flat->m22 + flat->dy};
        };
        const std::array corners{moved(rect.fL, rect.fT), moved(rect.fL + rect.fW, rect.fT),
            moved(rect.fL + rect.fW, rect.fT + rect.fH), moved(rect.fL, rect.fT + rect.fH)};
        for (std::size_t n = 0; n < corners.size(); ++n)
            MarkEdge(corners[n], corners[(n + 1) % corners.size()]);
    }
    void MarkEdge(SPlace from, SPlace to) {
        const auto first = [](float place) { return static_cast<std::int32_t>(std::floor(place)) - 2; };
        const std::int32_t left = std::max(first(std::min(from.x, to.x)), 0);
        const std::int32_t top = std::max(first(std::min(from.y, to.y)), 0);
        const std::int32_t right = std::min(first(std::max(from.x, to.x)) + 5, _width);
        const std::int32_t bottom = std::min(first(std::max(from.y, to.y)) + 5, _height);
        const SPlace along{to.x - from.x, to.y - from.y};
        const float square = along.x * along.x + along.y * along.y;
        for (std::int32_t y = top; y < bottom; ++y) {
            for (std::int32_t x = left; x < right; ++x) {
                const SPlace centre{static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f};
                const float at =
                    square > 0.0f
                        ? std::clamp(((centre.x - from.x) * along.x + (centre.y - from.y) * along.y) / square,
                              0.0f, 1.0f)
                        : 0.0f;
                const float distance =
                    std::hypot(from.x + along.x * at - centre.x, from.y + along.y * at - centre.y);
                if (distance <= 1.0f) _near[static_cast<std::size_t>(y * _width + x)] = 1;
            }
        }
    }

    std::int32_t _width;
    std::int32_t _height;
    std::vector<char> _near;
};

/// By how much a frame differs from the expectation.
struct SFrameDifference {
    int most = 0;          ///< of a channel, of any pixel
    std::size_t pixel = 0; ///< the pixel that differs by that much
    double share = 0.0;    ///< of the pixels that count: those that are off by more than MostElsewhere
};

/// Without edges all pixels count.
inline SFrameDifference CompareFrames(const Frame& actual, const Frame& expected, const CEdgeMap* edges) {
    SFrameDifference difference;
    std::size_t counted = 0;
    std::size_t off = 0;
    for (std::size_t n = 0; n < expected.size(); ++n) {
        int most = 0;
        for (int shift = 0; shift < 24; shift += 8) {
            most = std::max(most, std::abs(static_cast<int>(actual[n] >> shift & 0xFF) -
                                           static_cast<int>(expected[n] >> shift & 0xFF)));
        }
        if (most > difference.most) {
            difference.most = most;
            difference.pixel = n;
        }
        if (edges != nullptr && edges->IsNear(n)) continue;
        ++counted;
        if (most > MostElsewhere) ++off;
    }
    if (counted > 0) difference.share = static_cast<double>(off) / static_cast<double>(counted);
    return difference;
}

/// Red where two frames differ, darker for a larger difference; white elsewhere.
inline Pixels::SBitmap DifferencePicture(
    const Frame& actual, const Frame& expected, std::int32_t width, std::int32_t height) {
    auto picture = Pixels::TransparentBitmap(width, height);
    picture.alpha = Pixels::EAlpha::None;
    for (std::size_t n = 0; n < expected.size(); ++n) {
        int most = 0;
        for (int shift = 0; shift < 24; shift += 8) {
            most = std::max(most, std::abs(static_cast<int>(actual[n] >> shift & 0xFF) -
                                           static_cast<int>(expected[n] >> shift & 0xFF)));
        }
        auto* const pixel = &picture.bytes[4 * n];
        pixel[0] = pixel[1] = static_cast<std::uint8_t>(most == 0 ? 255 : 220 - most * 220 / 255);
        pixel[2] = static_cast<std::uint8_t>(most == 0 ? 255 : 255 - most * 155 / 255);
        pixel[3] = 255;
    }
    return picture;
}

/// A scene for which a back end needs more than ShareElsewhere, or differs from it as it is meant to.
struct SSceneAllowance {
    std::string scene;
    double share = 0.0;
};

/// Draws the scene with a back end and judges it by the rules above.
inline testing::AssertionResult DrawsAsThePlainRenderer(
    GFX::GPU& gpu, const SScene& scene, const std::vector<SSceneAllowance>& allowances = {}) {
    CPlainRenderer plain(SceneWidth, SceneHeight);
    DrawScene(plain, scene);
    CEdgeMap edges(SceneWidth, SceneHeight);
    DrawScene(edges, scene);
    DrawScene(gpu, scene);
    const auto difference = CompareFrames(FrameOf(gpu), FrameOf(plain), scene.isAtOwnSize ? nullptr : &edges);
    const auto place = [&] {
        return "; the largest difference is " + std::to_string(difference.most) + " at (" +
               std::to_string(difference.pixel % SceneWidth) + ", " +
               std::to_string(difference.pixel / SceneWidth) + ")";
    };
    if (scene.isAtOwnSize) {
        if (difference.most <= MostAtOwnSize) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << scene.name << " differs by more than " << MostAtOwnSize << place();
    }
    double most = ShareElsewhere;
    for (const auto& allowance : allowances) {
        if (allowance.scene == scene.name) most = allowance.share;
    }
    if (difference.share <= most) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << scene.name << ": " << 100.0 * difference.share << " % of the pixels, not " << 100.0 * most
           << " %, are off by more than " << MostElsewhere << place();
}

} // namespace KAV::Tests
