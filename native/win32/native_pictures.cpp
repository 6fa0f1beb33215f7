#include "native/native_pictures.h"

namespace KAV::Native {

class CNativePictures::CParts {};

CNativePictures::CNativePictures() = default;
CNativePictures::~CNativePictures() = default;

std::u16string CNativePictures::Begin() {
    return {};
}

void CNativePictures::End() noexcept {}

void CNativePictures::Prepare(std::span<const SPictureWish>) noexcept {}

std::unique_ptr<Pixels::SBitmap> CNativePictures::LoadImage(
    const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur) {
    return IPictures::LoadImage(a_sName, a_nW, a_nH, a_nBlur);
}

Pixels::SBitmap CNativePictures::Letter(
    const GUI::SLettering& a_sLettering, std::int32_t a_nW, std::int32_t a_nH) {
    return IPictures::Letter(a_sLettering, a_nW, a_nH);
}

GUI::SPixelSize CNativePictures::Measure(const GUI::SLettering& a_sLettering) {
    return IPictures::Measure(a_sLettering);
}

bool CNativePictures::HasNewTexts() {
    return false;
}

} // namespace KAV::Native
