#pragma once

#include "platform/winapi/windows_header.h"

#include <objidl.h>
#include <propidl.h>

#include <gdiplus.h>

/// The system's library for pictures and text, loaded when an editor first opens: a host that only scans
/// needs none of it. Only for Windows.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SGdiplus {
    decltype(&Gdiplus::GdiplusStartup) GdiplusStartup;
    decltype(&Gdiplus::GdiplusShutdown) GdiplusShutdown;
    decltype(&Gdiplus::DllExports::GdipCreateBitmapFromScan0) GdipCreateBitmapFromScan0;
    decltype(&Gdiplus::DllExports::GdipCreateBitmapFromStream) GdipCreateBitmapFromStream;
    decltype(&Gdiplus::DllExports::GdipCloneBitmapAreaI) GdipCloneBitmapAreaI;
    decltype(&Gdiplus::DllExports::GdipDisposeImage) GdipDisposeImage;
    decltype(&Gdiplus::DllExports::GdipGetImageWidth) GdipGetImageWidth;
    decltype(&Gdiplus::DllExports::GdipGetImageHeight) GdipGetImageHeight;
    decltype(&Gdiplus::DllExports::GdipGetImagePixelFormat) GdipGetImagePixelFormat;
    decltype(&Gdiplus::DllExports::GdipBitmapLockBits) GdipBitmapLockBits;
    decltype(&Gdiplus::DllExports::GdipBitmapUnlockBits) GdipBitmapUnlockBits;
    decltype(&Gdiplus::DllExports::GdipGetImageGraphicsContext) GdipGetImageGraphicsContext;
    decltype(&Gdiplus::DllExports::GdipCreateFromHWND) GdipCreateFromHWND;
    decltype(&Gdiplus::DllExports::GdipCreateFromHDC) GdipCreateFromHDC;
    decltype(&Gdiplus::DllExports::GdipDeleteGraphics) GdipDeleteGraphics;
    decltype(&Gdiplus::DllExports::GdipGraphicsClear) GdipGraphicsClear;
    decltype(&Gdiplus::DllExports::GdipSetSmoothingMode) GdipSetSmoothingMode;
    decltype(&Gdiplus::DllExports::GdipSetClipRect) GdipSetClipRect;
    decltype(&Gdiplus::DllExports::GdipResetClip) GdipResetClip;
    decltype(&Gdiplus::DllExports::GdipSetWorldTransform) GdipSetWorldTransform;
    decltype(&Gdiplus::DllExports::GdipResetWorldTransform) GdipResetWorldTransform;
    decltype(&Gdiplus::DllExports::GdipSetTextRenderingHint) GdipSetTextRenderingHint;
    decltype(&Gdiplus::DllExports::GdipSetCompositingMode) GdipSetCompositingMode;
    decltype(&Gdiplus::DllExports::GdipFlush) GdipFlush;
    decltype(&Gdiplus::DllExports::GdipCreateMatrix2) GdipCreateMatrix2;
    decltype(&Gdiplus::DllExports::GdipDeleteMatrix) GdipDeleteMatrix;
    decltype(&Gdiplus::DllExports::GdipDrawImageRectRect) GdipDrawImageRectRect;
    decltype(&Gdiplus::DllExports::GdipDrawImageI) GdipDrawImageI;
    decltype(&Gdiplus::DllExports::GdipCreateImageAttributes) GdipCreateImageAttributes;
    decltype(&Gdiplus::DllExports::GdipDisposeImageAttributes) GdipDisposeImageAttributes;
    decltype(&Gdiplus::DllExports::GdipSetImageAttributesColorMatrix) GdipSetImageAttributesColorMatrix;
    decltype(&Gdiplus::DllExports::GdipCreatePen1) GdipCreatePen1;
    decltype(&Gdiplus::DllExports::GdipDeletePen) GdipDeletePen;
    decltype(&Gdiplus::DllExports::GdipDrawLines) GdipDrawLines;
    decltype(&Gdiplus::DllExports::GdipDrawLine) GdipDrawLine;
    decltype(&Gdiplus::DllExports::GdipCreateSolidFill) GdipCreateSolidFill;
    decltype(&Gdiplus::DllExports::GdipDeleteBrush) GdipDeleteBrush;
    decltype(&Gdiplus::DllExports::GdipCreateFontFamilyFromName) GdipCreateFontFamilyFromName;
    decltype(&Gdiplus::DllExports::GdipGetGenericFontFamilySansSerif) GdipGetGenericFontFamilySansSerif;
    decltype(&Gdiplus::DllExports::GdipDeleteFontFamily) GdipDeleteFontFamily;
    decltype(&Gdiplus::DllExports::GdipCreateFont) GdipCreateFont;
    decltype(&Gdiplus::DllExports::GdipDeleteFont) GdipDeleteFont;
    decltype(&Gdiplus::DllExports::GdipStringFormatGetGenericTypographic)
        GdipStringFormatGetGenericTypographic;
    decltype(&Gdiplus::DllExports::GdipCloneStringFormat) GdipCloneStringFormat;
    decltype(&Gdiplus::DllExports::GdipCreateStringFormat) GdipCreateStringFormat;
    decltype(&Gdiplus::DllExports::GdipDeleteStringFormat) GdipDeleteStringFormat;
    decltype(&Gdiplus::DllExports::GdipSetStringFormatAlign) GdipSetStringFormatAlign;
    decltype(&Gdiplus::DllExports::GdipSetStringFormatLineAlign) GdipSetStringFormatLineAlign;
    decltype(&Gdiplus::DllExports::GdipSetStringFormatFlags) GdipSetStringFormatFlags;
    decltype(&Gdiplus::DllExports::GdipSetStringFormatTrimming) GdipSetStringFormatTrimming;
    decltype(&Gdiplus::DllExports::GdipDrawString) GdipDrawString;
    decltype(&Gdiplus::DllExports::GdipMeasureString) GdipMeasureString;
};

/// The functions, for the life of the process; null if the library is missing or incomplete. Any thread;
/// nothing throws.
const SGdiplus* Gdiplus() noexcept;

/// For tests: these functions instead, which may count or fail; null means those of the library. A call that
/// is under way may still use the earlier ones.
void UseGdiplus(const SGdiplus* functions) noexcept;

/// While one of them lives, the library works; pictures and texts are made and freed within its life. The
/// last one's end shuts the library down. Any thread; nothing throws.
class CGdiplusUse final {
public:
    CGdiplusUse() noexcept;
    ~CGdiplusUse();
    CGdiplusUse(const CGdiplusUse&) = delete;
    CGdiplusUse& operator=(const CGdiplusUse&) = delete;

    /// What GdiplusStartup() answered; Win32Error if the library is missing.
    Gdiplus::Status Status() const noexcept { return _status; }
    bool Works() const noexcept { return _status == Gdiplus::Ok; }

private:
    const SGdiplus* _gdi;
    Gdiplus::Status _status;
};

} // namespace KAV::Platform
