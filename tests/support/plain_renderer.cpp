#include "tests/support/plain_renderer.h"

#include <algorithm>
#include <cmath>

namespace KAV::Tests {

namespace {

int Channel(std::uint32_t colour, int shift) {
    return static_cast<int>(colour >> shift & 0xFF);
}

double Rounded8(double value) {
    return std::floor(std::clamp(value, 0.0, 255.0) + 0.5);
}

/// Catmull and Rom's cubic.
double Kernel(double x) {
    x = std::abs(x);
    if (x < 1.0) return 1.5 * x * x * x - 2.5 * x * x + 1.0;
    if (x < 2.0) return -0.5 * x * x * x + 2.5 * x * x - 4.0 * x + 2.0;
    return 0.0;
}

/// What each pixel of a row of `from` contributes to pixel `at` of one of `to`.
std::vector<double> Weights(int at, int from, int to) {
    const double factor = std::max(static_cast<double>(from) / to, 1.0);
    const double centre = (at + 0.5) * from / to - 0.5;
    std::vector<double> weights(static_cast<std::size_t>(from));
    double sum = 0.0;
    const int reach = static_cast<int>(std::ceil(2.0 * factor)) + 1;
    for (int i = static_cast<int>(std::floor(centre)) - reach; i <= centre + reach; ++i) {
        const double weight = Kernel((i - centre) / factor);
        weights[static_cast<std::size_t>(std::clamp(i, 0, from - 1))] += weight;
        sum += weight;
    }
    for (auto& weight : weights) weight /= sum;
    return weights;
}

double Whole(double place) {
    return std::abs(place - std::round(place)) < 0.001 ? std::round(place) : place;
}

/// Of an interval, the share that lies within half a pixel of a place.
double Overlap(double place, double length) {
    return std::clamp(std::min(place + 0.5, length) - std::max(place - 0.5, 0.0), 0.0, 1.0);
}

/// The share of a pixel in one direction: soft at an edge, unless another slice goes on there.
double Across(double place, double length, double scale, bool meetsBefore, bool meetsAfter) {
    if (meetsBefore && place < 0.0) return 0.0;
    if (meetsAfter && place >= length) return 0.0;
    const double from = meetsBefore ? -1e6 : 0.0;
    const double to = (meetsAfter ? 1e6 : length) - from;
    return Overlap((place - from) * scale, to * scale);
}

} // namespace

CPlainRenderer::CPlainRenderer(std::int32_t width, std::int32_t height)
    : _width(width), _height(height),
      _frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
      _clip{0.0, 0.0, static_cast<double>(width), static_cast<double>(height)} {}

void CPlainRenderer::Clear() {
    std::fill(_frame.begin(), _frame.end(), std::array{0, 0, 0});
}

void CPlainRenderer::SetLineColor(float red, float green, float blue, float alpha) {
    const auto byte = [](float value) { return static_cast<std::uint32_t>(value * 255.0f); };
    _lineColour = byte(alpha) << 24 | byte(red) << 16 | byte(green) << 8 | byte(blue);
}

void CPlainRenderer::SetClip(float left, float top, float width, float height) {
    _clip = {0.0, 0.0, static_cast<double>(_width), static_cast<double>(_height)};
    if (width == 0.0f || height == 0.0f) return;
    _clip = {static_cast<double>(left), static_cast<double>(top), static_cast<double>(left + width),
        static_cast<double>(top + height)};
}

bool CPlainRenderer::IsClipped(std::int32_t x, std::int32_t y) const {
    return x + 0.5 < _clip[0] || y + 0.5 < _clip[1] || x + 0.5 >= _clip[2] || y + 0.5 >= _clip[3];
}

void CPlainRenderer::CreateTexture(
    const Pixels::SBitmap& bitmap, GFX::STexture& texture, std::int32_t, std::int32_t) {
    SPicture picture{bitmap.width, bitmap.height, {}};
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        for (std::int32_t x = 0; x < bitmap.width; ++x) {
            const auto* pixel = &bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x)];
            const int alpha = bitmap.alpha == Pixels::EAlpha::None ? 255 : pixel[3];
            Colour colour{};
            for (std::size_t c = 0; c < 3; ++c) {
                const int value = pixel[2 - c];
                colour[c] = bitmap.alpha == Pixels::EAlpha::Straight ? (value * alpha + 127) / 255 : value;
            }
            colour[3] = alpha;
            picture.pixels.push_back(colour);
        }
    }
    texture.piGDIP = ++_lastHandle;
    _pictures[_lastHandle] = std::move(picture);
}

