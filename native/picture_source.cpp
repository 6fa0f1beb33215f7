#include "native/picture_source.h"

#include "pixels/blur.h"
#include "pixels/png_reader.h"
#include "pixels/resample.h"
#include "pixels/sheet_store.h"
#include "platform/file_system.h"
#include "platform/resource.h"
#include "platform/whole_file.h"
#include "utils/exceptions.h"
#include "utils/path.h"
#include "utils/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <new>
#include <span>
#include <utility>

namespace KAV::Native {

namespace {

using Pixels::ISheet;
using Pixels::SBitmap;
using Pixels::SStoredPicture;

constexpr std::int32_t MaxSide = 65535; // in pixels; a size beyond it is a mistake

using Bytes = std::span<const std::uint8_t>;

/// `file` lives as long as the result.
SStoredPicture Described(const std::u16string& name, Bytes file) {
    const auto size = Pixels::PngSize(file);
    if (!size) throw Exceptions::GDIPImage(name, 0, 0, Pixels::UndecodableStatus);
    SStoredPicture picture{name, size->width, size->height, Pixels::GridOf(name), {}};
    // A name may promise more frames than there are pixels.
    if (picture.grid.columns > picture.width || picture.grid.rows > picture.height) picture.grid = {};
    picture.decode = [file] { return Pixels::ReadPng(file); };
    return picture;
}

bool IsFile(const std::filesystem::path& path) noexcept {
    return !path.empty() && Platform::Files().Kind(path) == Platform::IFileSystem::EKind::File;
}

/// A file may change, so each time it is a picture of its own; its sheet keeps the bytes.
std::shared_ptr<const ISheet> SheetOfFile(const std::u16string& name, const std::filesystem::path& path) {
    const auto file = std::make_shared<const Platform::SBytes>(Platform::ReadWholeFile(path));
    const Bytes bytes(reinterpret_cast<const std::uint8_t*>(file->data.get()), file->size);
    auto picture = Described(name, bytes);
    picture.decode = [file, decode = std::move(picture.decode)] { return decode(); };
    return std::make_shared<const Pixels::CStoredSheet>(std::move(picture));
}

std::shared_ptr<const ISheet> SheetOfResource(const std::u16string& name, const std::string& resource) {
    const Bytes bytes = Platform::Resource(resource);
    if (bytes.empty()) return nullptr;
    return Pixels::CSheetStore::OfProcess().Sheet(Utils::ToUpper(name), [&] {
        auto picture = Described(name, bytes);
        picture.decode = [bytes, decode = std::move(picture.decode)] {
            auto pixels = decode();
            Platform::RestResource(bytes); // it isn't read again until another size is wanted
            return pixels;
        };
        return picture;
    });
}

std::shared_ptr<const ISheet> SheetOf(const std::u16string& name) {
    const auto path = Utils::ToSystemPath(name);
    return IsFile(path) ? SheetOfFile(name, path) : SheetOfResource(name, Utils::ToUtf8(name));
}

/// A sheet as the toolkit gets it: a bitmap whose pixels are made when they are drawn.
SBitmap Undecoded(std::shared_ptr<const ISheet> sheet) {
    SBitmap bitmap;
    bitmap.width = sheet->Width();
    bitmap.height = sheet->Height();
    bitmap.stride = 4 * bitmap.width;
    bitmap.sheet = std::move(sheet);
    return bitmap;
}

/// A side of the whole grid, for frames of this size.
std::int32_t Side(std::int32_t frame, std::int32_t stored, std::int32_t count) {
    if (frame == -1) return stored;
    const std::int64_t side = std::int64_t{frame} * count;
    if (side > MaxSide) throw std::bad_alloc();
    return static_cast<std::int32_t>(side);
}

/// The silhouette, blurred: white with the picture's alpha.
SBitmap Silhouette(const SBitmap& picture, std::int32_t blur) {
    if (blur > MaxSide / 8) throw std::bad_alloc();
    SBitmap silhouette = Pixels::TransparentBitmap(picture.width + 8 * blur, picture.height + 8 * blur);
    silhouette.alpha = Pixels::EAlpha::Straight;
    std::fill(silhouette.bytes.begin(), silhouette.bytes.end(), std::uint8_t{255});
    for (std::size_t i = 3; i < silhouette.bytes.size(); i += 4) silhouette.bytes[i] = 0;
    for (std::int32_t y = 0; y < picture.height; ++y) {
        const auto* from = picture.bytes.data() + static_cast<std::ptrdiff_t>(y) * picture.stride;
        auto* to = silhouette.bytes.data() + static_cast<std::ptrdiff_t>(y + 4 * blur) * silhouette.stride +
                   std::ptrdiff_t{16} * blur;
        for (std::int32_t x = 0; x < picture.width; ++x, from += 4, to += 4) to[3] = from[3];
    }
    Pixels::Blur(silhouette.bytes, silhouette.width, silhouette.height, blur, silhouette.stride, true);
    return silhouette;
}

} // namespace

std::shared_ptr<const ISheet> StoredSheet(const std::u16string& name) {
    return IsFile(Utils::ToSystemPath(name)) ? nullptr : SheetOfResource(name, Utils::ToUtf8(name));
}

std::unique_ptr<SBitmap> MakeImage(const std::u16string& name, const Pixels::SImageMark& mark) {
    auto sheet = SheetOf(name);
    if (sheet == nullptr) {
        if (mark.blur > 0) return nullptr;
        throw Exceptions::Std(u"Can't find resource \"" + name + u"\" of type \"IMG\"", u"RESOURCE");
    }
    const auto& grid = sheet->Grid();
    const std::int32_t width = Side(mark.width, sheet->Width(), grid.columns);
    const std::int32_t height = Side(mark.height, sheet->Height(), grid.rows);
    if (width <= 0 || height <= 0) return nullptr;
    const bool scaled = width != sheet->Width() || height != sheet->Height();
    if (!scaled && mark.blur <= 0) return std::make_unique<SBitmap>(Undecoded(std::move(sheet)));
    SBitmap bitmap = sheet->Decoded();
    if (scaled) bitmap = Pixels::Resampled(bitmap, {}, width, height);
    if (mark.blur > 0) bitmap = Silhouette(bitmap, mark.blur);
    return std::make_unique<SBitmap>(std::move(bitmap));
}

} // namespace KAV::Native
