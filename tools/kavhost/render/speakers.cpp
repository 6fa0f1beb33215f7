#include "tools/kavhost/render/speakers.h"

#include "tools/kavhost/audio/channel_order.h"
#include "tools/kavhost/audio/speaker_layout.h"
#include "tools/kavhost/base/errors.h"

#include <bit>

namespace KAV::Host {

namespace {

/// The mask with a pair at the sides in place of one at the back. Where there is only one of these pairs,
/// listeners have their surround speakers there.
std::uint32_t WithSides(std::uint32_t mask) noexcept {
    constexpr std::uint32_t back = Speakers::BackLeft | Speakers::BackRight;
    constexpr std::uint32_t side = Speakers::SideLeft | Speakers::SideRight;
    const bool hasBackAlone = (mask & back) == back && (mask & side) == 0;
    return hasBackAlone ? (mask & ~back) | side : mask;
}

} // namespace

void SetLayout(SAudioFormat& format, const SLayoutChoice& layout) {
    const int speakers = std::popcount(layout.mask);
    if (!layout.name.empty() && layout.mask != 0 && speakers != format.channels) {
        throw CFailure("--layout " + layout.name + " has " + std::to_string(speakers) +
                       (speakers == 1 ? " speaker" : " speakers") + ", but the file has " +
                       std::to_string(format.channels) + (format.channels == 1 ? " channel" : " channels"));
    }
    format.mask = layout.mask;
    format.isMaskDefined = false;
}

std::optional<SNote> SpeakerNote(EContainer container, const SAudioFormat& format) {
    const std::string name(ContainerName(container));
    const auto defined = DefinedMask(container, format.channels);
    if (!format.mask) {
        if (!defined) return std::nullopt;
        return SNote{"the input names no speakers; readers of " + name + " take its " +
                     std::to_string(format.channels) + " channels for " + LayoutName(*defined)};
    }
    if (container != EContainer::Ogg) return std::nullopt;
    // One and two channels have no layout of their own in a file without a mask: they are what they seem.
    const auto held = defined                ? defined
                      : format.channels == 1 ? std::optional(std::uint32_t{Speakers::FrontCentre})
                      : format.channels == 2 ? std::optional(Speakers::FrontLeft | Speakers::FrontRight)
                                             : std::nullopt;
    if (format.mask == held) return std::nullopt;
    if (!held && *format.mask == 0) return std::nullopt;
    const std::string fate = held ? "; its readers take the channels for " + LayoutName(*held)
                                  : "; it names none for more than eight channels";
    if (*format.mask == 0) return SNote{name + " cannot leave the speakers unspecified" + fate};
    const bool isGrave = !held || WithSides(*format.mask) != WithSides(*held);
    return SNote{name + " cannot hold the speakers " + LayoutName(*format.mask) + fate, isGrave};
}

} // namespace KAV::Host
