#include "gfx/cpu/mapping.h"

#include "gfx/cpu/channels.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace KAV::GFX::CPU {

namespace {

constexpr double NearlyWhole = 1.0 / 1024.0;

/// An entry of a matrix: turns by quarters are exact, although their sines aren't.
double SettledEntry(float a_fEntry) noexcept {
    const auto fEntry = static_cast<double>(a_fEntry);
    constexpr double fNear = 1e-6;
    const double fWhole = std::round(fEntry);
    return std::abs(fEntry - fWhole) < fNear && std::abs(fWhole) <= 1.0 ? fWhole : fEntry;
}

/// How much of the pixel whose centre is that far from the beginning of an interval lies in the interval.
double Covered(double a_fFromStart, double a_fLength) noexcept {
    const double fCovered = std::min(a_fFromStart + 0.5, a_fLength) - std::max(a_fFromStart - 0.5, 0.0);
    return std::clamp(fCovered, 0.0, 1.0);
}

/// One of the two axes of a quad, at the pixels of one row of the frame.
struct SAxis {
    double fStep;     // in the quad, from one pixel to the next
    double fAtZero;   // in the quad, at the centre of pixel 0 of the row
    double fLength;   // in the quad
    double fPerPixel; // length in the quad of one pixel of the frame across the quad's edge
    bool bMeetsFirst; // another slice, at the axis's beginning
    bool bMeetsLast;

    double At(std::int32_t x) const noexcept { return fAtZero + fStep * x; }
    double CoveredAt(double a_fPlace) const noexcept {
        if ((bMeetsFirst && a_fPlace < 0.0) || (bMeetsLast && a_fPlace >= fLength)) return 0.0;
        // An edge that meets another slice is as if it were far away.
        const double fStart = bMeetsFirst ? 1.0 : 0.0;
        const double fEnd = bMeetsLast ? 1.0 : 0.0;
        return Covered(a_fPlace / fPerPixel + fStart, fLength / fPerPixel + fStart + fEnd);
    }
    /// Narrows a run of pixels to those that may be covered. One more at each end does no harm.
    void Narrow(std::int32_t& a_rnFirst, std::int32_t& a_rnEnd) const noexcept {
        const double fFrom = -fPerPixel - fAtZero;
        const double fTo = fLength + fPerPixel - fAtZero;
        if (std::abs(fStep) < 1e-12) {
            if (fFrom > 0.0 || fTo < 0.0) a_rnEnd = a_rnFirst;
            return;
        }
        const double fOne = fFrom / fStep;
        const double fOther = fTo / fStep;
        const auto fFirst = static_cast<double>(a_rnFirst);
        const auto fEnd = static_cast<double>(a_rnEnd);
        a_rnFirst = static_cast<std::int32_t>(std::clamp(std::floor(std::min(fOne, fOther)), fFirst, fEnd));
        a_rnEnd = static_cast<std::int32_t>(std::clamp(std::ceil(std::max(fOne, fOther)) + 1, fFirst, fEnd));
    }
};

/// Where one of the picture's axes may be read, and between which pixels a place lies.
class CReach final {
public:
    CReach(double a_fStart, double a_fLength, std::int32_t a_nPicture, bool a_bRepeat) noexcept
        : _nPicture(a_nPicture), _bRepeat(a_bRepeat) {
        const auto fLast = static_cast<double>(a_nPicture - 1);
        _nFirst = static_cast<std::int32_t>(std::clamp(std::floor(a_fStart + NearlyWhole), 0.0, fLast));
        _nLast = static_cast<std::int32_t>(std::clamp(
            std::ceil(a_fStart + a_fLength - NearlyWhole) - 1.0, static_cast<double>(_nFirst), fLast));
    }
    struct SBetween {
        std::int32_t nOne;
        std::int32_t nOther;
        float fShare; // of the other
    };
    SBetween At(double a_fPlace) const noexcept {
        const double fCentre = a_fPlace - 0.5;
        auto nBefore = static_cast<std::int64_t>(fCentre);
        if (static_cast<double>(nBefore) > fCentre) --nBefore; // as floor(), which is a slow call
        const double fShare = fCentre - static_cast<double>(nBefore);
        return {Inside(nBefore), Inside(nBefore + 1), static_cast<float>(fShare)};
    }

private:
    std::int32_t Inside(std::int64_t a_nPixel) const noexcept {
        if (!_bRepeat) return static_cast<std::int32_t>(std::clamp<std::int64_t>(a_nPixel, _nFirst, _nLast));
        const std::int64_t nRest = a_nPixel % _nPicture;
        return static_cast<std::int32_t>(nRest < 0 ? nRest + _nPicture : nRest);
    }

