#include "gfx/d3d/data.h"
#include "gfx/renderer_row.h"

#include <memory>

KAV::GFX::SRendererRow KAV::GFX::Direct3DRenderer() noexcept {
    const auto create = [](const SRendererTarget& a_sTarget, EReason) -> std::unique_ptr<GPU> {
        return std::make_unique<D3D::DATA>(a_sTarget);
    };
    return {u"Direct3D9", create, true};
}
