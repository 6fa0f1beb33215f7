#include "native/menu_painter.h"

#include "native/paint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

namespace KAV::Native {

namespace {

// The colours of the panel's pictures.
constexpr std::uint32_t Ground = 0xFF25282C;
constexpr std::uint32_t Edge = 0xFF0D0E10;
constexpr std::uint32_t Bar = 0xFF46525C;
constexpr std::uint32_t Rule = 0xFF43484F;
constexpr std::uint32_t Ink = 0xFFD3D7DC;
constexpr std::uint32_t HotInk = 0xFFF4F0E4;
constexpr std::uint32_t Grey = 0xFF737981;

constexpr std::size_t Measured = 32; // how many of the widest texts are measured as a whole

bool IsPair(std::u16string_view text, std::size_t at) noexcept {
    return (text[at] & 0xFC00u) == 0xD800u && at + 1 < text.size() && (text[at + 1] & 0xFC00u) == 0xDC00u;
}

std::uint32_t InkOf(const GUI::SMenuItem& item, bool isHot) noexcept {
    if (!item.bEnabled) return Grey;
    return isHot ? HotInk : Ink;
}

} // namespace

Pixels::STextLine CMenuPainter::LineOf(const GUI::SMenuItem& item) const {
    Pixels::STextLine line;
    line.text = item.sText;
    line.pixels = _metrics.text;
    line.bold = item.bBold;
    line.ellipsis = true;
    line.align = 3;
    return line;
}

/// The sum of the characters' own widths, each of which is measured once.
float CMenuPainter::AboutWidthOf(const GUI::SMenuItem& item) {
    float width = 0.0f;
    std::u16string key;
    for (std::size_t n = 0; n < item.sText.size();) {
        const std::size_t units = IsPair(item.sText, n) ? 2 : 1;
        key.assign(item.sText, n, units);
        if (item.bBold) key += u'\0';
        auto place = _widths.find(key);
        if (place == _widths.end()) {
            auto line = LineOf(item);
            line.text.assign(item.sText, n, units);
            place = _widths.emplace(key, _lettering.Measure(line).width).first;
        }
        width += place->second;
        n += units;
    }
    return width;
}

std::int32_t CMenuPainter::WidthOf(const GUI::Menu& items) {
    std::vector<std::pair<float, std::size_t>> widths;
    widths.reserve(items.size());
    for (std::size_t n = 0; n < items.size(); ++n) widths.emplace_back(AboutWidthOf(items[n]), n);
    // Kerning makes a text a little narrower or wider than its characters.
    const auto measured = static_cast<std::ptrdiff_t>(std::min(widths.size(), Measured));
    std::partial_sort(widths.begin(), widths.begin() + measured, widths.end(), std::greater<>());
    float width = 0.0f;
    for (auto place = widths.begin(); place != widths.begin() + measured; ++place)
        width = std::max(width, _lettering.Measure(LineOf(items[place->second])).width);
    // What a text this wide takes at most is kept within the numbers that a window can have.
    constexpr float most = 30000.0f;
    return static_cast<std::int32_t>(std::ceil(std::min(width, most))) + _metrics.check + _metrics.sub +
           2 * _metrics.frame;
}

Pixels::SBitmap CMenuPainter::Paint(const SMenuLevel& level) {
    auto to = Pixels::TransparentBitmap(level.place.width, level.place.height);
    const Platform::SArea whole{0, 0, to.width, to.height};
    Fill(to, whole, Ground);
    const auto end = level.LastVisible();
    for (std::size_t item = level.FirstVisible(); item < end; ++item)
        PaintRow(to, level, item, level.viewTop + level.tops[item] - level.scroll);
    if (level.isScrolled) PaintArrows(to, level);
    Frame(to, whole, _metrics.frame, Edge);
    return to;
}

void CMenuPainter::PaintRow(
    Pixels::SBitmap& to, const SMenuLevel& level, std::size_t index, std::int32_t top) {
    const auto& item = (*level.items)[index];
    const std::int32_t height = level.tops[index + 1] - level.tops[index];
    if (item.bSeparator) {
        const std::int32_t inset = 2 * _metrics.padding;
        Fill(to, {inset, top + (height - _metrics.frame) / 2, to.width - 2 * inset, _metrics.frame}, Rule);
        return;
    }
    const bool isHot = level.hot == static_cast<std::int32_t>(index);
    if (isHot) Fill(to, {0, top, to.width, height}, Bar);
    const auto ink = InkOf(item, isHot);
    PaintMarks(to, item, static_cast<float>(top) + static_cast<float>(height) / 2.0f, ink);
    auto line = LineOf(item);
    line.colour = ink;
    line.left = _metrics.frame + _metrics.check;
    line.top = top;
    line.width = to.width - _metrics.check - _metrics.sub - 2 * _metrics.frame;
    line.height = height;
    _lettering.Draw(line, to);
}

void CMenuPainter::PaintMarks(
    Pixels::SBitmap& to, const GUI::SMenuItem& item, float middle, std::uint32_t ink) const {
    const float unit = static_cast<float>(_metrics.row) / 22.0f;
    if (item.bChecked) {
        const float x = static_cast<float>(_metrics.frame) + static_cast<float>(_metrics.check) / 2.0f;
        const std::array<SSpot, 3> tick{{{x - 4.0f * unit, middle + 0.5f * unit},
            {x - 1.0f * unit, middle + 3.5f * unit}, {x + 4.5f * unit, middle - 3.5f * unit}}};
        Stroke(to, tick, 1.8f * unit, ink);
    }
    if (!item.vsSub.empty()) {
        const auto column = static_cast<float>(_metrics.sub) / 2.0f;
        const float x = static_cast<float>(to.width - _metrics.frame) - column;
        const std::array<SSpot, 3> arrow{
            {{x, middle - 3.5f * unit}, {x + 3.5f * unit, middle}, {x, middle + 3.5f * unit}}};
        Stroke(to, arrow, 1.5f * unit, ink);
    }
}

/// Over what the first and the last visible entry show of themselves there.
void CMenuPainter::PaintArrows(Pixels::SBitmap& to, const SMenuLevel& level) const {
    const float unit = static_cast<float>(_metrics.arrow) / 16.0f;
    const float x = static_cast<float>(to.width) / 2.0f;
    for (const bool isLower : {false, true}) {
        const std::int32_t top = isLower ? to.height - level.viewTop : 0;
        Fill(to, {0, top, to.width, level.viewTop}, Ground);
        const bool isLast = isLower ? level.scroll >= level.LastScroll() : level.scroll <= 0;
        const float middle = static_cast<float>(top) + static_cast<float>(level.viewTop) / 2.0f;
        const float reach = (isLower ? -2.0f : 2.0f) * unit;
        const std::array<SSpot, 3> arrow{
            {{x - 4.0f * unit, middle + reach}, {x, middle - reach}, {x + 4.0f * unit, middle + reach}}};
        Stroke(to, arrow, 1.5f * unit, isLast ? Rule : Ink);
    }
}

} // namespace KAV::Native
