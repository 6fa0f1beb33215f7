#include "utils/marked_text.h"

namespace KAV::Utils {

std::string_view ExtractTag(
    std::string_view text, std::string_view open, std::string_view mid, std::string_view close) noexcept {
    for (const auto mark : {open, mid}) {
        const auto place = text.find(mark);
        if (place == std::string_view::npos) return {};
        text.remove_prefix(place + mark.size());
    }
    const auto end = text.find(close);
    return end == std::string_view::npos ? std::string_view() : text.substr(0, end);
}

bool CPieces::Next() noexcept {
    if (_ended) return false;
    const auto end = _rest.find(_delimiter);
    _ended = end == std::string_view::npos;
    _piece = _rest.substr(0, end);
    _rest.remove_prefix(_ended ? _rest.size() : end + _delimiter.size());
    return true;
}

} // namespace KAV::Utils
