#pragma once

#include "platform/winapi/com_call.h"
#include "platform/winapi/windows_header.h"

#include <d2d1_1.h>
#include <d2d1effects.h>

#include <cstdint>

/// The system's library for two-dimensional graphics, loaded when an editor first draws with it. Only for
/// Windows.
namespace KAV::Platform {

/// The library's function and the calls of its objects, under their names there. Calls whose results are
/// structures aren't among them: compilers disagree on where such a result of a method lies.
struct SDirect2D {
    HRESULT(WINAPI* CreateFactory)
    (D2D1_FACTORY_TYPE, const IID*, const D2D1_FACTORY_OPTIONS*, void**) = nullptr;

    HRESULT (*QueryInterface)(IUnknown*, const IID*, void**) = nullptr;
    ComFunction<& IUnknown::Release> Release = CallMethod<&IUnknown::Release>;

    // The factory.
    HRESULT(*CreateHwndRenderTarget)
    (ID2D1Factory*, const D2D1_RENDER_TARGET_PROPERTIES*, const D2D1_HWND_RENDER_TARGET_PROPERTIES*,
        ID2D1HwndRenderTarget**) = nullptr;
    HRESULT(*CreateStrokeStyle)
    (ID2D1Factory*, const D2D1_STROKE_STYLE_PROPERTIES*, ID2D1StrokeStyle**) = nullptr;
    HRESULT (*CreatePathGeometry)(ID2D1Factory*, ID2D1PathGeometry**) = nullptr;

    // The target and its context.
    HRESULT (*ResizeTarget)(ID2D1HwndRenderTarget*, const D2D1_SIZE_U*) = nullptr;
    UINT32 (*GetMaximumBitmapSize)(ID2D1DeviceContext*) = nullptr;
    HRESULT(*CreateBitmap)
    (ID2D1DeviceContext*, D2D1_SIZE_U, const void*, UINT32, const D2D1_BITMAP_PROPERTIES1*,
        ID2D1Bitmap1**) = nullptr;
    HRESULT (*CreateEffect)(ID2D1DeviceContext*, const GUID*, ID2D1Effect**) = nullptr;
    HRESULT(*CreateSolidColorBrush)
    (ID2D1DeviceContext*, const D2D1_COLOR_F*, ID2D1SolidColorBrush**) = nullptr;
    HRESULT(*CreateGradientStops)
    (ID2D1DeviceContext*, const D2D1_GRADIENT_STOP*, UINT32, ID2D1GradientStopCollection**) = nullptr;
    HRESULT(*CreateLinearGradientBrush)
    (ID2D1DeviceContext*, const D2D1_LINEAR_GRADIENT_BRUSH_PROPERTIES*, ID2D1GradientStopCollection*,
        ID2D1LinearGradientBrush**) = nullptr;
    void (*BeginDraw)(ID2D1DeviceContext*) = nullptr;
    HRESULT (*EndDraw)(ID2D1DeviceContext*) = nullptr;
    void (*Clear)(ID2D1DeviceContext*, const D2D1_COLOR_F*) = nullptr;
    void (*SetTransform)(ID2D1DeviceContext*, const D2D1_MATRIX_3X2_F*) = nullptr;
    void (*SetAntialiasMode)(ID2D1DeviceContext*, D2D1_ANTIALIAS_MODE) = nullptr;
    void (*PushAxisAlignedClip)(ID2D1DeviceContext*, const D2D1_RECT_F*) = nullptr;
    void (*PopAxisAlignedClip)(ID2D1DeviceContext*) = nullptr;
    void (*DrawBitmap)(
        ID2D1DeviceContext*, ID2D1Bitmap*, const D2D1_RECT_F*, FLOAT, const D2D1_RECT_F*) = nullptr;
    void (*DrawImage)(ID2D1DeviceContext*, ID2D1Image*, const D2D1_RECT_F*) = nullptr;
    void (*DrawGeometry)(
        ID2D1DeviceContext*, ID2D1Geometry*, ID2D1Brush*, FLOAT, ID2D1StrokeStyle*) = nullptr;
    void (*GetTarget)(ID2D1DeviceContext*, ID2D1Image**) = nullptr;
    void (*SetTarget)(ID2D1DeviceContext*, ID2D1Image*) = nullptr;

    // Bitmaps.
    HRESULT (*CopyFromRenderTarget)(ID2D1Bitmap1*, ID2D1DeviceContext*) = nullptr;
    HRESULT (*CopyFromBitmap)(ID2D1Bitmap1*, ID2D1Bitmap*) = nullptr;
    HRESULT (*Map)(ID2D1Bitmap1*, D2D1_MAPPED_RECT*) = nullptr;
    HRESULT (*Unmap)(ID2D1Bitmap1*) = nullptr;

    // The effect.
    void (*SetInput)(ID2D1Effect*, ID2D1Image*) = nullptr;
    HRESULT (*SetColorMatrix)(ID2D1Effect*, const D2D1_MATRIX_5X4_F*) = nullptr;
    void (*GetOutput)(ID2D1Effect*, ID2D1Image**) = nullptr;

    // Brushes and paths.
    void (*SetColor)(ID2D1SolidColorBrush*, const D2D1_COLOR_F*) = nullptr;
    HRESULT (*OpenPath)(ID2D1PathGeometry*, ID2D1GeometrySink**) = nullptr;
    void (*AddLines)(ID2D1GeometrySink*, const D2D1_POINT_2F*, UINT32) = nullptr; ///< one open figure
    HRESULT (*ClosePath)(ID2D1GeometrySink*) = nullptr;
};

/// Scales the channels of a bitmap; not every system has it.
inline constexpr GUID ColorMatrixEffect{
    0x921f03d6, 0x641c, 0x47df, {0x85, 0x2d, 0xb4, 0xbb, 0x61, 0x53, 0xae, 0x11}};
/// The interfaces that are asked for.
inline constexpr GUID FactoryInterface{
    0x06152247, 0x6f50, 0x465a, {0x92, 0x45, 0x11, 0x8b, 0xfd, 0x3b, 0x60, 0x07}};
inline constexpr GUID DeviceContextInterface{
    0xe8f7fe7a, 0x191c, 0x466d, {0xad, 0x95, 0x97, 0x56, 0x78, 0xbd, 0xa9, 0x98}};
inline constexpr GUID BitmapInterface{
    0xa2296057, 0xea42, 0x4099, {0x98, 0x3b, 0x53, 0x9f, 0xb6, 0x50, 0x54, 0x26}};

/// The functions, for the life of the process; null if the library is missing. Any thread; nothing throws.
const SDirect2D* Direct2D() noexcept;

/// For tests: these functions instead, which may count or fail; null means those of the library. A call that
/// is under way may still use the earlier ones.
void UseDirect2D(const SDirect2D* functions) noexcept;

} // namespace KAV::Platform
