#include "gui/texture_cache.h"

#include "gfx/texture_check.h"
#include "pixels/image_name.h"

#include <algorithm>
#include <utility>

namespace KAV::GUI {

CTextureCache::CTextureCache(Renderer a_piRenderer, IPictures& a_piPictures)
    : _piRenderer(std::move(a_piRenderer)), _piPictures(a_piPictures) {}

GFX::STexture CTextureCache::Get(
    const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur) {
    GFX::STexture& texture = _mTextures[Pixels::WithMark(a_sName, {a_nW, a_nH, a_nBlur})];
    if (texture.piGDIP == 0) texture = Make(a_sName, a_nW, a_nH, a_nBlur);
    if (texture.piGDIP == 0) return GFX::FreedTexture();
    ++texture.nUses;
    return texture;
}

GFX::STexture CTextureCache::Make(
    const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur) const {
    GFX::STexture texture;
    const auto bitmap = _piPictures.LoadImage(a_sName, a_nW, a_nH, a_nBlur);
    if (bitmap == nullptr || bitmap->width == 0 || bitmap->height == 0) return texture;
    GFX::GPU& gpu = _piRenderer();
    texture.nW = bitmap->width;
    texture.nH = bitmap->height;
    const bool anySize = gpu.AnySizeTextures();
    const std::int32_t width = GFX::TextureSide(texture.nW, anySize);
    const std::int32_t height = GFX::TextureSide(texture.nH, anySize);
    texture.fU = static_cast<float>(texture.nW) / static_cast<float>(width);
    texture.fV = static_cast<float>(texture.nH) / static_cast<float>(height);
    GFX::CheckTexture(a_sName, width, height, gpu);
    gpu.CreateTexture(*bitmap, texture, width, height);
    const auto grid = Pixels::GridOf(a_sName);
    texture.nFrames = grid.frames;
    texture.nColumns = grid.columns;
    texture.nRows = grid.rows;
    return texture;
}

void CTextureCache::Release(GFX::STexture& a_rsTexture) {
    if (a_rsTexture.piGDIP != 0) {
        const auto found = std::find_if(_mTextures.begin(), _mTextures.end(),
            [&](const auto& a_sEntry) { return a_sEntry.second.piGDIP == a_rsTexture.piGDIP; });
        const bool last = found == _mTextures.end() || --found->second.nUses == 0;
        if (last && found != _mTextures.end()) _mTextures.erase(found);
        if (last) _piRenderer().FreeTexture(a_rsTexture);
    }
    a_rsTexture = GFX::FreedTexture();
}

std::vector<std::u16string> CTextureCache::Held() const {
    std::vector<std::u16string> names;
    for (const auto& [name, texture] : _mTextures) {
        if (texture.piGDIP != 0) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void CTextureCache::Clear() {
    for (auto& [name, texture] : _mTextures) {
        if (texture.piGDIP != 0) _piRenderer().FreeTexture(texture);
    }
    _mTextures.clear();
}

} // namespace KAV::GUI
