#pragma once

#include "artwork/bitmap.h"

#include <filesystem>

namespace KAV::Artwork {

/// Reads a PNG file of 8 bits per channel with alpha; any other form, and a broken file, throws
/// std::runtime_error with the file's name.
SPixels ReadPng(const std::filesystem::path& file);

/// Writes a PNG file of 8 bits per channel with alpha, packed as well as zlib can. Throws std::runtime_error.
void WritePng(const std::filesystem::path& file, const SPixels& pixels);

} // namespace KAV::Artwork
