#pragma once

#include "gui/pictures.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace KAV::Native {

/// A picture that is about to be drawn, and the size of one of its frames there.
struct SPictureWish {
    std::u16string name;
    std::int32_t width = 0; ///< pixels
    std::int32_t height = 0;
};

/// The stored pictures and the texts of an editor on this system. Threads: the window's.
class CNativePictures final : public GUI::IPictures {
public:
    CNativePictures();
    ~CNativePictures() override;

    /// Before an editor opens: loads what it needs. The name of a library that is missing, or an empty text.
    std::u16string Begin();
    /// After it has closed: gives fonts back. What the next editor will most likely need is kept.
    void End() noexcept;
    /// Decodes and scales pictures ahead of the first frame, on two threads at once. Failures are left to
    /// the draw that needs the picture.
    void Prepare(std::span<const SPictureWish> wishes) noexcept;

    // GUI::IPictures
    std::unique_ptr<Pixels::SBitmap> LoadImage(
        const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur) override;
    Pixels::SBitmap Letter(
        const GUI::SLettering& a_sLettering, std::int32_t a_nW, std::int32_t a_nH) override;
    GUI::SPixelSize Measure(const GUI::SLettering& a_sLettering) override;
    bool HasNewTexts() override;

private:
    class CParts;
    std::unique_ptr<CParts> _parts; // of this system; null between End() and Begin()
};

} // namespace KAV::Native
