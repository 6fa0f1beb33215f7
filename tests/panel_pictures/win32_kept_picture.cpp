#include "tests/panel_pictures/kept_picture.h"

#include <stdexcept>

namespace KAV::Tests {

namespace {

GFX::GPU* latest = nullptr; // the one of the open editor

std::unique_ptr<GFX::GPU> Create(const GFX::SRendererTarget& target, GFX::EReason reason) {
    auto made = GFX::SoftwareRenderer().pCreate({nullptr, target.nW, target.nH}, reason);
    latest = made.get();
    return made;
}

} // namespace

struct CKeptPicture::STarget {};

CKeptPicture::CKeptPicture() = default;
CKeptPicture::~CKeptPicture() {
    latest = nullptr;
}

void* CKeptPicture::Handle() noexcept {
    return nullptr;
}

GFX::SRendererRow CKeptPicture::Renderer() noexcept {
    auto row = GFX::SoftwareRenderer();
    row.pCreate = &Create;
    return row;
}

const Pixels::SBitmap& CKeptPicture::Shown(std::int32_t width, std::int32_t height) {
    if (latest == nullptr) throw std::logic_error("no renderer");
    picture = Pixels::TransparentBitmap(width, height);
    latest->ReadBack(reinterpret_cast<std::uint32_t*>(picture.bytes.data()), width, height);
    return picture;
}

std::vector<std::uint32_t> ComparedRenderers() {
    return {GFX::Software};
}

} // namespace KAV::Tests
