#include "native/native_pictures.h"

#include "native/linux/two_threads.h"
#include "native/picture_source.h"
#include "pixels/lettering.h"
#include "pixels/sheet_store.h"
#include "platform/pixman/pixman_library.h"
#include "platform/png/png_library.h"
#include "platform/resource.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

namespace KAV::Native {

namespace {

/// The family isn't passed on, since only one typeface comes with the library; nor is the quality, which
/// names ways of smoothing that only Windows has.
Pixels::STextLine LineOf(const GUI::SLettering& lettering) {
    Pixels::STextLine line;
    line.text = lettering.sText;
    line.pixels = lettering.fPixels;
    line.bold = lettering.bBold;
    line.italic = lettering.bItalic;
    line.ellipsis = lettering.bEllipsis;
    line.align = lettering.nAlign;
    line.colour = lettering.nColor;
    line.left = lettering.nL;
    line.top = lettering.nT;
    line.width = lettering.nW;
    line.height = lettering.nH;
    return line;
}

} // namespace

/// What an open editor has: its texts. While it lives, the store counts the editor.
class CNativePictures::CParts {
public:
    explicit CParts(std::unique_ptr<Pixels::CLettering> lettering) noexcept
        : _lettering(std::move(lettering)) {
        Pixels::CSheetStore::OfProcess().Begin();
    }
    ~CParts() {
        Pixels::CSheetStore::OfProcess().End();
        _lettering.reset();
        Platform::RestResources(); // the typeface's, too; other editors read theirs again
    }
    CParts(const CParts&) = delete;
    CParts& operator=(const CParts&) = delete;

    Pixels::CLettering& Lettering() noexcept { return *_lettering; }

private:
    std::unique_ptr<Pixels::CLettering> _lettering;
};

CNativePictures::CNativePictures() = default;
CNativePictures::~CNativePictures() = default;

std::u16string CNativePictures::Begin() {
    if (Platform::Png() == nullptr) return u"libpng16.so.16";
    if (Platform::Pixman() == nullptr)
        return u"libpixman-1.so.0"; // for the renderer that the others fall back to
    auto lettering = Pixels::CLettering::Create();
    if (lettering == nullptr) return u"libfreetype.so.6";
    _parts = std::make_unique<CParts>(std::move(lettering));
    return {};
}

void CNativePictures::End() noexcept {
    _parts.reset();
}

void CNativePictures::Prepare(std::span<const SPictureWish> wishes) noexcept {
    struct SWork {
        std::shared_ptr<const Pixels::ISheet> sheet;
        std::int32_t width;
        std::int32_t height;
        std::int64_t Pixels() const { return std::int64_t{sheet->Width()} * sheet->Height(); }
    };
    try {
        std::vector<SWork> work;
        for (const auto& wish : wishes) {
            if (auto sheet = StoredSheet(wish.name); sheet != nullptr && wish.width > 0 && wish.height > 0)
                work.push_back({std::move(sheet), wish.width, wish.height});
        }
        // The biggest first, so that in the end neither thread waits long for the other.
        std::stable_sort(
            work.begin(), work.end(), [](const SWork& a, const SWork& b) { return a.Pixels() > b.Pixels(); });
        OnTwoThreads(
            work.size(), [&work](std::size_t i) { work[i].sheet->Cells(work[i].width, work[i].height); });
    } catch (const std::exception&) { // the draw that needs the picture meets the same error, and reports it
    }
}

std::unique_ptr<Pixels::SBitmap> CNativePictures::LoadImage(
    const std::u16string& name, std::int32_t width, std::int32_t height, std::int32_t blur) {
    return MakeImage(name, {width, height, blur});
}

Pixels::SBitmap CNativePictures::Letter(
    const GUI::SLettering& lettering, std::int32_t width, std::int32_t height) {
    auto bitmap = Pixels::TransparentBitmap(width, height);
    if (_parts != nullptr) _parts->Lettering().Draw(LineOf(lettering), bitmap);
    return bitmap;
}

GUI::SPixelSize CNativePictures::Measure(const GUI::SLettering& lettering) {
    if (_parts == nullptr) return {};
    const auto size = _parts->Lettering().Measure(LineOf(lettering));
    return {size.width, size.height};
}

bool CNativePictures::HasNewTexts() {
    if (_parts == nullptr) return false;
    Pixels::CSheetStore::OfProcess().Tick(); // the toolkit asks once in each tick
    return _parts->Lettering().HasNewGlyphs();
}

} // namespace KAV::Native
