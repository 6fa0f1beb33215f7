#include "platform/file_system.h"

#include <atomic>

namespace KAV::Platform {

namespace {

std::atomic<IFileSystem*> replacement{nullptr};

} // namespace

IFileSystem& Files() noexcept {
    IFileSystem* const files = replacement.load(std::memory_order_acquire);
    return files != nullptr ? *files : SystemFiles();
}

void UseFiles(IFileSystem* files) noexcept {
    replacement.store(files, std::memory_order_release);
}

} // namespace KAV::Platform
