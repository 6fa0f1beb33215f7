// This system has no software renderer yet: no canvas is ever made here, and none gets ready.

#include "gfx/cpu/canvas.h"

#include <new>
#include <utility>

namespace KAV::GFX::CPU {

CSource::CSource(std::shared_ptr<const Pixels::SBitmap> a_piBitmap)
    : _piBitmap(std::move(a_piBitmap)), _nSerial(0), _bOpaque(false), _piImage(nullptr) {
    throw std::bad_alloc();
}

CSource::~CSource() = default;

bool CCanvas::IsOnThisSystem() noexcept {
    return false;
}

CCanvas::~CCanvas() = default;

bool CCanvas::Start(CCallLog&) {
    return false;
}

bool CCanvas::Resize(std::int32_t, std::int32_t, CCallLog&) {
    return false;
}

bool CCanvas::Release() noexcept {
    return false;
}

void CCanvas::Blacken(const SArea&) noexcept {}

void CCanvas::Lay(const CSource&, const SArea&, std::int32_t, std::int32_t, std::uint32_t, bool) {}

} // namespace KAV::GFX::CPU
