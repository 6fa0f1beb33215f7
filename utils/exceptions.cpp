#include "utils/exceptions.h"

#include "utils/number.h"
#include "utils/text.h"

namespace KAV::Exceptions {

namespace {

using Utils::FormatInt;
using Utils::FormatUnsigned;

/// As std::u16string, the only type to which the others can be appended.
template<typename... Texts>
std::u16string Join(const Texts&... texts) {
    std::u16string joined;
    (joined.append(texts), ...);
    return joined;
}

std::u16string GlText(OGL::GetString getString, unsigned int name) {
    const auto* const text = getString != nullptr ? getString(name) : nullptr;
    return text != nullptr ? Utils::ToUtf16(reinterpret_cast<const char*>(text)) : std::u16string();
}

std::u16string GlMessage(std::u16string_view function, std::uint32_t error, OGL::GetString getString) {
    constexpr unsigned int vendor = 0x1F00;
    constexpr unsigned int renderer = 0x1F01;
    constexpr unsigned int version = 0x1F02;
    return Join(u"Vendor: ", GlText(getString, vendor), u"\r\n", u"Renderer: ", GlText(getString, renderer),
        u"\r\n", u"Version: ", GlText(getString, version), u"\r\n", u"Function: ", function, u"(): error = ",
        FormatUnsigned(error));
}

} // namespace

Std::Std(std::u16string_view errorMessage, std::u16string_view source)
    : message(Join(u" ", source, u" ERROR:\r\n\r\n", errorMessage)) {}

StdFunc::StdFunc(std::u16string_view function, std::uint32_t error, std::u16string_view source)
    : Std(Join(u"\r\n\r\nFunction: ", function, u"(): error = ", FormatUnsigned(error)), source) {}

GDIP::GDIP(std::u16string_view function, std::int32_t status) : GDIP(function, status, u"") {}

GDIP::GDIP(std::u16string_view function, std::int32_t status, std::u16string_view addition)
    : Std(Join(u"Function: ", function, u"() error = ", FormatInt(status), addition), u"GDI+") {}

GDIPImage::GDIPImage(std::u16string_view name, std::int32_t width, std::int32_t height, std::int32_t status)
    : GDIP(u"Gdiplus::Bitmap", status,
          Join(u"\r\nImage: \"", name, u"\" (", FormatInt(width), u"x", FormatInt(height),
              u"px)\r\n\r\nCan't load image.")) {}

OGL::OGL(std::u16string_view function, std::uint32_t error, GetString getString)
    : Std(GlMessage(function, error, getString), u"OPENGL") {}

} // namespace KAV::Exceptions
