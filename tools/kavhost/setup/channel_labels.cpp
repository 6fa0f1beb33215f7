#include "tools/kavhost/setup/channel_labels.h"

#include "tools/kavhost/base/text.h"
#include "utils/marked_text.h"

namespace KAV::Host {

namespace {

using Utils::CPieces;
using Utils::ExtractTag;

} // namespace

void AddChannelLabels(const SRouting& routing, std::vector<std::string>& labels) {
    const std::string_view document = routing.document;
    const SGroupRouting group{{}, {}, std::string(ExtractTag(document, "<map", ">", "<"))};
    CPieces names(ExtractTag(document, "<ch_names", ">", "<"), ListSeparator);
    for (const auto& channels : group.Entries()) {
        if (!names.Next()) return;
        CPieces parts(names.Piece(), "+"); // an entry of two channels has a label for both, such as L+R
        for (const int channel : channels) {
            const auto part = parts.Next() ? Trim(parts.Piece()) : std::string_view();
            const auto place = static_cast<std::size_t>(channel);
            if (place >= MostRoutingEntries) continue;
            if (labels.size() <= place) labels.resize(place + 1);
            if (labels[place].empty()) labels[place] = part;
        }
    }
}

} // namespace KAV::Host
