#include "artwork/relief.h"

#include "artwork/studio.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace KAV::Artwork {

namespace {

constexpr int Samples = 4; // along each side of a pixel

/// A grid of heights and materials, one cell per sample, with a margin of one cell for differences.
class CHeightField final {
public:
    CHeightField(const SFrame& frame, const Shape& shape)
        : _width(frame.width * Samples + 2), _height(frame.height * Samples + 2),
          _cells(static_cast<std::size_t>(_width) * static_cast<std::size_t>(_height)) {
        for (int y = 0; y < _height; ++y) {
            for (int x = 0; x < _width; ++x)
                Cell(x, y) =
                    shape((x - 0.5) / (Samples * frame.scaleX), (y - 0.5) / (Samples * frame.scaleY));
        }
    }
    const SSurface& At(int x, int y) const { return _cells[Index(x + 1, y + 1)]; }

private:
    SSurface& Cell(int x, int y) { return _cells[Index(x, y)]; }
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(_width) + static_cast<std::size_t>(x);
    }

    int _width;
    int _height;
    std::vector<SSurface> _cells;
};

/// What each whole pixel sees of the sky and of the lamp, from the heights around it.
struct SExposure {
    float sky = 1;
    float lamp = 1;
};

/// A pixel on an outline is seen twice: its part of the relief from up there, the rest from the ground.
class CExposureMap final {
public:
    CExposureMap(const SFrame& frame, const CHeightField& field, const SSetting& setting)
        : _width(frame.width), _height(frame.height), _frame(frame), _setting(setting),
          _heights(static_cast<std::size_t>(_width) * static_cast<std::size_t>(_height)),
          _tops(_heights.size()), _exposures(_heights.size()), _grounds(_heights.size()) {
        for (int y = 0; y < _height; ++y) {
            for (int x = 0; x < _width; ++x) Measure(field, x, y);
        }
        for (int y = 0; y < _height; ++y) {
            for (int x = 0; x < _width; ++x) {
                const std::size_t i = Index(x, y);
                _exposures[i] = Look(x, y, _tops[i]);
                _grounds[i] = _tops[i] > _heights[i] ? Look(x, y, _heights[i]) : _exposures[i];
            }
        }
    }

    const SExposure& At(int x, int y) const { return _exposures[Index(x, y)]; }
    const SExposure& GroundAt(int x, int y) const { return _grounds[Index(x, y)]; }

    SExposure Between(double x, double y) const {
        const double u = std::clamp(x - 0.5, 0.0, _width - 1.0);
        const double v = std::clamp(y - 0.5, 0.0, _height - 1.0);
        const int x0 = std::min(static_cast<int>(u), std::max(0, _width - 2));
        const int y0 = std::min(static_cast<int>(v), std::max(0, _height - 2));
        const int x1 = std::min(x0 + 1, _width - 1);
        const int y1 = std::min(y0 + 1, _height - 1);
        const auto s = static_cast<float>(u - x0);
        const auto t = static_cast<float>(v - y0);
        const auto mix = [&](float SExposure::*part) {
            return (At(x0, y0).*part * (1 - s) + At(x1, y0).*part * s) * (1 - t) +
                   (At(x0, y1).*part * (1 - s) + At(x1, y1).*part * s) * t;
        };
        return {mix(&SExposure::sky), mix(&SExposure::lamp)};
    }

private:
    static constexpr int Directions = 24;
    static constexpr int Steps = 14;

    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(_width) + static_cast<std::size_t>(x);
    }

    void Measure(const CHeightField& field, int x, int y) {
        double sum = 0;
        double top = 0;
        int covered = 0;
        for (int i = 0; i < Samples * Samples; ++i) {
            const SSurface& point = field.At(x * Samples + i % Samples, y * Samples + i / Samples);
            sum += point.height;
            if (!point.material) continue;
            top += point.height;
            ++covered;
        }
        _heights[Index(x, y)] = static_cast<float>(sum / (Samples * Samples));
        _tops[Index(x, y)] = covered > 0 ? static_cast<float>(top / covered) : _heights[Index(x, y)];
    }

    float HeightBetween(double x, double y) const {
        const int x0 = static_cast<int>(std::floor(x));
        const int y0 = static_cast<int>(std::floor(y));
        const auto s = static_cast<float>(x - x0);
        const auto t = static_cast<float>(y - y0);
        const auto at = [this](int u, int v) {
            return _heights[Index(std::clamp(u, 0, _width - 1), std::clamp(v, 0, _height - 1))];
        };
        return (at(x0, y0) * (1 - s) + at(x0 + 1, y0) * s) * (1 - t) +
               (at(x0, y0 + 1) * (1 - s) + at(x0 + 1, y0 + 1) * s) * t;
    }

    /// The steepest rise towards one direction, as a tangent; 0 when all is lower.
    float Horizon(int x, int y, float here, double dx, double dy) const {
        float steepest = 0;
        for (int i = 1; i <= Steps; ++i) {
            const double part = static_cast<double>(i) / Steps;
            const double away = _setting.reach * part * part + 0.35 * part;
            const float rise =
                HeightBetween(x + dx * away * _frame.scaleX, y + dy * away * _frame.scaleY) - here;
            steepest = std::max(steepest, rise / static_cast<float>(away));
        }
        return steepest;
    }

    SExposure Look(int x, int y, float here) const {
        double sky = 0;
        double lamp = 0;
        double weights = 0;
        for (int i = 0; i < Directions; ++i) {
            const double angle = 2 * Pi * i / Directions;
            const double dx = std::cos(angle);
            const double dy = std::sin(angle);
            const double toLamp = (dx * LampX + dy * LampY) / std::hypot(LampX, LampY);
            const double horizon = static_cast<double>(Horizon(x, y, here, dx, dy));
            sky += 1 - horizon / std::hypot(1.0, horizon);
            if (toLamp < 0.78) continue; // the lamp is a wide, soft panel
            const double weight = toLamp - 0.7;
            lamp += weight * (1 - SmoothStep(0.45, 1.35, horizon / _setting.shadowSteep));
            weights += weight;
        }
        return {static_cast<float>(sky / Directions), static_cast<float>(lamp / weights)};
    }

    int _width;
    int _height;
    const SFrame& _frame;
    const SSetting& _setting;
    std::vector<float> _heights; // means of the pixels
    std::vector<float> _tops;    // of what lies on the relief
    std::vector<SExposure> _exposures;
    std::vector<SExposure> _grounds;
};

