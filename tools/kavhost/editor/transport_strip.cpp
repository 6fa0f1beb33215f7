#include "tools/kavhost/editor/transport_strip.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/play/time_text.h"

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstring>
#include <memory>
#include <pango/pangocairo.h>

namespace KAV::Host {

namespace {

constexpr double UsualHeight = 28; ///< below an editor of the usual width
constexpr double UsualWidth = 754;

struct SColour {
    double red, green, blue;
};
constexpr SColour Ground{0.10, 0.11, 0.12};
constexpr SColour Groove{0.20, 0.21, 0.23};
constexpr SColour Played{0.29, 0.73, 0.50};
constexpr SColour Ink{0.88, 0.89, 0.91};
constexpr SColour Dim{0.42, 0.44, 0.47};

/// Ends what the libraries hand out, by the function that each kind has for that.
template<auto END>
struct SEnd {
    template<typename OBJECT>
    void operator()(OBJECT* object) const noexcept {
        END(object);
    }
};

void Set(cairo_t* pen, const SColour& colour) {
    cairo_set_source_rgb(pen, colour.red, colour.green, colour.blue);
}

void DrawPlayButton(cairo_t* pen, const SStripLayout& layout, bool plays) {
    const double size = layout.height * 0.42;
    const double left = layout.buttonEnd / 2.0 - size / 2;
    const double top = (layout.height - size) / 2;
    Set(pen, Ink);
    if (plays) {
        const double bar = std::round(size * 0.34);
        cairo_rectangle(pen, std::round(left), std::round(top), bar, std::round(size));
        cairo_rectangle(pen, std::round(left + size) - bar, std::round(top), bar, std::round(size));
    } else {
        cairo_move_to(pen, left, top);
        cairo_line_to(pen, left + size, top + size / 2);
        cairo_line_to(pen, left, top + size);
        cairo_close_path(pen);
    }
    cairo_fill(pen);
}

void DrawBar(cairo_t* pen, const SStripLayout& layout, const SStripView& view) {
    const double thickness = std::max(std::round(layout.height * 0.2), 2.0);
    const double top = std::round((layout.height - thickness) / 2);
    Set(pen, Groove);
    cairo_rectangle(pen, layout.barBegin, top, layout.barEnd - layout.barBegin, thickness);
    cairo_fill(pen);
    Set(pen, Played);
    cairo_rectangle(pen, layout.barBegin, top, view.barPixels, thickness);
    cairo_fill(pen);
    Set(pen, Ink);
    const double width = std::max(std::round(layout.height * 0.08), 2.0);
    const double height = std::round(layout.height * 0.5);
    cairo_rectangle(pen, std::round(layout.barBegin + view.barPixels - width / 2),
        std::round((layout.height - height) / 2), width, height);
    cairo_fill(pen);
}

/// An arrow that returns to where it began.
void DrawLoopMark(cairo_t* pen, const SStripLayout& layout, bool loops) {
    const double x = (layout.timeEnd + layout.width) / 2.0;
    const double y = layout.height / 2.0;
    const double radius = layout.height * 0.2;
    Set(pen, loops ? Played : Dim);
    cairo_set_line_width(pen, std::max(layout.height * 0.07, 1.5));
    constexpr double begin = -0.6;
    constexpr double end = 4.6;
    cairo_new_path(pen);
    cairo_arc(pen, x, y, radius, begin, end);
    cairo_stroke(pen);
    // The head lies across the line's end and points along it.
    const double head = layout.height * 0.16;
    const double atX = x + radius * std::cos(end);
    const double atY = y + radius * std::sin(end);
    const double alongX = -std::sin(end);
    const double alongY = std::cos(end);
    cairo_move_to(pen, atX + alongX * head, atY + alongY * head);
    cairo_line_to(pen, atX - alongY * head, atY + alongX * head);
    cairo_line_to(pen, atX + alongY * head, atY - alongX * head);
    cairo_close_path(pen);
    cairo_fill(pen);
}

} // namespace

std::int32_t StripHeightFor(std::int32_t editorWidth) noexcept {
    const double scale = std::clamp(editorWidth / UsualWidth, 0.8, 4.0);
    return static_cast<std::int32_t>(std::lround(UsualHeight * scale));
}

SStripLayout LayOutStrip(std::int32_t width, std::int32_t height) noexcept {
    SStripLayout layout{width, height};
    layout.buttonEnd = layout.barBegin = std::min(height + height / 4, width);
    layout.timeEnd = std::max(width - height - height / 4, layout.barBegin);
    // Room for "1:02:03 / 1:23:45".
    layout.barEnd = std::max(layout.timeEnd - height * 4, layout.barBegin);
    return layout;
}

EStripPart PartAt(const SStripLayout& layout, std::int32_t x, std::int32_t y) noexcept {
    if (x < 0 || y < 0 || x >= layout.width || y >= layout.height) return EStripPart::None;
    if (x < layout.buttonEnd) return EStripPart::PlayButton;
    if (x <= layout.barEnd) return EStripPart::Bar;
    return x >= layout.timeEnd ? EStripPart::LoopMark : EStripPart::None;
}

double FractionAt(const SStripLayout& layout, std::int32_t x) noexcept {
    const auto length = layout.barEnd - layout.barBegin;
    if (length <= 0) return 0;
    return std::clamp(static_cast<double>(x - layout.barBegin) / length, 0.0, 1.0);
}

SStripView StripViewOf(const SStripLayout& layout, bool plays, bool loops, double seconds, double length) {
    const double fraction = length > 0 ? std::clamp(seconds / length, 0.0, 1.0) : 0;
    return {plays, loops,
        static_cast<std::int32_t>(std::lround(fraction * (layout.barEnd - layout.barBegin))),
        TimeText(seconds) + " / " + TimeText(length)};
}

struct CStripPainter::SNative {
    // A map of its own, since the library's usual one stays for the life of a thread.
    std::unique_ptr<PangoFontMap, SEnd<g_object_unref>> fonts{pango_cairo_font_map_new()};
    std::unique_ptr<PangoContext, SEnd<g_object_unref>> context{pango_font_map_create_context(fonts.get())};

