// Conversions, path helpers and Split() on any bytes, compared with plain versions of their rules.

#include "utils/path.h"
#include "utils/text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace KAV::Utils;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

/// What is converted can be converted back; what isn't gives nothing.
void Conversions(const std::string& bytes, const std::u16string& units) {
    const auto wide = ToUtf16(bytes);
    Require(wide.empty() || ToUtf8(wide) == bytes);
    const auto narrow = ToUtf8(units);
    Require(narrow.empty() || ToUtf16(narrow) == units);
    const auto repaired = ToUtf16Repaired(bytes);
    Require(repaired.empty() == bytes.empty());
    Require(wide.empty() || repaired == wide);
    Require(ToUtf8(repaired).empty() == repaired.empty()); // it is well-formed
}

/// The rules one after another, each applied until it finds nothing more.
std::u16string NormalizeByTheRules(std::u16string path) {
    for (char16_t& c : path) c = c == u'\\' ? u'/' : c;
    const bool network = path.starts_with(u"//");
    for (const std::u16string_view what : {u"//", u"/./"}) {
        while (true) {
            const auto place = path.find(what);
            if (place == std::u16string::npos) break;
            path.replace(place, what.size(), 1, u'/');
        }
    }
    if (network) path.insert(path.begin(), u'/');
    return path;
}

void Paths(const std::u16string& units) {
    const auto normal = NormalizePath(units);
    if (units.size() < 2000) Require(normal == NormalizeByTheRules(units)); // that takes quadratic time
    Require(NormalizePath(normal) == normal);
    const bool hasSlash = normal.find(u'/') != std::u16string::npos;
    Require((hasSlash ? GetFolder(units) + GetFileName(units) : GetFileName(units)) == normal);
    Require(GetExtension(units).find(u'.') == std::u16string::npos);
    Require(units.starts_with(StripExtension(units)));
    Require(ToSystemPath(units).empty() || NormalizePath(units) == FromSystemPath(ToSystemPath(units)));
}

/// Joined again, the pieces are the text, and none contains the delimiter.
template<typename Text>
void Pieces(const Text& text, const Text& delimiter) {
    const auto pieces = Split(text, delimiter);
    Require(pieces.empty() == text.empty());
    Text joined;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0) joined += delimiter;
        joined += pieces[i];
        if (!delimiter.empty()) Require(pieces[i].find(delimiter) == Text::npos);
    }
    Require(joined == text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    std::u16string units(bytes.size() / 2, u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * 2);
    const std::u16string letters(
        bytes.begin(), bytes.end()); // contains more slashes than pairs of bytes would
    Conversions(bytes, units);
    Paths(units);
    Paths(letters);
    const std::size_t length = data[0] % 4;
    Pieces(bytes, bytes.substr(0, length));
    Pieces(units, units.substr(0, length));
    return 0;
}
