#include "platform/winapi/gdiplus_library.h"
#include "platform/winapi/system_library.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/screen/picture.h"

#include <array>
#include <memory>
#include <optional>
#include <string>

namespace KAV::Host {

namespace {

/// The functions that store a picture, and that keep in memory what they write.
struct SPngFunctions {
    decltype(&Gdiplus::DllExports::GdipSaveImageToStream) save;
    decltype(&::CreateStreamOnHGlobal) createStream;
};

std::optional<SPngFunctions> Load() noexcept {
    using Platform::FindFunction;
    using Platform::LoadSystemLibrary;
    const HMODULE pictures = LoadSystemLibrary(L"gdiplus.dll");
    const HMODULE streams = LoadSystemLibrary(L"ole32.dll");
    SPngFunctions functions{};
    if (pictures == nullptr || streams == nullptr ||
        !FindFunction(pictures, "GdipSaveImageToStream", functions.save) ||
        !FindFunction(streams, "CreateStreamOnHGlobal", functions.createStream))
        return std::nullopt;
    return functions;
}

/// The encoder of PNG files.
constexpr CLSID PngEncoder{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

struct SRelease {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};

void CopyAll(IStream& from, std::ostream& to) {
    from.Seek({}, STREAM_SEEK_SET, nullptr);
    std::array<char, 16384> bytes{};
    for (;;) {
        ULONG count = 0;
        if (FAILED(from.Read(bytes.data(), static_cast<ULONG>(bytes.size()), &count)) || count == 0) return;
        to.write(bytes.data(), static_cast<std::streamsize>(count));
    }
}

Gdiplus::Status Save(const SPngFunctions& functions, const SPicture& picture, IStream& stream) {
    const auto* const gdi = Platform::Gdiplus();
    // The library only reads the rows.
    auto* const rows = reinterpret_cast<BYTE*>(const_cast<std::uint32_t*>(picture.pixels.data()));
    Gdiplus::GpBitmap* bitmap = nullptr;
    auto status = gdi->GdipCreateBitmapFromScan0(picture.width, picture.height,
        picture.width * static_cast<INT>(sizeof(std::uint32_t)), PixelFormat32bppRGB, rows, &bitmap);
    if (status != Gdiplus::Ok) return status;
    status = functions.save(bitmap, &stream, &PngEncoder, nullptr);
    gdi->GdipDisposeImage(bitmap);
    return status;
}

} // namespace

void WritePng(const SPicture& picture, std::ostream& png) {
    static const auto functions = Load();
    const Platform::CGdiplusUse use;
    if (!functions || !use.Works()) throw CFailure("the picture cannot be written: GDI+ does not start");
    IStream* made = nullptr;
    if (FAILED(functions->createStream(nullptr, TRUE, &made))) throw CFailure("out of memory for a picture");
    const std::unique_ptr<IStream, SRelease> stream(made);
    const auto status = Save(*functions, picture, *stream);
    if (status == Gdiplus::OutOfMemory) throw CFailure("out of memory for a picture");
    if (status != Gdiplus::Ok)
        throw CFailure("the picture cannot be written: error " + std::to_string(status) + " of GDI+");
    CopyAll(*stream, png);
}

} // namespace KAV::Host
