#pragma once

#include "pixels/bitmap.h"
#include "platform/picture_target.h"

#include <cstdint>
#include <span>

/// The few shapes that menus and text boxes consist of. Colours are 0xAARRGGBB, not premultiplied; pictures
/// are premultiplied. What lies outside a picture is left out. Any thread.
namespace KAV::Native {

struct SSpot {
    float x = 0.0f;
    float y = 0.0f;
};

void Fill(Pixels::SBitmap& to, const Platform::SArea& area, std::uint32_t colour) noexcept;
/// A frame inside the area, `width` pixels wide.
void Frame(
    Pixels::SBitmap& to, const Platform::SArea& area, std::int32_t width, std::uint32_t colour) noexcept;
/// A line from spot to spot with round ends and joins, soft over one pixel.
void Stroke(Pixels::SBitmap& to, std::span<const SSpot> spots, float width, std::uint32_t colour) noexcept;
/// Copies a premultiplied picture over another one.
void Overlay(Pixels::SBitmap& to, const Pixels::SBitmap& from, std::int32_t left, std::int32_t top) noexcept;

} // namespace KAV::Native
