#pragma once

#include "gfx/draw.h"
#include "pixels/image_name.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <optional>

/// Which pixels of a picture a draw takes, for the renderers that scale cells before they draw them.
namespace KAV::GFX {

/// A rectangle of a picture, in its pixels.
struct SPart {
    double fL = 0.0;
    double fT = 0.0;
    double fW = 0.0;
    double fH = 0.0;
};

/// A place that is less than a thousandth of a pixel away from a whole number counts as that number.
inline double Settled(double a_fPlace) noexcept {
    constexpr double fNear = 1.0 / 1024.0;
    const double fWhole = std::round(a_fPlace);
    return std::abs(a_fPlace - fWhole) < fNear ? fWhole : a_fPlace;
}

/// From edges of it.
inline SPart PartOf(double a_fL, double a_fT, double a_fR, double a_fB) noexcept {
    const double fL = Settled(a_fL);
    const double fT = Settled(a_fT);
    return {fL, fT, Settled(a_fR) - fL, Settled(a_fB) - fT};
}

/// Not for infinity, nor for what isn't a number.
inline bool AreUsable(std::initializer_list<float> a_afNumbers) noexcept {
    constexpr float fMost = 1e6f;
    return std::all_of(a_afNumbers.begin(), a_afNumbers.end(),
        [](float a_fNumber) { return a_fNumber >= -fMost && a_fNumber <= fMost; });
}

inline bool IsUsable(const SRect& a_sRect) noexcept {
    return AreUsable({a_sRect.fL, a_sRect.fT, a_sRect.fW, a_sRect.fH}) && a_sRect.fW > 0.0f &&
           a_sRect.fH > 0.0f;
}

inline bool IsUsable(const STransform& a_sValue) noexcept {
    return AreUsable({a_sValue.fSX, a_sValue.fSY, a_sValue.fSZ, a_sValue.fRX, a_sValue.fRY, a_sValue.fRZ,
        a_sValue.fMX, a_sValue.fMY, a_sValue.fMZ});
}

/// The number of the cell that begins and ends there, if it is one; cells are a_fCell long.
inline std::optional<std::int32_t> CellAt(
    double a_fStart, double a_fLength, double a_fCell, std::int32_t a_nCells) noexcept {
    constexpr double fNear = 0.01;
    const double fCell = std::round(a_fStart / a_fCell);
    if (std::abs(a_fLength - a_fCell) > fNear || std::abs(fCell * a_fCell - a_fStart) > fNear)
        return std::nullopt;
    if (fCell < 0.0 || fCell >= a_nCells) return std::nullopt;
    return static_cast<std::int32_t>(fCell);
}

/// A side of a cell as it is drawn; at least one.
inline std::int32_t WholePixels(float a_fLength) noexcept {
    return std::max(static_cast<std::int32_t>(std::lround(a_fLength)), 1);
}

/// Larger pictures are stretched from the stored one.
inline bool CanScaleTo(
    const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH) noexcept {
    constexpr std::int64_t nMostPixels = 1 << 26;
    constexpr std::int64_t nLongestSide = 0xFFFF;
    const std::int64_t nW = std::int64_t{a_sGrid.columns} * a_nCellW;
    const std::int64_t nH = std::int64_t{a_sGrid.rows} * a_nCellH;
    return nW <= nLongestSide && nH <= nLongestSide && nW * nH <= nMostPixels;
}

/// The first pixel whose centre isn't before the place, from 0 to a_nMost: how clips meet pixels. What isn't
/// a number is 0.
inline std::int32_t FirstPixel(float a_fPlace, std::int32_t a_nMost) noexcept {
    const double fFirst = std::ceil(static_cast<double>(a_fPlace) - 0.5);
    return fFirst > 0.0 ? static_cast<std::int32_t>(std::min(fFirst, static_cast<double>(a_nMost))) : 0;
}

} // namespace KAV::GFX
