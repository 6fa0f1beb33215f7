#pragma once

#include "pixels/sheet.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Pixels {

/// A picture in its stored form.
struct SStoredPicture {
    std::u16string name; ///< as errors quote it
    std::int32_t width = 0;
    std::int32_t height = 0;
    SImageGrid grid;
    /// Decodes it on any thread, on several at once. None: it is damaged. Throws std::bad_alloc.
    std::function<std::optional<SBitmap>()> decode;
};

/// The status by which KAV::Exceptions::GDIPImage reports a picture that can't be decoded: that of an invalid
/// parameter.
inline constexpr std::int32_t UndecodableStatus = 2;

/// A stored picture and those of its scaled sizes that are in use. Callers that ask for the same size at
/// once get the same picture: the first one makes it, the others wait for it alone. Threads: any.
class CStoredSheet : public ISheet {
public:
    explicit CStoredSheet(SStoredPicture picture);

    // ISheet
    std::int32_t Width() const noexcept override { return _picture.width; }
    std::int32_t Height() const noexcept override { return _picture.height; }
    const SImageGrid& Grid() const noexcept override { return _picture.grid; }
    std::shared_ptr<const SBitmap> Cells(std::int32_t cellWidth, std::int32_t cellHeight) const override;
    SBitmap Decoded() const override;

private:
    using Size = std::pair<std::int32_t, std::int32_t>;
    struct SMade {
        std::weak_ptr<const SBitmap> picture;
        bool making = false;
    };

    std::shared_ptr<const SBitmap> Make(const Size& size) const;

    const SStoredPicture _picture;
    mutable std::mutex _mutex; // never held while pixels are made
    mutable std::condition_variable _made;
    mutable std::map<Size, SMade> _sizes;
};

} // namespace KAV::Pixels
