#include "platform/winapi/direct3d_library.h"

#include "platform/winapi/system_library.h"

#include <atomic>
#include <optional>

namespace KAV::Platform {

namespace {

std::optional<SDirect3D> LoadDirect3D() noexcept {
    const HMODULE library = LoadSystemLibrary(L"d3d9.dll");
    if (library == nullptr) return std::nullopt;
    SDirect3D direct3D;
    if (!FindFunction(library, "Direct3DCreate9", direct3D.Direct3DCreate9)) return std::nullopt;
    return direct3D;
}

std::atomic<const SDirect3D*> otherDirect3D{nullptr};

} // namespace

const SDirect3D* Direct3D() noexcept {
    if (const auto* const other = otherDirect3D.load(std::memory_order_acquire)) return other;
    static const std::optional<SDirect3D> direct3D = LoadDirect3D();
    return direct3D ? &*direct3D : nullptr;
}

void UseDirect3D(const SDirect3D* functions) noexcept {
    otherDirect3D.store(functions, std::memory_order_release);
}

} // namespace KAV::Platform
