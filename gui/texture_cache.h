#pragma once

#include "gfx/gpu.h"
#include "gfx/texture.h"
#include "gui/pictures.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace KAV::GUI {

/// The textures of pictures. Widgets that show the same picture at the same size and blur share one, which
/// lives until the last of them gives it back. Threads: the window's.
class CTextureCache final {
public:
    using Renderer = std::function<GFX::GPU&()>;

    /// `a_piRenderer` answers with the renderer of the moment. Both live as long as the cache.
    CTextureCache(Renderer a_piRenderer, IPictures& a_piPictures);
    CTextureCache(const CTextureCache&) = delete;
    CTextureCache& operator=(const CTextureCache&) = delete;

    /// A picture by its name, each frame of `a_nW` by `a_nH` pixels (-1: as stored). Made at the first
    /// request; each one that has a texture is to be released. Without a handle: there is no such picture,
    /// and the next request looks again. Throws what making the picture throws, and then nothing is kept.
    GFX::STexture Get(
        const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur);
    /// Gives a texture back and resets the record. One that didn't come from here ends at once.
    void Release(GFX::STexture& a_rsTexture);

    /// The names, with size and blur, of what hasn't been given back. A renderer ends with none.
    std::vector<std::u16string> Held() const;
    /// Ends what hasn't been given back, as the renderer is about to end.
    void Clear();

private:
    GFX::STexture Make(
        const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur) const;

    static constexpr std::size_t FirstBuckets = 8;

    Renderer _piRenderer;
    IPictures& _piPictures;
    std::unordered_map<std::u16string, GFX::STexture> _mTextures{
        FirstBuckets}; // with a handle and uses, or empty
};

} // namespace KAV::GUI
