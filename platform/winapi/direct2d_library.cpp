#include "platform/winapi/direct2d_library.h"

#include "platform/winapi/system_library.h"

#include <atomic>
#include <optional>

namespace KAV::Platform {

namespace {

void FillFactory(SDirect2D& d2d) noexcept {
    d2d.QueryInterface = [](IUnknown* object, const IID* which, void** found) {
        return object->QueryInterface(*which, found);
    };
    d2d.CreateHwndRenderTarget = [](ID2D1Factory* factory, const D2D1_RENDER_TARGET_PROPERTIES* properties,
                                     const D2D1_HWND_RENDER_TARGET_PROPERTIES* windows,
                                     ID2D1HwndRenderTarget** target) {
        return factory->CreateHwndRenderTarget(properties, windows, target);
    };
    d2d.CreateStrokeStyle = [](ID2D1Factory* factory, const D2D1_STROKE_STYLE_PROPERTIES* properties,
                                ID2D1StrokeStyle** style) {
        return factory->CreateStrokeStyle(properties, nullptr, 0, style);
    };
    d2d.CreatePathGeometry = [](ID2D1Factory* factory, ID2D1PathGeometry** path) {
        return factory->CreatePathGeometry(path);
    };
}

void FillMakers(SDirect2D& d2d) noexcept {
    d2d.ResizeTarget = [](ID2D1HwndRenderTarget* target, const D2D1_SIZE_U* size) {
        return target->Resize(size);
    };
    d2d.GetMaximumBitmapSize = [](ID2D1DeviceContext* context) { return context->GetMaximumBitmapSize(); };
    d2d.CreateBitmap = [](ID2D1DeviceContext* context, D2D1_SIZE_U size, const void* pixels, UINT32 pitch,
                           const D2D1_BITMAP_PROPERTIES1* properties, ID2D1Bitmap1** bitmap) {
        return context->CreateBitmap(size, pixels, pitch, properties, bitmap);
    };
    d2d.CreateEffect = [](ID2D1DeviceContext* context, const GUID* effectId, ID2D1Effect** effect) {
        return context->CreateEffect(*effectId, effect);
    };
    d2d.CreateSolidColorBrush = [](ID2D1DeviceContext* context, const D2D1_COLOR_F* color,
                                    ID2D1SolidColorBrush** brush) {
        return context->CreateSolidColorBrush(color, nullptr, brush);
    };
    d2d.CreateLinearGradientBrush =
        [](ID2D1DeviceContext* context, const D2D1_LINEAR_GRADIENT_BRUSH_PROPERTIES* properties,
            ID2D1GradientStopCollection* stops, ID2D1LinearGradientBrush** brush) {
            return context->CreateLinearGradientBrush(properties, nullptr, stops, brush);
        };
}

void FillDraws(SDirect2D& d2d) noexcept {
    d2d.BeginDraw = [](ID2D1DeviceContext* context) { context->BeginDraw(); };
    d2d.EndDraw = [](ID2D1DeviceContext* context) { return context->EndDraw(nullptr, nullptr); };
    d2d.Clear = [](ID2D1DeviceContext* context, const D2D1_COLOR_F* color) { context->Clear(color); };
    d2d.SetTransform = [](ID2D1DeviceContext* context, const D2D1_MATRIX_3X2_F* matrix) {
        context->SetTransform(matrix);
    };
    d2d.SetAntialiasMode = [](ID2D1DeviceContext* context, D2D1_ANTIALIAS_MODE mode) {
        context->SetAntialiasMode(mode);
    };
    d2d.PushAxisAlignedClip = [](ID2D1DeviceContext* context, const D2D1_RECT_F* rect) {
        context->PushAxisAlignedClip(rect, D2D1_ANTIALIAS_MODE_ALIASED);
    };
    d2d.PopAxisAlignedClip = [](ID2D1DeviceContext* context) { context->PopAxisAlignedClip(); };
    d2d.DrawBitmap = [](ID2D1DeviceContext* context, ID2D1Bitmap* bitmap, const D2D1_RECT_F* to,
                         FLOAT opacity, const D2D1_RECT_F* from) {
        context->DrawBitmap(bitmap, to, opacity, D2D1_INTERPOLATION_MODE_LINEAR, from, nullptr);
    };
    d2d.DrawImage = [](ID2D1DeviceContext* context, ID2D1Image* image, const D2D1_RECT_F* from) {
        const D2D1_POINT_2F origin{0.0f, 0.0f};
        context->DrawImage(
            image, &origin, from, D2D1_INTERPOLATION_MODE_LINEAR, D2D1_COMPOSITE_MODE_SOURCE_OVER);
    };
    d2d.DrawGeometry = [](ID2D1DeviceContext* context, ID2D1Geometry* geometry, ID2D1Brush* brush,
                           FLOAT width,
                           ID2D1StrokeStyle* style) { context->DrawGeometry(geometry, brush, width, style); };
    d2d.GetTarget = [](ID2D1DeviceContext* context, ID2D1Image** target) { context->GetTarget(target); };
    d2d.SetTarget = [](ID2D1DeviceContext* context, ID2D1Image* target) { context->SetTarget(target); };
}

void FillBitmaps(SDirect2D& d2d) noexcept {
    d2d.CopyFromRenderTarget = [](ID2D1Bitmap1* bitmap, ID2D1DeviceContext* context) {
        return bitmap->CopyFromRenderTarget(nullptr, context, nullptr);
    };
    d2d.CopyFromBitmap = [](ID2D1Bitmap1* bitmap, ID2D1Bitmap* other) {
        return bitmap->CopyFromBitmap(nullptr, other, nullptr);
    };
    d2d.Map = [](ID2D1Bitmap1* bitmap, D2D1_MAPPED_RECT* mapped) {
        return bitmap->Map(D2D1_MAP_OPTIONS_READ, mapped);
    };
    d2d.Unmap = [](ID2D1Bitmap1* bitmap) { return bitmap->Unmap(); };
}

void FillEffectsAndBrushes(SDirect2D& d2d) noexcept {
    d2d.SetInput = [](ID2D1Effect* effect, ID2D1Image* image) { effect->SetInput(0, image, TRUE); };
    d2d.SetColorMatrix = [](ID2D1Effect* effect, const D2D1_MATRIX_5X4_F* matrix) {
        return effect->SetValue(D2D1_COLORMATRIX_PROP_COLOR_MATRIX, D2D1_PROPERTY_TYPE_MATRIX_5X4,
            reinterpret_cast<const BYTE*>(matrix), sizeof(*matrix));
    };
    d2d.GetOutput = [](ID2D1Effect* effect, ID2D1Image** image) { effect->GetOutput(image); };
    d2d.SetColor = [](ID2D1SolidColorBrush* brush, const D2D1_COLOR_F* color) { brush->SetColor(color); };
    d2d.OpenPath = [](ID2D1PathGeometry* path, ID2D1GeometrySink** sink) { return path->Open(sink); };
    d2d.AddLines = [](ID2D1GeometrySink* sink, const D2D1_POINT_2F* points, UINT32 count) {
        sink->BeginFigure(points[0], D2D1_FIGURE_BEGIN_HOLLOW);
        sink->AddLines(points + 1, count - 1);
        sink->EndFigure(D2D1_FIGURE_END_OPEN);
    };
    d2d.ClosePath = [](ID2D1GeometrySink* sink) { return sink->Close(); };
}

std::optional<SDirect2D> LoadDirect2D() noexcept {
    const HMODULE library = LoadSystemLibrary(L"d2d1.dll");
    if (library == nullptr) return std::nullopt;
    SDirect2D d2d;
    if (!FindFunction(library, "D2D1CreateFactory", d2d.CreateFactory)) return std::nullopt;
    FillFactory(d2d);
    FillMakers(d2d);
    FillDraws(d2d);
    FillBitmaps(d2d);
    FillEffectsAndBrushes(d2d);
    return d2d;
}

std::atomic<const SDirect2D*> otherDirect2D{nullptr};

} // namespace

const SDirect2D* Direct2D() noexcept {
    if (const auto* const other = otherDirect2D.load(std::memory_order_acquire)) return other;
    static const std::optional<SDirect2D> d2d = LoadDirect2D();
    return d2d ? &*d2d : nullptr;
}

void UseDirect2D(const SDirect2D* functions) noexcept {
    otherDirect2D.store(functions, std::memory_order_release);
}

} // namespace KAV::Platform
