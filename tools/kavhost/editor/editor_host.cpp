#include "tools/kavhost/editor/editor_host.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/effect/effect.h"

namespace KAV::Host {

namespace {

constexpr std::int32_t LargestSide = 0x7FFF; ///< of a window of any system

}

bool CEditorHost::ResizeEditor(std::int32_t width, std::int32_t height) noexcept {
    if (width < 1 || height < 1 || width > LargestSide || height > LargestSide) return false;
    _size = static_cast<std::uint64_t>(width) << 32 | static_cast<std::uint64_t>(height);
    return true;
}

std::optional<CHostWindow::SSize> CEditorHost::TakeSize() noexcept {
    const auto size = _size.exchange(0);
    if (size == 0) return std::nullopt;
    return CHostWindow::SSize{
        static_cast<std::int32_t>(size >> 32), static_cast<std::int32_t>(size & 0xFFFFFFFF)};
}

CHostWindow::SSize EditorSizeOf(CEffect& effect) {
    if (!effect.HasEditor()) throw CFailure(effect.Name() + " has no editor");
    const auto size = effect.EditorSize();
    if (size.width < 1 || size.height < 1) throw CFailure(effect.Name() + " has an editor of no size");
    return {size.width, size.height};
}

} // namespace KAV::Host
