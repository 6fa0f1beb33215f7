#include "tools/kavhost/measure/speaker_weights.h"

#include "tools/kavhost/audio/speaker_layout.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace KAV::Host {

namespace {

using namespace Speakers;

constexpr std::uint32_t Sides = SideLeft | SideRight;
constexpr std::uint32_t Backs = BackLeft | BackRight;

/// The pair at the back is the surround of a layout without one at the sides, such as 5.1: it stands between
/// 100 and 120 degrees then, otherwise at 135.
double WeightOf(std::uint32_t speaker, std::uint32_t mask) noexcept {
    if (speaker == Lfe) return 0;
    if ((speaker & Sides) != 0) return SideWeight;
    if ((speaker & Backs) != 0 && (mask & Sides) == 0) return SideWeight;
    return 1;
}

std::vector<double> WeightsOfMask(int channels, std::uint32_t mask) {
    std::vector<double> weights(static_cast<std::size_t>(channels), 1.0);
    std::uint32_t rest = mask;
    for (double& weight : weights) {
        if (rest == 0) break; // more channels than speakers
        const std::uint32_t speaker = rest & (~rest + 1);
        weight = WeightOf(speaker, mask);
        rest &= ~speaker;
    }
    return weights;
}

/// The layouts of routings whose labels are these, by their count; the first is for one channel.
constexpr std::array<std::string_view, 8> UsualLayouts{"M", "L R", "L R C", "L R Ls Rs", "L R C Ls Rs",
    "L R C LFE Ls Rs", "L R C LFE Ls Rs Cs", "L R C LFE Lss Rss Lrs Rrs"};

std::vector<std::string> UsualLabels(std::size_t channels) {
    std::vector<std::string> labels;
    if (channels > UsualLayouts.size()) return labels;
    std::string_view rest = UsualLayouts[channels - 1];
    while (!rest.empty()) {
        const auto end = std::min(rest.find(' '), rest.size());
        labels.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return labels;
}

/// Ls and Rs stand at the back where Sl and Sr are the pair at the sides.
double WeightOf(std::string_view label, bool hasSides) noexcept {
    if (label == "LFE") return 0;
    for (const char* const side : {"Lss", "Rss", "Sl", "Sr", "Lw", "Rw"}) {
        if (label == side) return SideWeight;
    }
    return !hasSides && (label == "Ls" || label == "Rs") ? SideWeight : 1;
}

std::vector<double> WeightsOfLabels(std::size_t channels, std::span<const std::string> labels) {
    const auto has = [&](const char* label) { return std::ranges::find(labels, label) != labels.end(); };
    const bool hasSides = has("Sl") || has("Sr");
    std::vector<double> weights(channels, 1.0);
    for (std::size_t c = 0; c < std::min(channels, labels.size()); ++c)
        weights[c] = WeightOf(labels[c], hasSides);
    return weights;
}

std::string Joined(std::span<const std::string> labels) {
    std::string text;
    for (const auto& label : labels) text.append(text.empty() ? "" : " ").append(label.empty() ? "-" : label);
    return text;
}

} // namespace

SSpeakerWeights WeightsFor(const SAudioFormat& format, std::span<const std::string> labels) {
    using enum SSpeakerWeights::EOrigin;
    const auto channels = static_cast<std::size_t>(format.channels);
    if (format.mask.value_or(0) != 0)
        return {WeightsOfMask(format.channels, *format.mask), Mask, LayoutName(*format.mask)};
    if (!labels.empty()) {
        const auto named = labels.first(std::min(labels.size(), channels));
        return {WeightsOfLabels(channels, named), Routing, Joined(named)};
    }
    const auto usual = UsualLabels(channels);
    if (usual.empty()) return {std::vector<double>(channels, 1.0), Nothing, {}};
    return {WeightsOfLabels(channels, usual), Usual, Joined(usual)};
}

std::string Explained(const SSpeakerWeights& weights) {
    switch (weights.origin) {
    case SSpeakerWeights::EOrigin::Mask:
        return "by the speaker mask: " + weights.layout;
    case SSpeakerWeights::EOrigin::Routing:
        return "no speaker mask; by the routing: " + weights.layout;
    case SSpeakerWeights::EOrigin::Usual:
        return "no speaker mask; the usual layout: " + weights.layout;
    case SSpeakerWeights::EOrigin::Nothing:
        break;
    }
    return "no speaker mask: all channels weigh the same";
}

} // namespace KAV::Host
