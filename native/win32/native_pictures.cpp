#include "native/native_pictures.h"

#include "native/picture_source.h"
#include "pixels/sheet_store.h"
#include "platform/winapi/gdiplus_library.h"
#include "utils/exceptions.h"

#include <algorithm>
#include <new>
#include <utility>

namespace KAV::Native {

namespace {

using Gdiplus::Ok;
using Platform::SGdiplus;

/// An object of GDI+, freed by the function that is named with it.
template<typename TObject>
class TOwned final {
public:
    using Free = Gdiplus::GpStatus(WINGDIPAPI*)(TObject*);

    explicit TOwned(Free free) noexcept : _free(free) {}
    ~TOwned() {
        if (_object != nullptr) _free(_object);
    }
    TOwned(const TOwned&) = delete;
    TOwned& operator=(const TOwned&) = delete;

    TObject* Get() const noexcept { return _object; }
    TObject** Out() noexcept { return &_object; }

private:
    Free _free;
    TObject* _object = nullptr;
};

const wchar_t* Wide(const std::u16string& text) noexcept {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

Gdiplus::StringAlignment Alignment(std::int32_t place) noexcept {
    if (place == 0) return Gdiplus::StringAlignmentNear;
    return place == 1 ? Gdiplus::StringAlignmentCenter : Gdiplus::StringAlignmentFar;
}

/// The typeface and the form of a text. A family that the system doesn't have is replaced by its usual one
/// without serifs.
class CStyle final {
public:
    CStyle(const SGdiplus& gdi, const GUI::SLettering& lettering)
        : _family(gdi.GdipDeleteFontFamily), _font(gdi.GdipDeleteFont), _format(gdi.GdipDeleteStringFormat) {
        if (gdi.GdipCreateFontFamilyFromName(Wide(lettering.sFont), nullptr, _family.Out()) != Ok)
            gdi.GdipGetGenericFontFamilySansSerif(_family.Out());
        const INT style = (lettering.bBold ? Gdiplus::FontStyleBold : Gdiplus::FontStyleRegular) |
                          (lettering.bItalic ? Gdiplus::FontStyleItalic : Gdiplus::FontStyleRegular);
        gdi.GdipCreateFont(_family.Get(), lettering.fPixels, style, Gdiplus::UnitPixel, _font.Out());
        // Without the room that the usual format leaves on both sides, for which boxes are too narrow.
        Gdiplus::GpStringFormat* plain = nullptr;
        if (gdi.GdipStringFormatGetGenericTypographic(&plain) != Ok ||
            gdi.GdipCloneStringFormat(plain, _format.Out()) != Ok)
            return;
        gdi.GdipSetStringFormatFlags(_format.Get(), Gdiplus::StringFormatFlagsNoWrap |
                                                        Gdiplus::StringFormatFlagsNoFitBlackBox |
                                                        Gdiplus::StringFormatFlagsMeasureTrailingSpaces);
        const std::int32_t align = std::clamp(lettering.nAlign, 0, 8);
        gdi.GdipSetStringFormatAlign(_format.Get(), Alignment(align % 3));
        gdi.GdipSetStringFormatLineAlign(_format.Get(), Alignment(align / 3));
        gdi.GdipSetStringFormatTrimming(_format.Get(),
            lettering.bEllipsis ? Gdiplus::StringTrimmingEllipsisCharacter : Gdiplus::StringTrimmingNone);
    }

    bool IsWhole() const noexcept { return _font.Get() != nullptr && _format.Get() != nullptr; }
    Gdiplus::GpFont* Font() const noexcept { return _font.Get(); }
    Gdiplus::GpStringFormat* Format() const noexcept { return _format.Get(); }

private:
    TOwned<Gdiplus::GpFontFamily> _family;
    TOwned<Gdiplus::GpFont> _font;
    TOwned<Gdiplus::GpStringFormat> _format;
};

Gdiplus::TextRenderingHint Hint(const GUI::SLettering& lettering) noexcept {
    return static_cast<Gdiplus::TextRenderingHint>(lettering.nQuality);
}

[[noreturn]] void Fail(const GUI::SLettering& lettering, Gdiplus::Status status) {
    throw Exceptions::GDIPImage(u"LabelImageTop", lettering.nW, lettering.nH, status);
}

} // namespace

/// While it lives, GDI+ works and the store of pictures counts the editor.
class CNativePictures::CParts {
public:
    CParts() noexcept { Pixels::CSheetStore::OfProcess().Begin(); }
    ~CParts() { Pixels::CSheetStore::OfProcess().End(); }
    CParts(const CParts&) = delete;
    CParts& operator=(const CParts&) = delete;

