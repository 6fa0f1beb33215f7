#include "tools/kavhost/plot/plot_pen.h"

#include "tools/kavhost/base/errors.h"

#include <array>
#include <cairo.h>
#include <pango/pangocairo.h>
#include <utility>

namespace KAV::Host {

namespace {

constexpr const char* Typeface = "DejaVu Sans, sans-serif";

/// Ends what the libraries hand out, by the function that each kind has for that.
template<auto END>
struct SEnd {
    template<typename OBJECT>
    void operator()(OBJECT* object) const noexcept {
        END(object);
    }
};

cairo_status_t Append(void* stream, const unsigned char* bytes, unsigned int size) {
    auto& png = *static_cast<std::ostream*>(stream);
    png.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return png ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

} // namespace

struct CPlotPen::SNative {
    std::unique_ptr<cairo_surface_t, SEnd<cairo_surface_destroy>> sheet;
    std::unique_ptr<cairo_t, SEnd<cairo_destroy>> cairo;
    std::unique_ptr<PangoFontMap, SEnd<g_object_unref>> fonts;
    std::unique_ptr<PangoContext, SEnd<g_object_unref>> context;

    using LayoutPtr = std::unique_ptr<PangoLayout, SEnd<g_object_unref>>;
    LayoutPtr Layout(const std::string& text, const SLetters& letters) const;
    void Set(const SColour& colour) const {
        cairo_set_source_rgba(cairo.get(), colour.red, colour.green, colour.blue, colour.alpha);
    }
    void Path(std::span<const SPoint> points) const {
        cairo_new_path(cairo.get());
        for (const auto& point : points) cairo_line_to(cairo.get(), point.x, point.y);
    }
    void Apply(const SLine& line) const {
        Set(line.colour);
        cairo_set_line_width(cairo.get(), line.width);
        const std::array dashes{4 * line.width, 2 * line.width};
        cairo_set_dash(cairo.get(), dashes.data(), line.isDashed ? 2 : 0, 0);
        cairo_stroke(cairo.get());
    }
};

CPlotPen::CPlotPen(int width, int height) : _native(std::make_unique<SNative>()) {
    auto& native = *_native;
    native.sheet.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    native.cairo.reset(cairo_create(native.sheet.get()));
    if (cairo_status(native.cairo.get()) != CAIRO_STATUS_SUCCESS)
        throw CFailure("out of memory for a picture");
    cairo_set_line_join(native.cairo.get(), CAIRO_LINE_JOIN_ROUND);
    // A map of its own, since the library's usual one stays for the life of a thread.
    native.fonts.reset(pango_cairo_font_map_new());
    native.context.reset(pango_font_map_create_context(native.fonts.get()));
    auto* const options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY); // not what the desktop prefers
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(native.context.get(), options);
    cairo_font_options_destroy(options);
    Fill({0, 0, static_cast<double>(width), static_cast<double>(height)}, {1, 1, 1, 1});
}

CPlotPen::~CPlotPen() = default;

void CPlotPen::Clip(const SBox& box) {
    cairo_save(_native->cairo.get());
    cairo_rectangle(_native->cairo.get(), box.left, box.top, box.width, box.height);
    cairo_clip(_native->cairo.get());
}

void CPlotPen::Unclip() {
    cairo_restore(_native->cairo.get());
}

void CPlotPen::Fill(const SBox& box, const SColour& colour) {
    Fill(std::span(&box, 1), colour);
}

void CPlotPen::Fill(std::span<const SBox> boxes, const SColour& colour) {
    auto* const cairo = _native->cairo.get();
    cairo_new_path(cairo);
    for (const auto& box : boxes) cairo_rectangle(cairo, box.left, box.top, box.width, box.height);
    _native->Set(colour);
    cairo_fill(cairo);
}

void CPlotPen::Stroke(std::span<const SPoint> points, const SLine& line) {
    _native->Path(points);
    _native->Apply(line);
}

void CPlotPen::Frame(const SBox& box, const SLine& line) {
    cairo_rectangle(_native->cairo.get(), box.left, box.top, box.width, box.height);
    _native->Apply(line);
}

CPlotPen::SNative::LayoutPtr CPlotPen::SNative::Layout(
    const std::string& text, const SLetters& letters) const {
    LayoutPtr layout(pango_layout_new(context.get()));
    auto* const font = pango_font_description_from_string(Typeface);
    pango_font_description_set_absolute_size(font, letters.size * PANGO_SCALE);
    if (letters.isBold) pango_font_description_set_weight(font, PANGO_WEIGHT_BOLD);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_single_paragraph_mode(layout.get(), 1); // a file's name may have line breaks
    const std::unique_ptr<char, SEnd<g_free>> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    pango_layout_set_text(layout.get(), valid.get(), -1);
    if (letters.mostWidth > 0) {
        pango_layout_set_width(layout.get(), static_cast<int>(letters.mostWidth * PANGO_SCALE));
        pango_layout_set_height(layout.get(), -letters.mostLines);
        pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    }
    return layout;
}

double CPlotPen::Write(const std::string& text, const SPoint& at, const SLetters& letters) {
    auto* const cairo = _native->cairo.get();
    const auto layout = _native->Layout(text, letters);
    int width = 0, height = 0;
    pango_layout_get_size(layout.get(), &width, &height);
    const double length = static_cast<double>(width) / PANGO_SCALE;
    const double shift = letters.place == SLetters::EPlace::Left     ? 0
                         : letters.place == SLetters::EPlace::Middle ? length / 2
                                                                     : length;
    cairo_save(cairo);
    cairo_translate(cairo, at.x, at.y);
    if (letters.isUpright) cairo_rotate(cairo, -G_PI / 2);
    cairo_move_to(cairo, -shift, 0);
    _native->Set(letters.colour);
    pango_cairo_show_layout(cairo, layout.get());
    cairo_restore(cairo);
    return static_cast<double>(height) / PANGO_SCALE;
}

double CPlotPen::WidthOf(const std::string& text, const SLetters& letters) {
    int width = 0;
    pango_layout_get_size(_native->Layout(text, letters).get(), &width, nullptr);
    return static_cast<double>(width) / PANGO_SCALE;
}

void CPlotPen::WritePng(std::ostream& png) {
    cairo_surface_flush(_native->sheet.get());
    const auto status = cairo_surface_write_to_png_stream(_native->sheet.get(), Append, &png);
    // The stream's owner reports that it couldn't be written.
    if (status != CAIRO_STATUS_SUCCESS && status != CAIRO_STATUS_WRITE_ERROR)
        throw CFailure(std::string("a picture cannot be drawn: ") + cairo_status_to_string(status));
}

} // namespace KAV::Host
