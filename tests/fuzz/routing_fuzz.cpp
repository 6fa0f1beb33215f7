// Two routing documents of any bytes, one after another. Whatever they contain, the record names no channel
// below -1, and reads the second one as a new record would, unless both have the same map.

#include "routing/routing_document.h"
#include "routing/routing_record.h"
#include "utils/marked_text.h"

#include <algorithm>
#include <cstdlib>

using namespace KAV;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view all(reinterpret_cast<const char*>(data), size);
    const auto cut = std::min(all.find('\xFF'), size);
    const auto first = all.substr(0, cut);
    const auto second = cut < size ? all.substr(cut + 1) : std::string_view();
    SRoutingRecord record;
    record.Set(first);
    record.Set(second);
    SRoutingRecord fresh;
    fresh.Set(second);
    if (record.text != second || ERoutingType{record.type} != ERoutingType{fresh.type}) std::abort();
    for (std::size_t entry = 0; entry < record.map.size(); ++entry) {
        const std::int32_t a = record.map[entry].first;
        const std::int32_t b = record.map[entry].second;
        if (a < -1 || b < -1) std::abort();
        if (a != fresh.map[entry].first || b != fresh.map[entry].second) std::abort();
    }
    for (Utils::CPieces labels(RoutingValue(second, "<ch_names"), RoutingSeparator); labels.Next();) {
        if (labels.Piece().size() > second.size()) std::abort();
    }
    return 0;
}
