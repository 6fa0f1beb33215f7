#pragma once

#include <png.h>

/// The library that decodes PNG files, loaded when the first picture is needed: an instance without an editor
/// needs none, and nearly every system has it. Only for the Linux part of the product. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there. They are those of its simplified interface, which calls
/// nothing back and leaves every error in the record.
struct SPng {
    decltype(&::png_image_begin_read_from_memory) image_begin_read_from_memory;
    decltype(&::png_image_finish_read) image_finish_read;
    decltype(&::png_image_free) image_free;
};

/// The functions, for the life of the process; null if the library is missing or incomplete.
const SPng* Png() noexcept;

} // namespace KAV::Platform
