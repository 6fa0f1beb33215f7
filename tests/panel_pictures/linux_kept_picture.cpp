#include "platform/picture_target.h"
#include "tests/panel_pictures/kept_picture.h"

#include <cstring>

namespace KAV::Tests {

struct CKeptPicture::STarget final : Platform::IPictureTarget {
    explicit STarget(CKeptPicture& owner) : kept(owner) {}

    bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width, std::int32_t height,
        std::span<const Platform::SArea> areas) noexcept override {
        ++kept.puts;
        auto& shown = kept.picture;
        if (shown.width != width || shown.height != height) shown = Pixels::TransparentBitmap(width, height);
        for (const auto& area : areas) {
            for (std::int32_t y = area.top; y < area.top + area.height; ++y) {
                std::memcpy(shown.bytes.data() + static_cast<std::ptrdiff_t>(y) * shown.stride +
                                static_cast<std::ptrdiff_t>(4) * area.left,
                    pixels + static_cast<std::ptrdiff_t>(y) * (stride / 4) + area.left,
                    4 * static_cast<std::size_t>(area.width));
            }
        }
        if (kept.afterPut) kept.afterPut();
        return true;
    }

    CKeptPicture& kept;
};

CKeptPicture::CKeptPicture() : _target(std::make_unique<STarget>(*this)) {}
CKeptPicture::~CKeptPicture() = default;

void* CKeptPicture::Handle() noexcept {
    return static_cast<Platform::IPictureTarget*>(_target.get());
}

GFX::SRendererRow CKeptPicture::Renderer() noexcept {
    return GFX::SoftwareRenderer();
}

const Pixels::SBitmap& CKeptPicture::Shown(std::int32_t, std::int32_t) {
    return picture;
}

std::vector<std::uint32_t> ComparedRenderers() {
#if defined(KAV_SANITIZED) // the driver would take minutes; the scenes of tests/gfx are drawn there, too
    return {GFX::Software};
#else
    return {GFX::Software, GFX::OpenGL};
#endif
}

} // namespace KAV::Tests
