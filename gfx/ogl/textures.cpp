#include "gfx/ogl/textures.h"

#include "gfx/ogl/constants.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace KAV::GFX::OGL {

namespace {

using Pixels::SBitmap;

const std::uint8_t* PixelAt(const SBitmap& a_sFrom, std::int32_t x, std::int32_t y) noexcept {
    return a_sFrom.bytes.data() + std::ptrdiff_t{a_sFrom.stride} * y + std::ptrdiff_t{4} * x;
}

/// Of a premultiplied pixel; the alpha isn't 0.
std::array<std::uint8_t, 4> StraightPixel(const std::uint8_t* a_pPixel) noexcept {
    const unsigned nAlpha = a_pPixel[3];
    const auto straight = [nAlpha](unsigned a_nColour) {
        return static_cast<std::uint8_t>(std::min((a_nColour * 255 + nAlpha / 2) / nAlpha, 255U));
    };
    return {straight(a_pPixel[0]), straight(a_pPixel[1]), straight(a_pPixel[2]), a_pPixel[3]};
}

/// A rectangle of a picture. Places outside are those at its edge, or at the opposite one.
struct SCell {
    const SBitmap& sFrom;
    std::int32_t nL, nT, nW, nH;
    bool bWraps;

    std::int32_t Inside(std::int32_t a_nAt, std::int32_t a_nSide) const noexcept {
        return bWraps ? (a_nAt + a_nSide) % a_nSide : std::clamp(a_nAt, 0, a_nSide - 1);
    }
    const std::uint8_t* At(std::int32_t x, std::int32_t y) const noexcept {
        return PixelAt(sFrom, nL + Inside(x, nW), nT + Inside(y, nH));
    }
    std::array<std::uint8_t, 4> StraightAt(std::int32_t x, std::int32_t y) const noexcept {
        const auto* const pPixel = At(x, y);
        return pPixel[3] != 0 ? StraightPixel(pPixel) : ColourAround(x, y);
    }

private:
    /// The mean colour of the pixels next to it, transparent.
    std::array<std::uint8_t, 4> ColourAround(std::int32_t x, std::int32_t y) const noexcept {
        std::array<unsigned, 3> nSums{};
        unsigned nAlphas = 0;
        for (std::int32_t j = y - 1; j <= y + 1; ++j) {
            for (std::int32_t i = x - 1; i <= x + 1; ++i) {
                const auto* const pPixel = At(i, j);
                for (std::size_t n = 0; n < nSums.size(); ++n) nSums[n] += pPixel[n];
                nAlphas += pPixel[3];
            }
        }
        if (nAlphas == 0) return {};
        const auto mean = [nAlphas](unsigned a_nSum) {
            return static_cast<std::uint8_t>(std::min((a_nSum * 255 + nAlphas / 2) / nAlphas, 255U));
        };
        return {mean(nSums[0]), mean(nSums[1]), mean(nSums[2]), 0};
    }
};

} // namespace

SObject CTextures::Make(const SBitmap& a_sPicture, std::int32_t a_nTexW, std::int32_t a_nTexH) {
    SObject sObject{0, a_nTexW, a_nTexH, true};
    _sGl.glGenTextures(1, &sObject.nName);
    const auto check = [this](std::u16string_view a_sCall) {
        const std::uint32_t nError = _sGl.glGetError();
        if (nError != 0) _iLog.Failed(a_sCall, static_cast<std::int32_t>(nError));
        return nError == 0;
    };
    bool bMade = check(u"glGenTextures(1, &nTexture)") && sObject.nName != 0;
    if (bMade) {
        const bool bAlpha = a_sPicture.alpha != Pixels::EAlpha::None;
        _sGl.glBindTexture(GL_TEXTURE_2D, sObject.nName);
        _sGl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        _sGl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        _sGl.glTexImage2D(GL_TEXTURE_2D, 0, bAlpha ? GL_RGBA8 : GL_RGB8, a_nTexW, a_nTexH, 0, GL_BGRA,
            GL_UNSIGNED_BYTE, nullptr);
        bMade = check(u"glTexImage2D(GL_TEXTURE_2D, 0, nInternalFormat, a_nTexW, a_nTexH, 0, nFormat, "
                      u"GL_UNSIGNED_BYTE, nullptr)");
    }
    if (bMade) {
        _sGl.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, a_sPicture.width, a_sPicture.height, GL_BGRA,
            GL_UNSIGNED_BYTE, a_sPicture.bytes.data());
        bMade =
            check(u"glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, a_nW, a_nH, nFormat, GL_UNSIGNED_BYTE, a_pBits)");
    }
    if (!bMade) Free(sObject);
    return sObject;
}

void CTextures::Free(SObject& a_rsObject) const noexcept {
    if (a_rsObject.nName != 0) _sGl.glDeleteTextures(1, &a_rsObject.nName);
    a_rsObject = {};
}

void CTextures::Bind(SObject& a_rsObject, bool a_bRepeat) const noexcept {
    _sGl.glBindTexture(GL_TEXTURE_2D, a_rsObject.nName);
    if (a_rsObject.bRepeats == a_bRepeat || !_bClampsToEdge) return;
    a_rsObject.bRepeats = a_bRepeat;
    const std::int32_t nBeyond = a_bRepeat ? GL_REPEAT : GL_CLAMP_TO_EDGE;
    _sGl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, nBeyond);
    _sGl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, nBeyond);
}

SBitmap StraightCells(
    const SBitmap& a_sFrom, const Pixels::SImageGrid& a_sGrid, std::int32_t a_nMargin, EMargin a_nKind) {
    const std::int32_t nW = a_sFrom.width / a_sGrid.columns;
    const std::int32_t nH = a_sFrom.height / a_sGrid.rows;
    const std::int32_t nStepW = nW + 2 * a_nMargin;
    const std::int32_t nStepH = nH + 2 * a_nMargin;
    auto sTo = Pixels::TransparentBitmap(nStepW * a_sGrid.columns, nStepH * a_sGrid.rows);
    sTo.alpha = Pixels::EAlpha::Straight;
    std::uint8_t* pTo = sTo.bytes.data();
    for (std::int32_t y = 0; y < sTo.height; ++y) {
        for (std::int32_t nColumn = 0; nColumn < a_sGrid.columns; ++nColumn) {
            const SCell sCell{a_sFrom, nColumn * nW, y / nStepH * nH, nW, nH, a_nKind == EMargin::Wrapped};
            for (std::int32_t x = -a_nMargin; x < nW + a_nMargin; ++x, pTo += 4) {
                const auto sPixel = sCell.StraightAt(x, y % nStepH - a_nMargin);
                std::memcpy(pTo, sPixel.data(), sPixel.size());
            }
        }
    }
    return sTo;
}

SBitmap Straight(const SBitmap& a_sFrom) {
    if (a_sFrom.alpha == Pixels::EAlpha::Premultiplied) return StraightCells(a_sFrom, {}, 0);
    auto sTo = Pixels::TransparentBitmap(a_sFrom.width, a_sFrom.height);
    sTo.alpha = a_sFrom.alpha;
    for (std::int32_t y = 0; y < sTo.height; ++y)
        std::memcpy(sTo.bytes.data() + std::ptrdiff_t{sTo.stride} * y, PixelAt(a_sFrom, 0, y),
            static_cast<std::size_t>(sTo.stride));
    return sTo;
}

} // namespace KAV::GFX::OGL
