#include "platform/winapi/gdiplus_library.h"

#include "platform/winapi/system_library.h"

#include <atomic>
#include <mutex>
#include <optional>

namespace KAV::Platform {

namespace {

std::optional<SGdiplus> LoadGdiplus() noexcept {
    const HMODULE library = LoadSystemLibrary(L"gdiplus.dll");
    if (library == nullptr) return std::nullopt;
    SGdiplus gdi{};
    bool isWhole = true;
    const auto find = [&](const char* name, auto& function) {
        isWhole = FindFunction(library, name, function) && isWhole;
    };
    find("GdiplusStartup", gdi.GdiplusStartup);
    find("GdiplusShutdown", gdi.GdiplusShutdown);
    find("GdipCreateBitmapFromScan0", gdi.GdipCreateBitmapFromScan0);
    find("GdipCreateBitmapFromStream", gdi.GdipCreateBitmapFromStream);
    find("GdipCloneBitmapAreaI", gdi.GdipCloneBitmapAreaI);
    find("GdipDisposeImage", gdi.GdipDisposeImage);
    find("GdipGetImageWidth", gdi.GdipGetImageWidth);
    find("GdipGetImageHeight", gdi.GdipGetImageHeight);
    find("GdipGetImagePixelFormat", gdi.GdipGetImagePixelFormat);
    find("GdipBitmapLockBits", gdi.GdipBitmapLockBits);
    find("GdipBitmapUnlockBits", gdi.GdipBitmapUnlockBits);
    find("GdipGetImageGraphicsContext", gdi.GdipGetImageGraphicsContext);
    find("GdipCreateFromHWND", gdi.GdipCreateFromHWND);
    find("GdipCreateFromHDC", gdi.GdipCreateFromHDC);
    find("GdipDeleteGraphics", gdi.GdipDeleteGraphics);
    find("GdipGraphicsClear", gdi.GdipGraphicsClear);
    find("GdipSetSmoothingMode", gdi.GdipSetSmoothingMode);
    find("GdipSetClipRect", gdi.GdipSetClipRect);
    find("GdipResetClip", gdi.GdipResetClip);
    find("GdipSetWorldTransform", gdi.GdipSetWorldTransform);
    find("GdipResetWorldTransform", gdi.GdipResetWorldTransform);
    find("GdipSetTextRenderingHint", gdi.GdipSetTextRenderingHint);
    find("GdipSetCompositingMode", gdi.GdipSetCompositingMode);
    find("GdipFlush", gdi.GdipFlush);
    find("GdipCreateMatrix2", gdi.GdipCreateMatrix2);
    find("GdipDeleteMatrix", gdi.GdipDeleteMatrix);
    find("GdipDrawImageRectRect", gdi.GdipDrawImageRectRect);
    find("GdipDrawImageI", gdi.GdipDrawImageI);
    find("GdipCreateImageAttributes", gdi.GdipCreateImageAttributes);
    find("GdipDisposeImageAttributes", gdi.GdipDisposeImageAttributes);
    find("GdipSetImageAttributesColorMatrix", gdi.GdipSetImageAttributesColorMatrix);
    find("GdipCreatePen1", gdi.GdipCreatePen1);
    find("GdipDeletePen", gdi.GdipDeletePen);
    find("GdipDrawLines", gdi.GdipDrawLines);
    find("GdipDrawLine", gdi.GdipDrawLine);
    find("GdipCreateSolidFill", gdi.GdipCreateSolidFill);
    find("GdipDeleteBrush", gdi.GdipDeleteBrush);
    find("GdipCreateFontFamilyFromName", gdi.GdipCreateFontFamilyFromName);
    find("GdipGetGenericFontFamilySansSerif", gdi.GdipGetGenericFontFamilySansSerif);
    find("GdipDeleteFontFamily", gdi.GdipDeleteFontFamily);
    find("GdipCreateFont", gdi.GdipCreateFont);
    find("GdipDeleteFont", gdi.GdipDeleteFont);
    find("GdipStringFormatGetGenericTypographic", gdi.GdipStringFormatGetGenericTypographic);
    find("GdipCloneStringFormat", gdi.GdipCloneStringFormat);
    find("GdipCreateStringFormat", gdi.GdipCreateStringFormat);
    find("GdipDeleteStringFormat", gdi.GdipDeleteStringFormat);
    find("GdipSetStringFormatAlign", gdi.GdipSetStringFormatAlign);
    find("GdipSetStringFormatLineAlign", gdi.GdipSetStringFormatLineAlign);
    find("GdipSetStringFormatFlags", gdi.GdipSetStringFormatFlags);
    find("GdipSetStringFormatTrimming", gdi.GdipSetStringFormatTrimming);
    find("GdipDrawString", gdi.GdipDrawString);
    find("GdipMeasureString", gdi.GdipMeasureString);
    return isWhole ? std::optional(gdi) : std::nullopt;
}

std::atomic<const SGdiplus*> replacement{nullptr};

std::mutex startMutex;
int uses = 0;        // under the mutex, as is the token
ULONG_PTR token = 0; // of the one start

} // namespace

const SGdiplus* Gdiplus() noexcept {
    if (const auto* const other = replacement.load(std::memory_order_acquire)) return other;
    static const std::optional<SGdiplus> gdi = LoadGdiplus();
    return gdi ? &*gdi : nullptr;
}

void UseGdiplus(const SGdiplus* functions) noexcept {
    replacement.store(functions, std::memory_order_release);
}

CGdiplusUse::CGdiplusUse() noexcept : _gdi(Platform::Gdiplus()), _status(Gdiplus::Win32Error) {
    if (_gdi == nullptr) return;
    const std::lock_guard lock(startMutex);
    _status = Gdiplus::Ok;
    if (uses == 0) {
        const Gdiplus::GdiplusStartupInput input;
        _status = _gdi->GdiplusStartup(&token, &input, nullptr);
    }
    if (_status == Gdiplus::Ok) ++uses;
}

CGdiplusUse::~CGdiplusUse() {
    if (_gdi == nullptr || !Works()) return;
    const std::lock_guard lock(startMutex);
    if (--uses == 0) _gdi->GdiplusShutdown(token);
}

} // namespace KAV::Platform
