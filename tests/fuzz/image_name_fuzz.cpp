// Names of pictures of any characters, read and written, compared with plain versions of the rules.

#include "pixels/image_name.h"
#include "tests/support/chance.h"
#include "utils/number.h"
#include "utils/text.h"

#include <cstdlib>
#include <string>
#include <utility>

using namespace KAV;
using namespace KAV::Pixels;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

/// The text up to a sign, and after it; all of it and nothing without the sign.
std::pair<std::u16string, std::u16string> Cut(const std::u16string& text, const std::u16string& sign) {
    const auto place = text.find(sign);
    if (place == std::u16string::npos) return {text, u""};
    return {text.substr(0, place), text.substr(place + sign.size())};
}

bool Contains(const std::u16string& text, const std::u16string& sign) {
    return text.find(sign) != std::u16string::npos;
}

SImageGrid PlainGrid(const std::u16string& name) {
    const auto inside = Cut(Cut(name, u"##").first, u"((").second;
    if (!Contains(inside, u"))")) return {};
    auto numbers = Cut(inside, u"))").first;
    for (char16_t& character : numbers) character = character == u'X' ? u'x' : character;
    const std::int64_t frames = Utils::ToInt(Cut(numbers, u"x").first);
    const std::int64_t columns = Contains(numbers, u"x") ? Utils::ToInt(Cut(numbers, u"x").second) : 1;
    if (frames < 1 || columns < 1) return {};
    std::int64_t rows = frames / columns;
    if (rows * columns < frames) ++rows;
    return {static_cast<std::int32_t>(frames), static_cast<std::int32_t>(columns),
        static_cast<std::int32_t>(rows)};
}

SImageMark PlainMark(const std::u16string& name) {
    const auto mark = Cut(name, u"##").second;
    const auto size = Cut(mark, u"Sz").second;
    const auto sides = Cut(size, u"px").first;
    if (!Contains(size, u"px") || !Contains(sides, u"x")) return {};
    const auto blur = Cut(mark, u"pxSb").second;
    return {Utils::ToInt(Cut(sides, u"x").first), Utils::ToInt(Cut(sides, u"x").second),
        Contains(blur, u".") ? Utils::ToInt(Cut(blur, u".").first) : 0};
}

void Check(const std::u16string& name, const SImageMark& mark) {
    const auto grid = GridOf(name);
    Require(grid == PlainGrid(name));
    Require(MarkOf(name) == PlainMark(name));

    const auto marked = WithMark(name, mark);
    Require(MarkOf(marked) == mark);
    Require(!Contains(Cut(marked, u"##").first, u" "));
    // What follows the last point is the file's kind, and no grid.
    auto stem = name.substr(0, name.rfind(u'.'));
    for (char16_t& character : stem) character = character == u' ' ? u'_' : character;
    Require(GridOf(marked) == GridOf(stem));
    if (stem.ends_with(u'#')) return; // with the signs it makes others
    Require(WithMark(marked, mark) == marked);
    Require(WithMark(WithMark(name, {}), mark) == marked);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Tests::CChance chance({data, size});
    SImageMark mark{static_cast<std::int32_t>(chance.AnyNumber()),
        static_cast<std::int32_t>(chance.AnyNumber()), static_cast<std::int32_t>(chance.AnyNumber())};
    const bool wide = chance.OneIn(4);
    std::u16string name;
    while (!chance.IsOver()) name += static_cast<char16_t>(chance.Below(wide ? 1u << 16u : 1u << 8u));
    Check(name, mark);
    return 0;
}
