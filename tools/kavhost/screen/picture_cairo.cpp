#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/screen/picture.h"

#include <cairo.h>
#include <cstring>
#include <memory>

namespace KAV::Host {

namespace {

struct SSurfaceEnd {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};

cairo_status_t AppendPng(void* stream, const unsigned char* bytes, unsigned int size) {
    auto& png = *static_cast<std::ostream*>(stream);
    png.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return png ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

} // namespace

void WritePng(const SPicture& picture, std::ostream& png) {
    const std::unique_ptr<cairo_surface_t, SSurfaceEnd> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, picture.width, picture.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw CFailure("out of memory for a picture");
    const auto rowBytes = static_cast<std::size_t>(picture.width) * sizeof(std::uint32_t);
    for (std::int32_t y = 0; y < picture.height; ++y) {
        std::memcpy(cairo_image_surface_get_data(surface.get()) +
                        static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface.get()),
            picture.pixels.data() + static_cast<std::ptrdiff_t>(y) * picture.width, rowBytes);
    }
    cairo_surface_mark_dirty(surface.get());
    const auto status = cairo_surface_write_to_png_stream(surface.get(), AppendPng, &png);
    if (status != CAIRO_STATUS_SUCCESS && status != CAIRO_STATUS_WRITE_ERROR)
        throw CFailure(std::string("the picture cannot be written: ") + cairo_status_to_string(status));
}

} // namespace KAV::Host