    void DrawTime(cairo_t* pen, const SStripLayout& layout, const std::string& time) const;
};

void CStripPainter::SNative::DrawTime(
    cairo_t* pen, const SStripLayout& layout, const std::string& time) const {
    const std::unique_ptr<PangoFontDescription, SEnd<pango_font_description_free>> font(
        pango_font_description_from_string("DejaVu Sans Condensed, sans-serif"));
    pango_font_description_set_absolute_size(font.get(), std::round(layout.height * 0.43) * PANGO_SCALE);
    const std::unique_ptr<PangoLayout, SEnd<g_object_unref>> text(pango_layout_new(context.get()));
    pango_layout_set_font_description(text.get(), font.get());
    pango_layout_set_text(text.get(), time.c_str(), -1);
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(text.get(), &width, &height);
    Set(pen, Ink);
    const int left = (layout.barEnd + layout.timeEnd - width) / 2; // whole pixels, so that it is sharp
    const int top = (layout.height - height) / 2;
    cairo_move_to(pen, left, top);
    pango_cairo_show_layout(pen, text.get());
}

CStripPainter::CStripPainter() : _native(std::make_unique<SNative>()) {}

CStripPainter::~CStripPainter() = default;

SPicture CStripPainter::Draw(const SStripLayout& layout, const SStripView& view) {
    SPicture picture{layout.width, layout.height, {}};
    if (layout.width < 1 || layout.height < 1) return picture;
    const std::unique_ptr<cairo_surface_t, SEnd<cairo_surface_destroy>> sheet(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, layout.width, layout.height));
    const std::unique_ptr<cairo_t, SEnd<cairo_destroy>> pen(cairo_create(sheet.get()));
    Set(pen.get(), Ground);
    cairo_paint(pen.get());
    DrawPlayButton(pen.get(), layout, view.plays);
    DrawBar(pen.get(), layout, view);
    _native->DrawTime(pen.get(), layout, view.time);
    DrawLoopMark(pen.get(), layout, view.loops);
    cairo_surface_flush(sheet.get());
    if (cairo_status(pen.get()) != CAIRO_STATUS_SUCCESS) throw CFailure("out of memory for a picture");
    const auto row = static_cast<std::size_t>(layout.width);
    picture.pixels.resize(row * static_cast<std::size_t>(layout.height));
    for (std::int32_t y = 0; y < layout.height; ++y) {
        std::memcpy(picture.pixels.data() + static_cast<std::size_t>(y) * row,
            cairo_image_surface_get_data(sheet.get()) +
                static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(sheet.get()),
            row * sizeof(std::uint32_t));
    }
    for (auto& pixel : picture.pixels) pixel &= 0xFFFFFF; // the rest of it is undefined
    return picture;
}

} // namespace KAV::Host
