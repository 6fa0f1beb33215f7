#include "artwork/pen.h"

#include "artwork/studio.h"

#include <array>
#include <cairo/cairo-ft.h>
#include <cstring>
#include <ft2build.h>
#include <mutex>
#include <stdexcept>
#include <string>
#include FT_FREETYPE_H

namespace KAV::Artwork {

namespace {

/// The two faces, loaded by file, so that a machine without them fails instead of drawing with others. They
/// live to the end of the process.
class CFaces final {
public:
    CFaces() {
        if (FT_Init_FreeType(&_library) != 0) throw std::runtime_error("FreeType does not start");
        Load(0, "DejaVuSansCondensed.ttf");
        Load(1, "DejaVuSansCondensed-Bold.ttf");
    }
    cairo_font_face_t* Get(EFace face) const { return _faces[face == EFace::Bold ? 1 : 0]; }

private:
    void Load(std::size_t index, const std::string& name) {
        const std::string file = "/usr/share/fonts/truetype/dejavu/" + name;
        FT_Face face = nullptr;
        if (FT_New_Face(_library, file.c_str(), 0, &face) != 0)
            throw std::runtime_error(file + " is missing; the package fonts-dejavu-extra holds it");
        _faces[index] = cairo_ft_font_face_create_for_ft_face(face, FT_LOAD_NO_HINTING);
    }

    FT_Library _library = nullptr;
    std::array<cairo_font_face_t*, 2> _faces{};
};

const CFaces& Faces() {
    static const CFaces faces;
    return faces;
}

/// A typeface is one state for all threads.
std::mutex& FaceLock() {
    static std::mutex lock;
    return lock;
}

/// The characters of a UTF-8 text, one by one.
std::vector<std::string> Characters(std::string_view text) {
    std::vector<std::string> characters;
    for (const char byte : text) {
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) characters.emplace_back();
        characters.back() += byte;
    }
    return characters;
}

constexpr double CapitalHeight = 0.729; // of the size, in this typeface

} // namespace

CPen::CPen(const SFrame& frame)
    : _surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, frame.width, frame.height)),
      _context(cairo_create(_surface.get())) {
    cairo_scale(_context.get(), frame.scaleX, frame.scaleY);
    cairo_set_line_cap(_context.get(), CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(_context.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_antialias(_context.get(), CAIRO_ANTIALIAS_BEST);
    std::unique_ptr<cairo_font_options_t, decltype(&cairo_font_options_destroy)> options(
        cairo_font_options_create(), cairo_font_options_destroy);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(_context.get(), options.get());
}

void CPen::SetColour(const SColour& colour) {
    cairo_set_source_rgba(_context.get(), static_cast<double>(colour.r), static_cast<double>(colour.g),
        static_cast<double>(colour.b), static_cast<double>(colour.a));
}

void CPen::RoundPath(const SRect& rect, double radius) {
    auto* path = _context.get();
    cairo_new_path(path);
    cairo_arc(path, rect.Right() - radius, rect.y + radius, radius, -Pi / 2, 0);
    cairo_arc(path, rect.Right() - radius, rect.Bottom() - radius, radius, 0, Pi / 2);
    cairo_arc(path, rect.x + radius, rect.Bottom() - radius, radius, Pi / 2, Pi);
    cairo_arc(path, rect.x + radius, rect.y + radius, radius, Pi, 1.5 * Pi);
    cairo_close_path(path);
}

void CPen::Line(double x0, double y0, double x1, double y1, double width, const SColour& colour) {
    cairo_new_path(_context.get());
    cairo_move_to(_context.get(), x0, y0);
    cairo_line_to(_context.get(), x1, y1);
    cairo_set_line_cap(_context.get(), CAIRO_LINE_CAP_BUTT);
    StrokePath(width, colour);
    cairo_set_line_cap(_context.get(), CAIRO_LINE_CAP_ROUND);
}

void CPen::Fill(const SRect& rect, const SColour& colour) {
    cairo_new_path(_context.get());
    cairo_rectangle(_context.get(), rect.x, rect.y, rect.w, rect.h);
    FillPath(colour);
}

void CPen::FillRound(const SRect& rect, double radius, const SColour& colour) {
    RoundPath(rect, radius);
    FillPath(colour);
}

void CPen::StrokeRound(const SRect& rect, double radius, double width, const SColour& colour) {
    RoundPath(rect, radius);
    StrokePath(width, colour);
}

void CPen::Disc(double x, double y, double radius, const SColour& colour) {
    cairo_new_path(_context.get());
    cairo_arc(_context.get(), x, y, radius, 0, 2 * Pi);
    FillPath(colour);
}

void CPen::Arc(
    double x, double y, double radius, double from, double to, double width, const SColour& colour) {
    cairo_new_path(_context.get());
    cairo_arc(_context.get(), x, y, radius, from - Pi / 2, to - Pi / 2);
    StrokePath(width, colour);
}

double CPen::TextWidth(std::string_view text, const SLettering& style) {
    const std::lock_guard lock(FaceLock());
    cairo_set_font_face(_context.get(), Faces().Get(style.face));
    cairo_set_font_size(_context.get(), style.size);
    double width = -style.tracking;
    for (const auto& character : Characters(text)) {
        cairo_text_extents_t extents{};
        cairo_text_extents(_context.get(), character.c_str(), &extents);
        width += extents.x_advance + style.tracking;
    }
    return width;
}

void CPen::Text(std::string_view text, double x, double y, const SLettering& style, const SColour& colour) {
    const double width = TextWidth(text, style);
    if (style.align == EAlign::Centre) x -= width / 2;
    if (style.align == EAlign::Right) x -= width;
    const std::lock_guard lock(FaceLock());
    SetColour(colour);
    for (const auto& character : Characters(text)) {
        cairo_text_extents_t extents{};
        cairo_text_extents(_context.get(), character.c_str(), &extents);
        cairo_new_path(_context.get());
        cairo_move_to(_context.get(), x, y + style.size * CapitalHeight / 2);
        cairo_text_path(_context.get(), character.c_str());
        if (style.weight > 0) {
            cairo_set_line_width(_context.get(), style.weight);
            cairo_stroke_preserve(_context.get());
        }
        cairo_fill(_context.get());
        x += extents.x_advance + style.tracking;
    }
}

void CPen::StrokePath(double width, const SColour& colour) {
    SetColour(colour);
    cairo_set_line_width(_context.get(), width);
    cairo_stroke(_context.get());
}

void CPen::FillPath(const SColour& colour) {
    SetColour(colour);
    cairo_fill(_context.get());
}

CBitmap CPen::Result() {
    cairo_surface_flush(_surface.get());
    const int width = cairo_image_surface_get_width(_surface.get());
    const int height = cairo_image_surface_get_height(_surface.get());
    const int stride = cairo_image_surface_get_stride(_surface.get());
    const unsigned char* data = cairo_image_surface_get_data(_surface.get());
    CBitmap bitmap(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint32_t argb = 0;
            std::memcpy(&argb, data + static_cast<std::ptrdiff_t>(y) * stride + x * 4, sizeof argb);
            const auto channel = [argb](int shift) { return static_cast<float>(argb >> shift & 0xFF) / 255; };
            bitmap.At(x, y) = {channel(16), channel(8), channel(0), channel(24)};
        }
    }
    return bitmap;
}

} // namespace KAV::Artwork
