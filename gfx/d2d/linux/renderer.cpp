#include "gfx/renderer_row.h"

KAV::GFX::SRendererRow KAV::GFX::Direct2DRenderer() noexcept {
    return {u"Direct2D", nullptr, false};
}