    bool Works() const noexcept { return _use.Works(); }

private:
    Platform::CGdiplusUse _use;
};

CNativePictures::CNativePictures() = default;
CNativePictures::~CNativePictures() = default;

std::u16string CNativePictures::Begin() {
    if (Platform::Gdiplus() == nullptr) return u"gdiplus.dll";
    _parts = std::make_unique<CParts>();
    return _parts->Works() ? std::u16string() : u"gdiplus.dll";
}

void CNativePictures::End() noexcept {
    _parts.reset();
}

void CNativePictures::Prepare(std::span<const SPictureWish> wishes) noexcept {
    try {
        for (const auto& wish : wishes) {
            const auto sheet = StoredSheet(wish.name);
            if (sheet != nullptr && wish.width > 0 && wish.height > 0) sheet->Cells(wish.width, wish.height);
        }
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
    const auto* const library = Platform::Gdiplus();
    if (library == nullptr || _parts == nullptr || bitmap.bytes.empty() || lettering.sText.empty())
        return bitmap;
    const auto& gdi = *library;
    const CStyle style(gdi, lettering);
    if (!style.IsWhole()) return bitmap; // no typeface: no text
    TOwned<Gdiplus::GpImage> image(gdi.GdipDisposeImage);
    Gdiplus::GpBitmap* made = nullptr;
    auto status = gdi.GdipCreateBitmapFromScan0(
        bitmap.width, bitmap.height, bitmap.stride, PixelFormat32bppPARGB, bitmap.bytes.data(), &made);
    *image.Out() = made;
    if (status != Ok) Fail(lettering, status);
    TOwned<Gdiplus::GpGraphics> graphics(gdi.GdipDeleteGraphics);
    status = gdi.GdipGetImageGraphicsContext(image.Get(), graphics.Out());
    if (status != Ok) Fail(lettering, status);
    gdi.GdipSetTextRenderingHint(graphics.Get(), Hint(lettering));
    Gdiplus::GpSolidFill* fill = nullptr;
    status = gdi.GdipCreateSolidFill(lettering.nColor, &fill);
    TOwned<Gdiplus::GpBrush> brush(gdi.GdipDeleteBrush);
    *brush.Out() = fill;
    if (status != Ok) Fail(lettering, status);
    const Gdiplus::RectF box(static_cast<float>(lettering.nL), static_cast<float>(lettering.nT),
        static_cast<float>(lettering.nW), static_cast<float>(lettering.nH));
    status = gdi.GdipDrawString(graphics.Get(), Wide(lettering.sText),
        static_cast<INT>(lettering.sText.size()), style.Font(), &box, style.Format(), brush.Get());
    if (status != Ok) Fail(lettering, status);
    return bitmap;
}

GUI::SPixelSize CNativePictures::Measure(const GUI::SLettering& lettering) {
    const auto* const library = Platform::Gdiplus();
    if (library == nullptr || _parts == nullptr) return {};
    const auto& gdi = *library;
    const CStyle style(gdi, lettering);
    if (!style.IsWhole()) return {};
    // On a picture of one pixel: no window has to be there.
    TOwned<Gdiplus::GpImage> image(gdi.GdipDisposeImage);
    Gdiplus::GpBitmap* made = nullptr;
    gdi.GdipCreateBitmapFromScan0(1, 1, 0, PixelFormat32bppPARGB, nullptr, &made);
    *image.Out() = made;
    TOwned<Gdiplus::GpGraphics> graphics(gdi.GdipDeleteGraphics);
    if (made == nullptr || gdi.GdipGetImageGraphicsContext(made, graphics.Out()) != Ok) return {};
    gdi.GdipSetTextRenderingHint(graphics.Get(), Hint(lettering));
    const Gdiplus::RectF anywhere(0.0f, 0.0f, 0.0f, 0.0f);
    Gdiplus::RectF bounds;
    if (gdi.GdipMeasureString(graphics.Get(), Wide(lettering.sText), static_cast<INT>(lettering.sText.size()),
            style.Font(), &anywhere, style.Format(), &bounds, nullptr, nullptr) != Ok)
        return {};
    return {bounds.Width, bounds.Height};
}

bool CNativePictures::HasNewTexts() {
    if (_parts != nullptr) Pixels::CSheetStore::OfProcess().Tick(); // the toolkit asks once in each tick
    return false;
}

} // namespace KAV::Native
