#include "gfx/transform.h"

#include <cmath>
#include <cstddef>

namespace KAV::GFX {

namespace {

// Products of large shifts and small sines would lose their last digits in single precision.
using Exact = std::array<std::array<double, 4>, 4>;

constexpr Exact Identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

Exact Product(const Exact& a_sFirst, const Exact& a_sThen) noexcept {
    Exact sProduct{};
    for (std::size_t nRow = 0; nRow < 4; ++nRow) {
        for (std::size_t nColumn = 0; nColumn < 4; ++nColumn) {
            for (std::size_t n = 0; n < 4; ++n)
                sProduct[nRow][nColumn] += a_sFirst[nRow][n] * a_sThen[n][nColumn];
        }
    }
    return sProduct;
}

Exact Shift(double a_fX, double a_fY, double a_fZ) noexcept {
    Exact sShift = Identity;
    sShift[3] = {a_fX, a_fY, a_fZ, 1};
    return sShift;
}

Exact Scale(double a_fX, double a_fY, double a_fZ) noexcept {
    return {{{a_fX, 0, 0, 0}, {0, a_fY, 0, 0}, {0, 0, a_fZ, 0}, {0, 0, 0, 1}}};
}

/// Turns axis `a_nFrom` towards axis `a_nTo`.
Exact Rotation(std::size_t a_nFrom, std::size_t a_nTo, float a_fDegrees) noexcept {
    const double fAngle = static_cast<double>(a_fDegrees) * 3.1415927 / 180.0;
    Exact sRotation = Identity;
    sRotation[a_nFrom][a_nFrom] = sRotation[a_nTo][a_nTo] = std::cos(fAngle);
    sRotation[a_nFrom][a_nTo] = std::sin(fAngle);
    sRotation[a_nTo][a_nFrom] = -std::sin(fAngle);
    return sRotation;
}

} // namespace

Matrix MatrixOf(const SRect& a_sRect, const STransform& a_sTransform) noexcept {
    constexpr std::size_t nX = 0;
    constexpr std::size_t nY = 1;
    constexpr std::size_t nZ = 2;
    const double fX = static_cast<double>(a_sRect.fL + std::round(a_sRect.fW / 2.0f));
    const double fY = static_cast<double>(a_sRect.fT + std::round(a_sRect.fH / 2.0f));
    const auto& s = a_sTransform;

    Exact sAll =
        Shift(static_cast<double>(s.fMX) - fX, static_cast<double>(s.fMY) - fY, static_cast<double>(s.fMZ));
    sAll = Product(sAll, Rotation(nX, nY, s.fRZ));
    sAll = Product(sAll, Rotation(nZ, nX, s.fRY));
    sAll = Product(sAll, Rotation(nY, nZ, s.fRX));
    sAll = Product(
        sAll, Scale(static_cast<double>(s.fSX), static_cast<double>(s.fSY), static_cast<double>(s.fSZ)));
    sAll = Product(sAll, Shift(fX, fY, 0.0));

    Matrix sMatrix{};
    for (std::size_t nRow = 0; nRow < 4; ++nRow) {
        for (std::size_t nColumn = 0; nColumn < 4; ++nColumn)
            sMatrix[nRow][nColumn] = static_cast<float>(sAll[nRow][nColumn]);
    }
    return sMatrix;
}

SFlatMatrix FlatPart(const Matrix& a_sMatrix) noexcept {
    return {
        a_sMatrix[0][0], a_sMatrix[0][1], a_sMatrix[1][0], a_sMatrix[1][1], a_sMatrix[3][0], a_sMatrix[3][1]};
}

} // namespace KAV::GFX
