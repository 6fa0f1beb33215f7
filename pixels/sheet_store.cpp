#include "pixels/sheet_store.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace KAV::Pixels {

/// Tells the store of every picture that it hands out.
class CSheetStore::CKeptSheet final : public CStoredSheet {
public:
    CKeptSheet(SStoredPicture picture, CSheetStore& store)
        : CStoredSheet(std::move(picture)), _store(store) {}

    std::shared_ptr<const SBitmap> Cells(std::int32_t cellWidth, std::int32_t cellHeight) const override {
        auto picture = CStoredSheet::Cells(cellWidth, cellHeight);
        _store.Keep(picture);
        return picture;
    }

private:
    CSheetStore& _store;
};

CSheetStore& CSheetStore::OfProcess() noexcept {
    // Never destroyed, because threads may still draw while the process exits; and not allocated, so that
    // this can't fail.
    alignas(CSheetStore) static std::array<std::byte, sizeof(CSheetStore)> place;
    static auto& store = *new (place.data()) CSheetStore;
    return store;
}

std::shared_ptr<const ISheet> CSheetStore::Sheet(
    const std::u16string& name, const std::function<SStoredPicture()>& describe) {
    const std::lock_guard lock(_mutex);
    auto& sheet = _sheets[name];
    if (sheet == nullptr) sheet = std::make_shared<const CKeptSheet>(describe(), *this);
    return sheet;
}

void CSheetStore::Keep(const std::shared_ptr<const SBitmap>& picture) {
    const std::lock_guard lock(_mutex);
    if (_editors == 0) return;
    const auto place =
        std::find_if(_kept.begin(), _kept.end(), [&](const SKept& kept) { return kept.picture == picture; });
    if (place == _kept.end()) {
        _kept.push_front({picture});
        return;
    }
    place->rested = 0;
    _kept.splice(_kept.begin(), _kept, place);
}

void CSheetStore::Begin() noexcept {
    const std::lock_guard lock(_mutex);
    ++_editors;
}

void CSheetStore::Tick() noexcept {
    const std::lock_guard lock(_mutex);
    _kept.remove_if([](SKept& kept) {
        // Nobody can begin to hold it meanwhile but through the store's sheets, which then tell us of it.
        kept.rested = kept.picture.use_count() > 1 ? 0 : kept.rested + 1;
        return kept.rested > RestTicks;
    });
}

void CSheetStore::End() noexcept {
    const std::lock_guard lock(_mutex);
    if (--_editors > 0) return;
    std::size_t bytes = 0;
    _kept.remove_if([&](const SKept& kept) {
        // What no editor held at the last tick belonged to another size.
        const std::size_t size = kept.picture->bytes.size();
        if (kept.rested > 0 || bytes + size > RestBytes) return true;
        bytes += size;
        return false;
    });
}

std::size_t CSheetStore::KeptBytes() const noexcept {
    const std::lock_guard lock(_mutex);
    std::size_t bytes = 0;
    for (const SKept& kept : _kept) bytes += kept.picture->bytes.size();
    return bytes;
}

} // namespace KAV::Pixels
