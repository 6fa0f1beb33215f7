#include "utils/post_box.h"

#include <utility>

namespace KAV::Utils {

void CPostBox::Open() {
    const std::lock_guard lock(_mutex);
    _isOpen = true;
}

void CPostBox::Close() {
    const std::lock_guard lock(_mutex);
    _isOpen = false;
    _messages.clear();
}

void CPostBox::Post(std::uint32_t message) {
    const std::lock_guard lock(_mutex);
    if (_isOpen) _messages.push_back(message);
}

std::vector<std::uint32_t> CPostBox::Take() {
    const std::lock_guard lock(_mutex);
    return std::exchange(_messages, {});
}

} // namespace KAV::Utils
