#include "artwork/sunk.h"

#include "artwork/palette.h"
#include "artwork/shapes.h"

namespace KAV::Artwork {

CBitmap RenderSunk(const SFrame& frame, const SSunk& sunk) {
    const auto shape = [&sunk](double x, double y) -> SSurface {
        const double edge = RoundBoxDistance(sunk.rect, sunk.radius, x, y);
        if (edge >= sunk.bevel) return {};
        if (edge >= 0) return {-sunk.depth * (1 - edge / sunk.bevel), &Body};
        return {-sunk.depth, sunk.ground};
    };
    return RenderRelief(frame, shape, {.shadow = 0, .shadowSteep = 0.9, .occlusion = 0.8, .reach = 6});
}

void CarveSunk(CBitmap& bitmap, const SFrame& frame, const SSunk& sunk) {
    constexpr double margin = 3;
    const int left = static_cast<int>(std::floor((sunk.rect.x - margin) * frame.scaleX));
    const int top = static_cast<int>(std::floor((sunk.rect.y - margin) * frame.scaleY));
    const int right = static_cast<int>(std::ceil((sunk.rect.Right() + margin) * frame.scaleX));
    const int bottom = static_cast<int>(std::ceil((sunk.rect.Bottom() + margin) * frame.scaleY));
    SSunk moved = sunk;
    moved.rect = sunk.rect.Moved(-left / frame.scaleX, -top / frame.scaleY);
    bitmap.Over(RenderSunk({right - left, bottom - top, frame.scaleX, frame.scaleY}, moved), left, top);
}

} // namespace KAV::Artwork
