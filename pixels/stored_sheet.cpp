#include "pixels/stored_sheet.h"

#include "pixels/resample.h"
#include "utils/exceptions.h"

namespace KAV::Pixels {

CStoredSheet::CStoredSheet(SStoredPicture picture) : _picture(std::move(picture)) {}

SBitmap CStoredSheet::Decoded() const {
    auto bitmap = _picture.decode();
    if (!bitmap)
        throw Exceptions::GDIPImage(_picture.name, _picture.width, _picture.height, UndecodableStatus);
    return std::move(*bitmap);
}

std::shared_ptr<const SBitmap> CStoredSheet::Cells(std::int32_t cellWidth, std::int32_t cellHeight) const {
    const Size size(cellWidth, cellHeight);
    {
        std::unique_lock lock(_mutex);
        std::erase_if(_sizes, [&](const auto& entry) {
            return entry.first != size && !entry.second.making && entry.second.picture.expired();
        });
        for (;;) {
            SMade& made = _sizes[size];
            if (auto picture = made.picture.lock()) return picture;
            if (!made.making) {
                made.making = true;
                break;
            }
            _made.wait(lock);
        }
    }
    return Make(size);
}

std::shared_ptr<const SBitmap> CStoredSheet::Make(const Size& size) const {
    std::shared_ptr<const SBitmap> picture;
    const auto finish = [&] {
        const std::lock_guard lock(_mutex);
        _sizes[size] = {picture, false};
        _made.notify_all();
    };
    try {
        picture =
            std::make_shared<const SBitmap>(Resampled(Decoded(), _picture.grid, size.first, size.second));
    } catch (...) {
        finish(); // those that wait try it themselves
        throw;
    }
    finish();
    return picture;
}

} // namespace KAV::Pixels
