#pragma once

#include <cstdint>

/// Numbers of OpenGL, under their names there.
namespace KAV::GFX::OGL {

// NOLINTBEGIN(readability-identifier-naming)
inline constexpr std::uint32_t GL_LINES = 1;
inline constexpr std::uint32_t GL_LINE_STRIP = 3;
inline constexpr std::uint32_t GL_QUADS = 7;
inline constexpr std::uint32_t GL_SRC_ALPHA = 0x0302;
inline constexpr std::uint32_t GL_ONE_MINUS_SRC_ALPHA = 0x0303;
inline constexpr std::uint32_t GL_LINE_SMOOTH = 0x0B20;
inline constexpr std::uint32_t GL_LIGHTING = 0x0B50;
inline constexpr std::uint32_t GL_BLEND = 0x0BE2;
inline constexpr std::uint32_t GL_SCISSOR_TEST = 0x0C11;
inline constexpr std::uint32_t GL_MAX_TEXTURE_SIZE = 0x0D33;
inline constexpr std::uint32_t GL_TEXTURE_2D = 0x0DE1;
inline constexpr std::uint32_t GL_UNSIGNED_BYTE = 0x1401;
inline constexpr std::uint32_t GL_VENDOR = 0x1F00;
inline constexpr std::uint32_t GL_RENDERER = 0x1F01;
inline constexpr std::uint32_t GL_VERSION = 0x1F02;
inline constexpr std::int32_t GL_LINEAR = 0x2601;
inline constexpr std::uint32_t GL_TEXTURE_MAG_FILTER = 0x2800;
inline constexpr std::uint32_t GL_TEXTURE_MIN_FILTER = 0x2801;
inline constexpr std::uint32_t GL_TEXTURE_WRAP_S = 0x2802;
inline constexpr std::uint32_t GL_TEXTURE_WRAP_T = 0x2803;
inline constexpr std::int32_t GL_REPEAT = 0x2901;
inline constexpr std::uint32_t GL_T2F_C4UB_V3F = 0x2A29;
inline constexpr std::uint32_t GL_COLOR_BUFFER_BIT = 0x4000;
inline constexpr std::int32_t GL_RGB8 = 0x8051;
inline constexpr std::int32_t GL_RGBA8 = 0x8058;
inline constexpr std::uint32_t GL_BGRA = 0x80E1;
inline constexpr std::int32_t GL_CLAMP_TO_EDGE = 0x812F;
// NOLINTEND(readability-identifier-naming)

} // namespace KAV::GFX::OGL