    std::int32_t _nPicture;
    std::int32_t _nFirst; // of the part; not below 0
    std::int32_t _nLast;  // not below the first, and in the picture
    bool _bRepeat;
};

/// By what a colour multiplies premultiplied channels.
Channels Factors(std::uint32_t a_nColor) noexcept {
    return Channels::Of(a_nColor).Premultiplied() * (1.0f / FullChannel);
}

Channels Sample(
    const CSource& a_piSource, const CReach::SBetween& a_sX, const CReach::SBetween& a_sY) noexcept {
    const std::uint32_t* const pOne = a_piSource.Row(a_sY.nOne);
    const std::uint32_t* const pOther = a_piSource.Row(a_sY.nOther);
    const auto between = [](Channels a_sOne, Channels a_sOther, float a_fShare) {
        return a_sOne + (a_sOther - a_sOne) * a_fShare;
    };
    const auto row = [&](const std::uint32_t* a_pRow) {
        return between(Channels::Of(a_pRow[a_sX.nOne]), Channels::Of(a_pRow[a_sX.nOther]), a_sX.fShare);
    };
    return between(row(pOne), row(pOther), a_sY.fShare);
}

} // namespace

bool SMapping::operator==(const SMapping& a_sOther) const noexcept {
    const auto all = [](const SMapping& a_sValue) {
        return std::array{a_sValue.fXX, a_sValue.fXY, a_sValue.fX, a_sValue.fYX, a_sValue.fYY, a_sValue.fY,
            a_sValue.fW, a_sValue.fH, a_sValue.sPart.fL, a_sValue.sPart.fT, a_sValue.sPart.fW,
            a_sValue.sPart.fH};
    };
    return bRepeat == a_sOther.bRepeat && sMeeting == a_sOther.sMeeting && all(*this) == all(a_sOther);
}

std::optional<SMapping> MappingOf(
    const SRect& a_sTo, const SFlatMatrix* a_psMatrix, const SPart& a_sPart, bool a_bRepeat) noexcept {
    SMapping sMapping;
    const double fL = Settled(static_cast<double>(a_sTo.fL));
    const double fT = Settled(static_cast<double>(a_sTo.fT));
    sMapping.fW = Settled(static_cast<double>(a_sTo.fW));
    sMapping.fH = Settled(static_cast<double>(a_sTo.fH));
    sMapping.sPart = a_sPart;
    sMapping.bRepeat = a_bRepeat;
    sMapping.fX = -fL;
    sMapping.fY = -fT;
    if (a_psMatrix == nullptr) return sMapping;

    const double f11 = SettledEntry(a_psMatrix->m11);
    const double f12 = SettledEntry(a_psMatrix->m12);
    const double f21 = SettledEntry(a_psMatrix->m21);
    const double f22 = SettledEntry(a_psMatrix->m22);
    const double fShiftX = Settled(static_cast<double>(a_psMatrix->dx));
    const double fShiftY = Settled(static_cast<double>(a_psMatrix->dy));
    const double fArea = f11 * f22 - f12 * f21;
    constexpr double fNothing = 1e-6;
    if (!(std::abs(fArea) > fNothing)) return std::nullopt;
    // The inverse: from the place in the frame to that before the matrix moved it.
    sMapping.fXX = f22 / fArea;
    sMapping.fXY = -f21 / fArea;
    sMapping.fYX = -f12 / fArea;
    sMapping.fYY = f11 / fArea;
    sMapping.fX = Settled(-(fShiftX * sMapping.fXX + fShiftY * sMapping.fXY) - fL);
    sMapping.fY = Settled(-(fShiftX * sMapping.fYX + fShiftY * sMapping.fYY) - fT);
    return sMapping;
}

std::optional<SStep> StepOf(const SMapping& a_sMapping) noexcept {
    const auto& s = a_sMapping;
    const auto whole = [](double a_fValue) { return a_fValue == std::round(a_fValue); };
    const bool bMoves = s.fXX == 1.0 && s.fXY == 0.0 && s.fYX == 0.0 && s.fYY == 1.0;
    if (!bMoves || !whole(s.fX) || !whole(s.fY) || !whole(s.fW) || !whole(s.fH)) return std::nullopt;
    if (s.sPart.fW != s.fW || s.sPart.fH != s.fH || !whole(s.sPart.fL) || !whole(s.sPart.fT))
        return std::nullopt;
    return SStep{static_cast<std::int32_t>(s.sPart.fL + s.fX), static_cast<std::int32_t>(s.sPart.fT + s.fY)};
}

