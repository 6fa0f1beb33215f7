#pragma once

#include "gfx/renderers.h"
#include "pixels/bitmap.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace KAV::Tests {

/// What this system's software renderer shows. On Linux it is what the renderer puts into its window, and
/// each time is counted; on Windows there is no window, and it is what the renderer has drawn.
class CKeptPicture final {
public:
    CKeptPicture();
    ~CKeptPicture();
    CKeptPicture(const CKeptPicture&) = delete;
    CKeptPicture& operator=(const CKeptPicture&) = delete;

    /// For the renderer of this object, one renderer at a time.
    void* Handle() noexcept;
    GFX::SRendererRow Renderer() noexcept;
    /// The whole picture of an editor of this size.
    const Pixels::SBitmap& Shown(std::int32_t width, std::int32_t height);

    Pixels::SBitmap picture; ///< transparent where nothing has been put since its size changed
    std::size_t puts = 0;
    std::function<void()> afterPut; ///< where it is seen as the user sees it

private:
    struct STarget;
    std::unique_ptr<STarget> _target;
};

/// The renderers whose whole pictures are comparable with the committed ones, texts included. On Windows the
/// others are compared without texts (direct_panel_test.cpp).
std::vector<std::uint32_t> ComparedRenderers();

} // namespace KAV::Tests
