#include "platform/clipboard.h"

#include "platform/x11/display_thread.h"
#include "platform/x11/selection.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace KAV::Platform {

namespace {

/// What this process last copied to the clipboard.
class COwnedSelection final {
public:
    void Keep(std::shared_ptr<CSelectionOwner> owner) {
        {
            const std::scoped_lock lock(_mutex);
            _owner.swap(owner);
        }
        if (owner != nullptr) owner->End(); // the previous owner has lost the selection to this one
    }

private:
    std::mutex _mutex;
    std::shared_ptr<CSelectionOwner> _owner; // guarded by the mutex
};

/// Never destroyed: a host may write to the clipboard after the library's static objects are destroyed.
COwnedSelection& Owned() {
    static auto& selection = *new COwnedSelection;
    return selection;
}

} // namespace

SBytes ReadClipboard(const std::string& format) noexcept {
    try {
        auto bytes = AskDisplay<SBytes>(
            [format](const std::string& display) { return ReadSelection(display, format); });
        return bytes ? std::move(*bytes) : SBytes{};
    } catch (...) { // no memory, no thread
        return {};
    }
}

bool WriteClipboard(const std::string& format, const void* data, std::size_t size) noexcept {
    try {
        const auto* const first = static_cast<const char*>(data);
        return AskDisplay<bool>([format, bytes = std::vector<char>(first, first + size)](
                                    const std::string& display) {
            auto owner = CSelectionOwner::Create(display, format, bytes);
            const bool taken = owner != nullptr;
            if (taken) Owned().Keep(std::move(owner));
            return taken;
        }).value_or(false);
    } catch (...) { // no memory, no thread
        return false;
    }
}

} // namespace KAV::Platform
