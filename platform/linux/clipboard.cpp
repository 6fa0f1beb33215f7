#include "platform/clipboard.h"

#include "platform/x11/selection.h"

#include <mutex>

namespace KAV::Platform {

namespace {

/// What this process has put there last.
class COwnedSelection final {
public:
    bool Offer(const std::string& format, const void* data, std::size_t size) {
        auto owner = CSelectionOwner::Create(format, data, size);
        if (owner == nullptr) return false;
        const std::scoped_lock lock(_mutex);
        _owner.swap(owner); // the one before has lost the selection to this one, and ends outside the lock
        return true;
    }

private:
    std::mutex _mutex;
    std::unique_ptr<CSelectionOwner> _owner;
};

} // namespace

SBytes ReadClipboard(const std::string& format) noexcept {
    try {
        return ReadSelection(format);
    } catch (...) { // no memory
        return {};
    }
}

bool WriteClipboard(const std::string& format, const void* data, std::size_t size) noexcept {
    try {
        static COwnedSelection selection;
        return selection.Offer(format, data, size);
    } catch (...) { // no memory, no thread
        return false;
    }
}

} // namespace KAV::Platform
