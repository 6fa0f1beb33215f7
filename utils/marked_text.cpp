#include "utils/marked_text.h"

#include <algorithm>
#include <atomic>

namespace KAV::Utils {

namespace {

std::atomic<std::uint64_t> searchedBytes{0};

} // namespace

std::size_t FindMark(std::string_view text, std::string_view mark) noexcept {
    const auto place = text.find(mark);
    searchedBytes.fetch_add(std::min(place, text.size()), std::memory_order_relaxed);
    return place;
}

std::uint64_t SearchedBytes() noexcept {
    return searchedBytes.load(std::memory_order_relaxed);
}

std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view by) {
    std::string result;
    result.reserve(text.size());
    while (true) {
        const auto place = FindMark(text, what);
        result += text.substr(0, place);
        if (place == std::string_view::npos) return result;
        result += by;
        text.remove_prefix(place + what.size());
    }
}

std::string_view ExtractTag(
    std::string_view text, std::string_view open, std::string_view mid, std::string_view close) noexcept {
    for (const auto mark : {open, mid}) {
        const auto place = FindMark(text, mark);
        if (place == std::string_view::npos) return {};
        text.remove_prefix(place + mark.size());
    }
    const auto end = FindMark(text, close);
    return end == std::string_view::npos ? std::string_view() : text.substr(0, end);
}

bool CPieces::Next() noexcept {
    if (_ended) return false;
    const auto end = FindMark(_rest, _delimiter);
    _ended = end == std::string_view::npos;
    _piece = _rest.substr(0, end);
    _rest.remove_prefix(_ended ? _rest.size() : end + _delimiter.size());
    return true;
}

} // namespace KAV::Utils