void CPlainRenderer::FreeTexture(GFX::STexture& texture) {
    _pictures.erase(texture.piGDIP);
    texture = GFX::FreedTexture();
}

void CPlainRenderer::ReadBack(std::uint32_t* bits, std::int32_t width, std::int32_t height) {
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x, ++bits) {
            *bits = 0xFF000000;
            if (x >= _width || y >= _height) continue;
            const auto& pixel = _frame[static_cast<std::size_t>(y * _width + x)];
            for (std::size_t c = 0; c < 3; ++c) *bits |= static_cast<std::uint32_t>(pixel[c]) << (16 - 8 * c);
        }
    }
}

void CPlainRenderer::Lay(std::int32_t x, std::int32_t y, const Colour& colour, double share) {
    if (IsClipped(x, y)) return;
    auto& pixel = _frame[static_cast<std::size_t>(y * _width + x)];
    for (std::size_t c = 0; c < 3; ++c) {
        const double laid = colour[c] * share + pixel[c] * (1.0 - colour[3] * share / 255.0);
        pixel[c] = static_cast<int>(Rounded8(laid));
    }
}

CPlainRenderer::SPicture CPlainRenderer::CellScaled(const SPicture& picture, std::int32_t left,
    std::int32_t top, std::int32_t cellWidth, std::int32_t cellHeight, std::int32_t width,
    std::int32_t height) {
    SPicture scaled{width, height, {}};
    std::vector<std::vector<double>> columns;
    for (std::int32_t x = 0; x < width; ++x) columns.push_back(Weights(x, cellWidth, width));
    for (std::int32_t y = 0; y < height; ++y) {
        const auto down = Weights(y, cellHeight, height);
        for (std::int32_t x = 0; x < width; ++x) {
            const auto& across = columns[static_cast<std::size_t>(x)];
            Colour sum{};
            for (std::int32_t j = 0; j < cellHeight; ++j) {
                if (down[static_cast<std::size_t>(j)] == 0.0) continue;
                for (std::int32_t i = 0; i < cellWidth; ++i) {
                    const double weight =
                        down[static_cast<std::size_t>(j)] * across[static_cast<std::size_t>(i)];
                    if (weight == 0.0) continue;
                    for (std::size_t c = 0; c < 4; ++c) sum[c] += picture.At(left + i, top + j)[c] * weight;
                }
            }
            sum[3] = Rounded8(sum[3]);
            for (std::size_t c = 0; c < 3; ++c) sum[c] = std::min(Rounded8(sum[c]), sum[3]);
            scaled.pixels.push_back(sum);
        }
    }
    return scaled;
}

CPlainRenderer::SVector CPlainRenderer::Moved(
    SVector point, const GFX::STransform& transform, SVector centre) {
    const auto turn = [](double& one, double& other, double degrees) {
        const double angle = degrees * 3.14159265358979323846 / 180.0;
        const double before = one;
        one = before * std::cos(angle) - other * std::sin(angle);
        other = before * std::sin(angle) + other * std::cos(angle);
    };
    double x = point.x - centre.x + static_cast<double>(transform.fMX);
    double y = point.y - centre.y + static_cast<double>(transform.fMY);
    double z = static_cast<double>(transform.fMZ);
    turn(x, y, static_cast<double>(transform.fRZ));
    turn(z, x, static_cast<double>(transform.fRY));
    turn(y, z, static_cast<double>(transform.fRX));
    return {
        x * static_cast<double>(transform.fSX) + centre.x, y * static_cast<double>(transform.fSY) + centre.y};
}

void CPlainRenderer::DrawTexture(const GFX::STexture& texture, const GFX::SDraw& draw) {
    const double width = texture.nW;
    const double height = texture.nH;
    const auto& to = draw.sTo;
    DrawQuad(texture,
        {to, static_cast<double>(draw.sFrom.fU1) * width, static_cast<double>(draw.sFrom.fV1) * height,
            static_cast<double>(draw.sFrom.fU2) * width, static_cast<double>(draw.sFrom.fV2) * height,
            draw.nColor, draw.sTransform,
            {static_cast<double>(to.fL) + std::round(static_cast<double>(to.fW) / 2.0),
                static_cast<double>(to.fT) + std::round(static_cast<double>(to.fH) / 2.0)}});
}

