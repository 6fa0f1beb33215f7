#include "gfx/renderer_row.h"

KAV::GFX::SRendererRow KAV::GFX::Direct3DRenderer() noexcept {
    return {u"Direct3D9", nullptr, false};
}