SArea BoundsOf(const SMapping& a_sMapping, const SArea& a_sWithin) noexcept {
    const auto& s = a_sMapping;
    const double fArea = s.fXX * s.fYY - s.fXY * s.fYX;
    double fL = 0.0;
    double fR = 0.0;
    double fT = 0.0;
    double fB = 0.0;
    bool bFirst = true;
    for (const double fX : {0.0, s.fW}) {
        for (const double fY : {0.0, s.fH}) {
            const double fAcross = ((fX - s.fX) * s.fYY - (fY - s.fY) * s.fXY) / fArea;
            const double fDown = ((fY - s.fY) * s.fXX - (fX - s.fX) * s.fYX) / fArea;
            fL = bFirst ? fAcross : std::min(fL, fAcross);
            fR = bFirst ? fAcross : std::max(fR, fAcross);
            fT = bFirst ? fDown : std::min(fT, fDown);
            fB = bFirst ? fDown : std::max(fB, fDown);
            bFirst = false;
        }
    }
    // A pixel whose centre is less than half a pixel away from the quad, across an edge, is covered in part.
    // Beyond a pointed corner that is further away from the corner itself, but covered by less and less.
    const bool bUpright = (s.fXY == 0.0 && s.fYX == 0.0) || (s.fXX == 0.0 && s.fYY == 0.0);
    const double fSoft = bUpright ? 0.0 : 1.0;
    const auto clamp = [](double a_fValue, std::int32_t a_nFrom, std::int32_t a_nLength) {
        return static_cast<std::int32_t>(
            std::clamp(a_fValue, static_cast<double>(a_nFrom), static_cast<double>(a_nFrom) + a_nLength));
    };
    const std::int32_t nL = clamp(std::floor(Settled(fL) - fSoft), a_sWithin.left, a_sWithin.width);
    const std::int32_t nT = clamp(std::floor(Settled(fT) - fSoft), a_sWithin.top, a_sWithin.height);
    const std::int32_t nR = clamp(std::ceil(Settled(fR) + fSoft), a_sWithin.left, a_sWithin.width);
    const std::int32_t nB = clamp(std::ceil(Settled(fB) + fSoft), a_sWithin.top, a_sWithin.height);
    return {nL, nT, nR - nL, nB - nT};
}

void LayMapped(CCanvas& a_rsCanvas, const CSource& a_piSource, const SMapping& a_sMapping,
    std::uint32_t a_nColor, const SArea& a_sArea) noexcept {
    const auto& s = a_sMapping;
    const CReach iReachX(s.sPart.fL, s.sPart.fW, a_piSource.Width(), s.bRepeat);
    const CReach iReachY(s.sPart.fT, s.sPart.fH, a_piSource.Height(), s.bRepeat);
    const double fScaleX = s.sPart.fW / s.fW;
    const double fScaleY = s.sPart.fH / s.fH;
    const auto sFactors = Factors(a_nColor);
    SAxis sX{s.fXX, 0.0, s.fW, std::hypot(s.fXX, s.fXY), s.sMeeting.bL, s.sMeeting.bR};
    SAxis sY{s.fYX, 0.0, s.fH, std::hypot(s.fYX, s.fYY), s.sMeeting.bT, s.sMeeting.bB};
    for (std::int32_t y = a_sArea.top; y < a_sArea.top + a_sArea.height; ++y) {
        // From the place of the pixel alone, so that a picture painted in parts is that painted at once.
        sX.fAtZero = s.fXX * 0.5 + s.fXY * (y + 0.5) + s.fX;
        sY.fAtZero = s.fYX * 0.5 + s.fYY * (y + 0.5) + s.fY;
        std::int32_t x = a_sArea.left;
        std::int32_t nEnd = x + a_sArea.width;
        sX.Narrow(x, nEnd);
        sY.Narrow(x, nEnd);
        std::uint32_t* const pRow = a_rsCanvas.Row(y);
        for (; x < nEnd; ++x) {
            const double fX = sX.At(x);
            const double fY = sY.At(x);
            const double fCovered = sX.CoveredAt(fX) * sY.CoveredAt(fY);
            if (fCovered <= 0.0) continue;
            const auto sSample = Sample(
                a_piSource, iReachX.At(s.sPart.fL + fX * fScaleX), iReachY.At(s.sPart.fT + fY * fScaleY));
            LayOver(sSample * sFactors, static_cast<float>(fCovered), pRow[x]);
        }
    }
}

} // namespace KAV::GFX::CPU
