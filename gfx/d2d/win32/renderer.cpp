#include "gfx/d2d/data.h"
#include "gfx/renderer_row.h"

#include <memory>

KAV::GFX::SRendererRow KAV::GFX::Direct2DRenderer() noexcept {
    const auto create = [](const SRendererTarget& a_sTarget, EReason) -> std::unique_ptr<GPU> {
        return std::make_unique<D2D::DATA>(a_sTarget);
    };
    return {u"Direct2D", create, true};
}
