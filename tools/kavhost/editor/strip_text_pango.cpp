#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/editor/strip_text.h"

#include <algorithm>
#include <cairo.h>
#include <pango/pangocairo.h>

namespace KAV::Host {

namespace {

/// Ends what the libraries hand out, by the function that each kind has for that.
template<auto END>
struct SEnd {
    template<typename OBJECT>
    void operator()(OBJECT* object) const noexcept {
        END(object);
    }
};

} // namespace

struct CStripText::SNative {
    // A map of its own, since the library's usual one stays for the life of a thread.
    std::unique_ptr<PangoFontMap, SEnd<g_object_unref>> fonts{pango_cairo_font_map_new()};
    std::unique_ptr<PangoContext, SEnd<g_object_unref>> context{pango_font_map_create_context(fonts.get())};
};

CStripText::CStripText() : _native(std::make_unique<SNative>()) {}

CStripText::~CStripText() = default;

STextPicture CStripText::Render(const std::string& text, std::int32_t size) {
    const std::unique_ptr<PangoFontDescription, SEnd<pango_font_description_free>> font(
        pango_font_description_from_string("DejaVu Sans Condensed, sans-serif"));
    pango_font_description_set_absolute_size(font.get(), static_cast<double>(size) * PANGO_SCALE);
    const std::unique_ptr<PangoLayout, SEnd<g_object_unref>> layout(pango_layout_new(_native->context.get()));
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_text(layout.get(), text.c_str(), -1);
    STextPicture picture;
    pango_layout_get_pixel_size(layout.get(), &picture.width, &picture.height);
    if (picture.width < 1 || picture.height < 1) return {};
    const std::unique_ptr<cairo_surface_t, SEnd<cairo_surface_destroy>> sheet(
        cairo_image_surface_create(CAIRO_FORMAT_A8, picture.width, picture.height));
    const std::unique_ptr<cairo_t, SEnd<cairo_destroy>> pen(cairo_create(sheet.get()));
    pango_cairo_show_layout(pen.get(), layout.get());
    cairo_surface_flush(sheet.get());
    if (cairo_status(pen.get()) != CAIRO_STATUS_SUCCESS) throw CFailure("out of memory for a picture");
    for (std::int32_t y = 0; y < picture.height; ++y) {
        const auto* const row = cairo_image_surface_get_data(sheet.get()) +
                                static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(sheet.get());
        picture.coverage.insert(picture.coverage.end(), row, row + picture.width);
    }
    return picture;
}

} // namespace KAV::Host
