#include "tools/kavhost/play/com_library.h"

#include "platform/winapi/system_library.h"

#include <atomic>
#include <optional>

namespace KAV::Host {

namespace {

std::optional<SCom> Load() noexcept {
    using Platform::FindFunction;
    const HMODULE library = Platform::LoadSystemLibrary(L"ole32.dll");
    SCom com{};
    if (library == nullptr || !FindFunction(library, "CoInitializeEx", com.initialize) ||
        !FindFunction(library, "CoUninitialize", com.uninitialize) ||
        !FindFunction(library, "CoCreateInstance", com.createInstance) ||
        !FindFunction(library, "CoTaskMemFree", com.free))
        return std::nullopt;
    return com;
}

std::atomic<const SCom*> replacement{nullptr};

} // namespace

const SCom* Com() noexcept {
    if (const auto* const other = replacement.load(std::memory_order_acquire)) return other;
    static const std::optional<SCom> com = Load();
    return com ? &*com : nullptr;
}

void UseCom(const SCom* functions) noexcept {
    replacement.store(functions, std::memory_order_release);
}

} // namespace KAV::Host
