#include "pixels/png_reader.h"

#include "platform/winapi/gdiplus_library.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

namespace KAV::Pixels {

namespace {

struct SGlobalFree {
    void operator()(void* memory) const noexcept { GlobalFree(memory); }
};
struct SRelease {
    void operator()(IStream* stream) const noexcept { stream->Release(); }
};
using CreateStream = HRESULT(WINAPI*)(HGLOBAL, BOOL, IStream**);

/// A stream over a copy of these bytes. It is of a library that GDI+ has loaded already.
std::unique_ptr<IStream, SRelease> StreamOf(std::span<const std::uint8_t> file) {
    const HMODULE library = GetModuleHandleW(L"ole32.dll");
    const auto create = library == nullptr ? nullptr
                                           : reinterpret_cast<CreateStream>(reinterpret_cast<void*>(
                                                 GetProcAddress(library, "CreateStreamOnHGlobal")));
    if (create == nullptr) return nullptr;
    std::unique_ptr<void, SGlobalFree> memory(GlobalAlloc(GMEM_MOVEABLE, file.size()));
    if (memory == nullptr) throw std::bad_alloc();
    void* const bytes = GlobalLock(memory.get());
    if (bytes == nullptr) return nullptr;
    std::copy(file.begin(), file.end(), static_cast<std::uint8_t*>(bytes));
    GlobalUnlock(memory.get());
    IStream* stream = nullptr;
    if (FAILED(create(memory.get(), TRUE, &stream))) return nullptr;
    memory.release(); // NOLINT(bugprone-unused-return-value): the stream's now
    return std::unique_ptr<IStream, SRelease>(stream);
}

} // namespace

std::optional<SBitmap> ReadPng(std::span<const std::uint8_t> file) {
    const auto* const gdi = Platform::Gdiplus();
    const auto size = PngSize(file);
    if (gdi == nullptr || !size) return std::nullopt;
    const Platform::CGdiplusUse use;
    if (!use.Works()) return std::nullopt;
    const auto stream = StreamOf(file);
    if (stream == nullptr) return std::nullopt;
    Gdiplus::GpBitmap* image = nullptr;
    if (gdi->GdipCreateBitmapFromStream(stream.get(), &image) != Gdiplus::Ok || image == nullptr)
        return std::nullopt;
    const std::unique_ptr<Gdiplus::GpBitmap, decltype(gdi->GdipDisposeImage)> owned(
        image, gdi->GdipDisposeImage);
    SBitmap bitmap;
    bitmap.width = size->width;
    bitmap.height = size->height;
    bitmap.stride = 4 * size->width;
    bitmap.bytes.resize(static_cast<std::size_t>(bitmap.stride) * static_cast<std::size_t>(bitmap.height));
    const Gdiplus::Rect all(0, 0, bitmap.width, bitmap.height);
    Gdiplus::BitmapData pixels{};
    pixels.Width = static_cast<UINT>(bitmap.width);
    pixels.Height = static_cast<UINT>(bitmap.height);
    pixels.Stride = bitmap.stride;
    pixels.PixelFormat = PixelFormat32bppARGB;
    pixels.Scan0 = bitmap.bytes.data();
    const auto mode = static_cast<UINT>(Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeUserInputBuf);
    if (gdi->GdipBitmapLockBits(image, &all, mode, PixelFormat32bppARGB, &pixels) != Gdiplus::Ok)
        return std::nullopt;
    if (gdi->GdipBitmapUnlockBits(image, &pixels) != Gdiplus::Ok) return std::nullopt;
    return bitmap;
}

} // namespace KAV::Pixels