SVector Normal(const CHeightField& field, const SFrame& frame, int x, int y) {
    const auto slope = [](double before, double after, double scale) {
        return static_cast<float>((before - after) * scale * Samples / 2);
    };
    const double limit = 2.5; // a wall steeper than this shows less light than noise
    const float nx = slope(field.At(x - 1, y).height, field.At(x + 1, y).height, frame.scaleX);
    const float ny = slope(field.At(x, y - 1).height, field.At(x, y + 1).height, frame.scaleY);
    const auto tame = static_cast<float>(1 / std::max(1.0, std::hypot(nx, ny) / limit));
    return Normalised({nx * tame, ny * tame, 1});
}

SVector GrooveDirection(const SSetting& setting, double x, double y) {
    const double length = std::max(1e-6, std::hypot(x - setting.turnX, y - setting.turnY));
    return {static_cast<float>((x - setting.turnX) / length),
        static_cast<float>((y - setting.turnY) / length), 0};
}

/// What a relief shows in one pixel: the light of its samples, and how many of them lie on it.
SColour ShadePixel(const SFrame& frame, const CHeightField& field, const CExposureMap& exposures,
    const SSetting& setting, int x, int y) {
    constexpr float part = 1.0f / (Samples * Samples);
    SLight sum;
    float cover = 0;
    for (int i = 0; i < Samples * Samples; ++i) {
        const int u = x * Samples + i % Samples;
        const int v = y * Samples + i / Samples;
        const SSurface& point = field.At(u, v);
        if (!point.material) continue;
        const double px = (u + 0.5) / Samples;
        const double py = (v + 0.5) / Samples;
        const auto exposure = exposures.Between(px, py);
        const float sky = 1 - (1 - exposure.sky) * static_cast<float>(setting.occlusion);
        const SVector groove = GrooveDirection(setting, px / frame.scaleX, py / frame.scaleY);
        sum = sum + Shade(*point.material, Normal(field, frame, u, v), groove, sky, exposure.lamp) * part;
        cover += part;
    }
    if (cover <= 0) return {0, 0, 0, 0};
    const SColour colour = Encode(sum * (1 / cover));
    return {colour.r * cover, colour.g * cover, colour.b * cover, cover};
}

/// How dark the panel is beside the relief. It fades out towards the frame's rim, where it would be cut.
float ShadowAt(const SFrame& frame, const SExposure& ground, const SSetting& setting, int x, int y) {
    const double rimX = (std::min(x, frame.width - 1 - x) - 0.5) / frame.scaleX;
    const double rimY = (std::min(y, frame.height - 1 - y) - 0.5) / frame.scaleY;
    const double keep = SmoothStep(0, 2, rimX) * SmoothStep(0, 2, rimY);
    const auto seen = static_cast<double>(ground.lamp * (0.35f + 0.65f * ground.sky));
    return static_cast<float>(std::clamp(setting.shadow * (1 - seen) * keep, 0.0, 1.0));
}

} // namespace

CBitmap RenderRelief(const SFrame& frame, const Shape& shape, const SSetting& setting) {
    const CHeightField field(frame, shape);
    const CExposureMap exposures(frame, field, setting);
    CBitmap bitmap(frame.width, frame.height);
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            SColour pixel = ShadePixel(frame, field, exposures, setting, x, y);
            pixel.a += ShadowAt(frame, exposures.GroundAt(x, y), setting, x, y) * (1 - pixel.a);
            bitmap.At(x, y) = pixel;
        }
    }
    return bitmap;
}

} // namespace KAV::Artwork