void CPlainRenderer::DrawTexture9(const GFX::STexture& texture, const GFX::SDraw9& draw) {
    const auto& to = draw.sTo;
    const SVector centre{static_cast<double>(to.fL) + std::round(static_cast<double>(to.fW) / 2.0),
        static_cast<double>(to.fT) + std::round(static_cast<double>(to.fH) / 2.0)};
    struct SSlice {
        float to, toLength;
        double from, fromLength;
    };
    const auto slices = [](float start, float length, std::int32_t before, std::int32_t after,
                            std::int32_t picture) {
        const auto b = static_cast<float>(before);
        const auto a = static_cast<float>(after);
        return std::array{SSlice{start, b, 0.0, static_cast<double>(before)},
            SSlice{start + b, length - b - a, static_cast<double>(before),
                static_cast<double>(picture - before - after)},
            SSlice{start + length - a, a, static_cast<double>(picture - after), static_cast<double>(after)}};
    };
    const auto rows = slices(to.fT, to.fH, draw.nMrgT, draw.nMrgB, texture.nH);
    const auto columns = slices(to.fL, to.fW, draw.nMrgL, draw.nMrgR, texture.nW);
    const auto exists = [](const SSlice& slice) { return slice.toLength > 0.0f && slice.fromLength > 0.0; };
    for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t i = 0; i < 3; ++i) {
            const auto& row = rows[j];
            const auto& column = columns[i];
            DrawQuad(texture, {{column.to, row.to, column.toLength, row.toLength}, column.from, row.from,
                                  column.from + column.fromLength, row.from + row.fromLength, draw.nColor,
                                  draw.sTransform, centre,
                                  {i > 0 && exists(columns[i - 1]), j > 0 && exists(rows[j - 1]),
                                      i < 2 && exists(columns[i + 1]), j < 2 && exists(rows[j + 1])}});
        }
    }
}

void CPlainRenderer::DrawQuad(const GFX::STexture& texture, const SQuad& quad) {
    if (quad.colour >> 24 == 0) return;
    const double width = Whole(static_cast<double>(quad.to.fW));
    const double height = Whole(static_cast<double>(quad.to.fH));
    double left = Whole(quad.left);
    double top = Whole(quad.top);
    double right = Whole(quad.right);
    double bottom = Whole(quad.bottom);
    if (width <= 0.0 || height <= 0.0 || right <= left || bottom <= top) return;
    const SPicture* picture = &_pictures.at(texture.piGDIP);
    const bool repeats = left < 0.0 || top < 0.0 || right > picture->width || bottom > picture->height;
    const double cellWidth = static_cast<double>(picture->width) / texture.nColumns;
    const double cellHeight = static_cast<double>(picture->height) / texture.nRows;
    const auto starts = [](double place, double cell) {
        return std::abs(Whole(place / cell) * cell - place) < 0.01 &&
               std::abs(std::round(place / cell) - place / cell) < 0.01;
    };
    SPicture scaled;
    if (!repeats && std::abs(right - left - cellWidth) < 0.01 && std::abs(bottom - top - cellHeight) < 0.01 &&
        starts(left, cellWidth) && starts(top, cellHeight)) {
        const auto wholeWidth = std::max(static_cast<int>(std::lround(width)), 1);
        const auto wholeHeight = std::max(static_cast<int>(std::lround(height)), 1);
        const auto fromWidth = static_cast<int>(std::lround(cellWidth));
        const auto fromHeight = static_cast<int>(std::lround(cellHeight));
        scaled = CellScaled(*picture, static_cast<int>(std::lround(left)), static_cast<int>(std::lround(top)),
            fromWidth, fromHeight, wholeWidth, wholeHeight);
        picture = &scaled;
        left = top = 0.0;
        right = wholeWidth;
        bottom = wholeHeight;
    }
    // The place in the quad of a pixel's centre, from where the transform takes three points of the quad.
    const SVector start{Whole(static_cast<double>(quad.to.fL)), Whole(static_cast<double>(quad.to.fT))};
    const auto moved = [&](double x, double y) {
        return Moved({start.x + x, start.y + y}, quad.transform, quad.centre);
    };
    const SVector origin = moved(0.0, 0.0);
    const SVector x1 = moved(1.0, 0.0);
    const SVector y1 = moved(0.0, 1.0);
    const SVector ex{x1.x - origin.x, x1.y - origin.y};
    const SVector ey{y1.x - origin.x, y1.y - origin.y};
    const double area = ex.x * ey.y - ex.y * ey.x;
    if (std::abs(area) < 1e-6) return;
    const double lengthX = std::hypot(ex.x, ex.y);
    const double lengthY = std::hypot(ey.x, ey.y);
    // Across its edges a quad is as wide as its area divided by the length of the edge.
    const double acrossX = std::abs(area) / lengthY;
    const double acrossY = std::abs(area) / lengthX;
    Colour tint{};
    const double alpha = Channel(quad.colour, 24) / 255.0;
    for (std::size_t c = 0; c < 3; ++c)
        tint[c] = Channel(quad.colour, 16 - 8 * static_cast<int>(c)) / 255.0 * alpha;
    tint[3] = alpha;
    const auto inside = [&](double at, double first, double end, int length) {
        if (repeats) return ((static_cast<int>(at) % length) + length) % length;
        return static_cast<int>(std::clamp(at, std::max(std::floor(first), 0.0),
            std::max(std::min(std::ceil(end), static_cast<double>(length)) - 1.0, 0.0)));
    };
    for (std::int32_t y = 0; y < _height; ++y) {
        for (std::int32_t x = 0; x < _width; ++x) {
            const SVector p{x + 0.5 - origin.x, y + 0.5 - origin.y};
            // Without what rounding has left of the sines of whole quarters.
            const double u = Whole((p.x * ey.y - p.y * ey.x) / area * 2048.0) / 2048.0;
            const double v = Whole((p.y * ex.x - p.x * ex.y) / area * 2048.0) / 2048.0;
            const double share = Across(u, width, acrossX, quad.meets[0], quad.meets[2]) *
                                 Across(v, height, acrossY, quad.meets[1], quad.meets[3]);
            if (share <= 0.0) continue;
            const double sx = left + u / width * (right - left) - 0.5;
            const double sy = top + v / height * (bottom - top) - 0.5;
            const double fx = sx - std::floor(sx);
            const double fy = sy - std::floor(sy);
            Colour sample{};
            for (const int j : {0, 1}) {
                for (const int i : {0, 1}) {
                    const auto& pixel = picture->At(inside(std::floor(sx) + i, left, right, picture->width),
                        inside(std::floor(sy) + j, top, bottom, picture->height));
                    const double weight = (i == 1 ? fx : 1.0 - fx) * (j == 1 ? fy : 1.0 - fy);
                    for (std::size_t c = 0; c < 4; ++c) sample[c] += pixel[c] * weight;
                }
            }
            for (std::size_t c = 0; c < 4; ++c) sample[c] = sample[c] * tint[c];
            Lay(x, y, sample, share);
        }
    }
}

