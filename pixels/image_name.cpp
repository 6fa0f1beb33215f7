#include "pixels/image_name.h"

#include "utils/number.h"

#include <algorithm>

namespace KAV::Pixels {

namespace {

constexpr std::u16string_view MarkSign = u"##";

/// What stands between two signs, or nothing unless both are there.
std::u16string_view Between(
    std::u16string_view text, std::u16string_view before, std::u16string_view after) noexcept {
    const auto begin = text.find(before);
    if (begin == std::u16string_view::npos) return {};
    text.remove_prefix(begin + before.size());
    const auto end = text.find(after);
    return end == std::u16string_view::npos ? std::u16string_view() : text.substr(0, end);
}

} // namespace

SImageGrid GridOf(std::u16string_view name) noexcept {
    const auto grid = Between(name.substr(0, name.find(MarkSign)), u"((", u"))");
    // Pictures are stored under their names in upper case.
    const auto cross = grid.find_first_of(u"xX");
    const std::int64_t frames = Utils::ToInt(grid.substr(0, cross));
    const std::int64_t columns =
        cross == std::u16string_view::npos ? 1 : Utils::ToInt(grid.substr(cross + 1));
    if (frames < 1 || columns < 1) return {};
    return {static_cast<std::int32_t>(frames), static_cast<std::int32_t>(columns),
        static_cast<std::int32_t>((frames + columns - 1) / columns)};
}

SImageMark MarkOf(std::u16string_view name) noexcept {
    const auto sign = name.find(MarkSign);
    if (sign == std::u16string_view::npos) return {};
    const auto mark = name.substr(sign);
    const auto size = Between(mark, u"Sz", u"px");
    const auto cross = size.find(u'x');
    if (cross == std::u16string_view::npos) return {};
    return {Utils::ToInt(size.substr(0, cross)), Utils::ToInt(size.substr(cross + 1)),
        Utils::ToInt(Between(mark, u"pxSb", u"."))};
}

std::u16string WithMark(std::u16string_view name, const SImageMark& mark) {
    const auto point = name.rfind(u'.');
    std::u16string result(name.substr(0, std::min(name.find(MarkSign), point)));
    std::replace(result.begin(), result.end(), u' ', u'_');
    result.append(MarkSign).append(u"Sz").append(Utils::FormatInt(mark.width));
    result.append(u"x").append(Utils::FormatInt(mark.height)).append(u"px");
    result.append(u"Sb").append(Utils::FormatInt(mark.blur)).append(u".");
    if (point != std::u16string_view::npos) result.append(name.substr(point + 1));
    return result;
}

} // namespace KAV::Pixels
