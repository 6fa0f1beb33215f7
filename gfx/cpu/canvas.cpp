#include "gfx/cpu/canvas.h"

#include "gfx/cpu/rows.h"
#include "gfx/draw.h"
#include "platform/pixman/pixman_library.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <algorithm>
#include <atomic>
#include <new>

namespace KAV::GFX::CPU {

namespace {

using Platform::Pixman;

std::uint64_t NextSerial() noexcept {
    static std::atomic<std::uint64_t> serial{0};
    return ++serial;
}

bool IsOpaque(const Pixels::SBitmap& a_sBitmap) noexcept {
    for (std::int32_t y = 0; y < a_sBitmap.height; ++y) {
        const std::uint8_t* const pRow =
            a_sBitmap.bytes.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(a_sBitmap.stride);
        for (std::int32_t x = 0; x < a_sBitmap.width; ++x) {
            if (pRow[4 * x + 3] != 0xFF) return false;
        }
    }
    return true;
}

pixman_image_t* Image(void* a_pImage) noexcept {
    return static_cast<pixman_image_t*>(a_pImage);
}

void End(void*& a_pImage) noexcept {
    if (a_pImage != nullptr) Pixman()->image_unref(Image(a_pImage));
    a_pImage = nullptr;
}

/// Null if there is no memory.
void* NewImage(
    std::uint32_t* a_pPixels, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nStride) noexcept {
    return Pixman()->image_create_bits_no_clear(PIXMAN_a8r8g8b8, a_nW, a_nH, a_pPixels, a_nStride);
}

std::uint32_t Channel(std::uint32_t a_nColor, unsigned a_nShift) noexcept {
    return a_nColor >> a_nShift & 0xFFU;
}

} // namespace

CSource::CSource(std::shared_ptr<const Pixels::SBitmap> a_piBitmap)
    : _piBitmap(std::move(a_piBitmap)), _nSerial(NextSerial()), _bOpaque(CPU::IsOpaque(*_piBitmap)) {
    // The library never writes to a source.
    auto* const pPixels = const_cast<std::uint32_t*>(Row(0)); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    _piImage = NewImage(pPixels, _piBitmap->width, _piBitmap->height, _piBitmap->stride);
    if (_piImage == nullptr) throw std::bad_alloc();
}

CSource::~CSource() {
    End(_piImage);
}

CCanvas::~CCanvas() {
    Release();
}

bool CCanvas::Start(CCallLog& a_rsLog) {
    if (Pixman() == nullptr) {
        a_rsLog.Failed(u"dlopen(\"libpixman-1.so.0\", RTLD_NOW | RTLD_LOCAL)", 0);
        return false;
    }
    Utils::LogLine(u"Pixman=v" + Utils::ToUtf16(Pixman()->version_string()));
    return true;
}

bool CCanvas::Resize(std::int32_t a_nW, std::int32_t a_nH, CCallLog& a_rsLog) {
    Release();
    try {
        _vnPixels.assign(static_cast<std::size_t>(a_nW) * static_cast<std::size_t>(a_nH), 0xFF000000U);
    } catch (const std::exception&) { // more than there is, or than can be
        _vnPixels.clear();
    }
    if (!_vnPixels.empty()) _piImage = NewImage(_vnPixels.data(), a_nW, a_nH, 4 * a_nW);
    if (_piImage == nullptr) {
        _vnPixels.clear();
        a_rsLog.Failed(u"pixman_image_create_bits_no_clear(PIXMAN_a8r8g8b8, a_nW, a_nH, "
                       u"_vnPixels.data(), 4 * a_nW)",
            0);
        return false;
    }
    _nW = a_nW;
    _nH = a_nH;
    return true;
}

bool CCanvas::Release() noexcept {
    const bool bThere = IsReady();
    End(_piImage);
    End(_piTint);
    End(_piScratch);
    _vnPixels = {};
    _vnScratch = {};
    _nW = _nH = _nScratchW = _nScratchH = 0;
    return bThere;
}

void CCanvas::Blacken(const SArea& a_sArea) noexcept {
    for (std::int32_t y = a_sArea.top; y < a_sArea.top + a_sArea.height; ++y)
        std::fill_n(Row(y) + a_sArea.left, a_sArea.width, 0xFF000000U);
}

void* CCanvas::Tint(std::uint32_t a_nColor) {
    if (_piTint != nullptr && _nTint == a_nColor) return _piTint;
    const std::uint32_t nAlpha = Channel(a_nColor, 24);
    const auto mask = [nAlpha](std::uint32_t a_nChannel) {
        constexpr std::uint32_t nTo16Bits = 257;
        return static_cast<std::uint16_t>((a_nChannel * nAlpha + 127) / 255 * nTo16Bits);
    };
    const pixman_color_t sColor{
        mask(Channel(a_nColor, 16)), mask(Channel(a_nColor, 8)), mask(Channel(a_nColor, 0)), mask(0xFF)};
    End(_piTint);
    _piTint = Pixman()->image_create_solid_fill(&sColor);
    if (_piTint == nullptr) throw std::bad_alloc();
    // White only fades: then all channels share the mask, and one pass does what two would.
    Pixman()->image_set_component_alpha(Image(_piTint), (a_nColor & 0xFFFFFFU) != 0xFFFFFFU);
    _nTint = a_nColor;
    return _piTint;
}

void* CCanvas::Scratch(std::int32_t a_nW, std::int32_t a_nH) {
    if (_piScratch != nullptr && a_nW <= _nScratchW && a_nH <= _nScratchH) return _piScratch;
    const std::int32_t nW = std::max(a_nW, _nScratchW);
    const std::int32_t nH = std::max(a_nH, _nScratchH);
    End(_piScratch);
    _vnScratch.resize(static_cast<std::size_t>(nW) * static_cast<std::size_t>(nH));
    _piScratch = NewImage(_vnScratch.data(), nW, nH, 4 * nW);
    if (_piScratch == nullptr) throw std::bad_alloc();
    _nScratchW = nW;
    _nScratchH = nH;
    return _piScratch;
}

void CCanvas::Lay(const CSource& a_piSource, const SArea& a_sArea, std::int32_t a_nDX, std::int32_t a_nDY,
    std::uint32_t a_nColor, bool a_bRepeat) {
    const auto [nL, nT, nW, nH] = a_sArea;
    if (a_nColor == White && !a_bRepeat) {
        const TRows<const std::uint32_t> sFrom{
            a_piSource.Row(nT + a_nDY) + nL + a_nDX, a_piSource._piBitmap->stride / 4};
        const TRows<std::uint32_t> sTo{Row(nT) + nL, _nW};
        ForRows(sFrom, sTo, nW, nH, a_piSource.IsOpaque() ? &CopyRow : &LayRow);
        return;
    }
    const auto& pixman = *Pixman();
    pixman_image_t* const piSource = Image(a_piSource._piImage);
    pixman_image_t* const piFrame = Image(_piImage);
    const bool bWhite = (a_nColor & 0xFFFFFFU) == 0xFFFFFFU;
    const bool bPlain = a_nColor == 0xFFFFFFFFU;
    pixman_image_t* const piTint = bPlain ? nullptr : Image(Tint(a_nColor));
    pixman_image_t* const piScratch = bWhite ? nullptr : Image(Scratch(nW, nH));
    if (a_bRepeat) pixman.image_set_repeat(piSource, PIXMAN_REPEAT_NORMAL);
    const std::int32_t nSourceL = nL + a_nDX;
    const std::int32_t nSourceT = nT + a_nDY;
    if (bWhite) {
        const auto nOperator = bPlain && a_piSource.IsOpaque() ? PIXMAN_OP_SRC : PIXMAN_OP_OVER;
        pixman.image_composite32(
            nOperator, piSource, piTint, piFrame, nSourceL, nSourceT, 0, 0, nL, nT, nW, nH);
    } else {
        pixman.image_composite32(
            PIXMAN_OP_SRC, piSource, piTint, piScratch, nSourceL, nSourceT, 0, 0, 0, 0, nW, nH);
        pixman.image_composite32(PIXMAN_OP_OVER, piScratch, nullptr, piFrame, 0, 0, 0, 0, nL, nT, nW, nH);
    }
    if (a_bRepeat) pixman.image_set_repeat(piSource, PIXMAN_REPEAT_NONE);
}

} // namespace KAV::GFX::CPU