void CPlainRenderer::DrawLines(std::int32_t count, const GFX::SPoint* points, bool perVertex, bool strip) {
    std::vector<GFX::SPoint> path(points, points + count);
    if (strip) {
        DrawPath(path, perVertex);
        return;
    }
    for (std::size_t i = 0; i + 1 < path.size(); i += 2) DrawPath({path[i], path[i + 1]}, perVertex);
}

/// The share of a pixel that lies in any of the shapes, from many lines across it; or whether its centre
/// does.
double CPlainRenderer::Share(const std::vector<Shape>& shapes, std::int32_t x, std::int32_t y) const {
    constexpr int fine = 64;
    const int lines = _lineSmooth ? fine : 1;
    std::vector<const Shape*> near;
    for (const auto& shape : shapes) {
        const auto [left, right] = std::minmax_element(shape.begin(), shape.end(),
            [](const SVector& one, const SVector& other) { return one.x < other.x; });
        const auto [top, bottom] = std::minmax_element(shape.begin(), shape.end(),
            [](const SVector& one, const SVector& other) { return one.y < other.y; });
        if (left->x < x + 1.0 && right->x > x && top->y < y + 1.0 && bottom->y > y) near.push_back(&shape);
    }
    if (near.empty()) return 0.0;
    double sum = 0.0;
    for (int line = 0; line < lines; ++line) {
        // A centre just on an edge belongs to the shape on its left, or above.
        const double at = _lineSmooth ? y + (line + 0.5) / lines : y + 0.5 - 1e-7;
        std::vector<std::array<double, 2>> runs;
        for (const auto* const nearShape : near) {
            const auto& shape = *nearShape;
            std::vector<double> cuts;
            for (std::size_t i = 0; i < shape.size(); ++i) {
                const auto& one = shape[i];
                const auto& next = shape[(i + 1) % shape.size()];
                if ((one.y <= at) == (next.y <= at)) continue;
                cuts.push_back(one.x + (next.x - one.x) * (at - one.y) / (next.y - one.y));
            }
            if (cuts.size() < 2) continue;
            const auto [first, last] = std::minmax_element(cuts.begin(), cuts.end());
            if (!_lineSmooth) {
                const double centre = x + 0.5 - 1e-7;
                if (*first < centre && centre < *last) return 1.0;
                continue;
            }
            const double from = std::clamp(*first, static_cast<double>(x), x + 1.0);
            const double to = std::clamp(*last, static_cast<double>(x), x + 1.0);
            if (to > from) runs.push_back({from, to});
        }
        std::sort(runs.begin(), runs.end());
        double end = x;
        for (const auto& run : runs) {
            sum += std::max(run[1] - std::max(run[0], end), 0.0);
            end = std::max(end, run[1]);
        }
    }
    return sum / lines;
}

