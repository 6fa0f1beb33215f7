#pragma once

#include <pixman.h>

/// The library that lays pictures over each other, loaded when an editor first draws by software: a host
/// that opens no editor needs none of it. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SPixman {
    decltype(&pixman_version_string) version_string;
    decltype(&pixman_image_create_bits_no_clear) image_create_bits_no_clear;
    decltype(&pixman_image_create_solid_fill) image_create_solid_fill;
    decltype(&pixman_image_unref) image_unref;
    decltype(&pixman_image_set_component_alpha) image_set_component_alpha;
    decltype(&pixman_image_set_repeat) image_set_repeat;
    decltype(&pixman_image_composite32) image_composite32;
};

/// The functions, for the life of the process; null if the library is missing or incomplete.
const SPixman* Pixman() noexcept;

} // namespace KAV::Platform