void CPlainRenderer::DrawPath(const std::vector<GFX::SPoint>& points, bool perVertex) {
    struct SNode {
        SVector at;
        std::uint32_t colour;
    };
    std::vector<SNode> nodes;
    for (const auto& point : points) {
        // Moved by -0.5 into coordinates in which whole numbers are centres, so not at all in these.
        const SVector at{static_cast<double>(point.fX), static_cast<double>(point.fY)};
        if (!nodes.empty() && nodes.back().at.x == at.x && nodes.back().at.y == at.y) continue;
        nodes.push_back({at, perVertex ? point.nColor : _lineColour});
    }
    if (nodes.size() < 2) return;
    const double half = (_lineSmooth ? _lineWidth : std::max(_lineWidth, 1.0)) / 2.0;
    std::vector<Shape> shapes;
    const auto unit = [&](std::size_t i) {
        const SVector to{nodes[i + 1].at.x - nodes[i].at.x, nodes[i + 1].at.y - nodes[i].at.y};
        const double length = std::hypot(to.x, to.y);
        return SVector{to.x / length, to.y / length};
    };
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const auto u = unit(i);
        const auto& a = nodes[i].at;
        const auto& b = nodes[i + 1].at;
        shapes.push_back({{a.x - u.y * half, a.y + u.x * half}, {b.x - u.y * half, b.y + u.x * half},
            {b.x + u.y * half, b.y - u.x * half}, {a.x + u.y * half, a.y - u.x * half}});
        if (i == 0) continue;
        // The corner on the outer side: the point, both flat ends, and the tip where the outer edges meet.
        const auto before = unit(i - 1);
        const double side = before.x * u.y - before.y * u.x > 0.0 ? -half : half;
        const SVector one{a.x - before.y * side, a.y + before.x * side};
        const SVector other{a.x - u.y * side, a.y + u.x * side};
        const double turn = std::atan2(before.x * u.y - before.y * u.x, before.x * u.x + before.y * u.y);
        const double mitre = 1.0 / std::cos(turn / 2.0); // in halves of the width
        if (mitre > 10.0 || mitre < 0.0) {
            shapes.push_back({a, one, other});
            continue;
        }
        const SVector middle{(one.x + other.x) / 2.0 - a.x, (one.y + other.y) / 2.0 - a.y};
        const double length = std::hypot(middle.x, middle.y);
        if (length < 1e-9) continue;
        shapes.push_back({a, one,
            {a.x + middle.x / length * half * mitre, a.y + middle.y / length * half * mitre}, other});
    }
    for (std::int32_t y = 0; y < _height; ++y) {
        for (std::int32_t x = 0; x < _width; ++x) {
            const double share = Share(shapes, x, y);
            if (share <= 0.0) continue;
            // The colour of the nearest segment there.
            double nearest = 1e30;
            Colour colour{};
            for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
                const auto& a = nodes[i].at;
                const auto& b = nodes[i + 1].at;
                const SVector to{b.x - a.x, b.y - a.y};
                const double along = std::clamp(
                    ((x + 0.5 - a.x) * to.x + (y + 0.5 - a.y) * to.y) / (to.x * to.x + to.y * to.y), 0.0,
                    1.0);
                const double distance =
                    std::hypot(a.x + to.x * along - x - 0.5, a.y + to.y * along - y - 0.5);
                if (distance >= nearest) continue;
                nearest = distance;
                const auto blend = [&](int shift) {
                    return Channel(nodes[i].colour, shift) * (1.0 - along) +
                           Channel(nodes[i + 1].colour, shift) * along;
                };
                colour[3] = blend(24);
                for (std::size_t c = 0; c < 3; ++c)
                    colour[c] = blend(16 - 8 * static_cast<int>(c)) * colour[3] / 255.0;
            }
            Lay(x, y, colour, share);
        }
    }
}

} // namespace KAV::Tests
