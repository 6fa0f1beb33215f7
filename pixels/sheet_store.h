#pragma once

#include "pixels/sheet.h"
#include "pixels/stored_sheet.h"

#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace KAV::Pixels {

/// The stored pictures that editors draw, and their pixels at the sizes in use. There is one store for all
/// editors of a process, so that two editors of one size need the pixels of one. No picture is kept decoded.
///
/// What is kept: while an editor is open, a size as long as an editor holds it and for RestTicks afterwards,
/// because a renderer that changes its size gives all pictures back first. After the last editor has closed:
/// what that editor drew last, up to RestBytes, so that the next one opens at once.
///
/// Threads: any. Pixels are made without any lock of the store.
class CSheetStore final {
public:
    static constexpr std::size_t RestBytes = 12'000'000;
    static constexpr int RestTicks = 60;

    CSheetStore() = default;
    ~CSheetStore() = default;
    CSheetStore(const CSheetStore&) = delete;
    CSheetStore& operator=(const CSheetStore&) = delete;

    /// The one of the process, never destroyed.
    static CSheetStore& OfProcess() noexcept;

    /// The sheet of this name; `describe` is called when it is asked for the first time, and throws as it
    /// likes.
    std::shared_ptr<const ISheet> Sheet(
        const std::u16string& name, const std::function<SStoredPicture()>& describe);

    void Begin() noexcept; ///< an editor opens
    void Tick() noexcept;  ///< an open editor's tick
    void End() noexcept;   ///< an editor has closed, and has given its pictures back

    /// Bytes of the pictures that the store itself holds.
    std::size_t KeptBytes() const noexcept;

private:
    class CKeptSheet;
    struct SKept {
        std::shared_ptr<const SBitmap> picture;
        int rested = 0; // ticks since an editor held it
    };

    void Keep(const std::shared_ptr<const SBitmap>& picture);

    mutable std::mutex _mutex;
    std::map<std::u16string, std::shared_ptr<const CKeptSheet>> _sheets;
    std::list<SKept> _kept; // each picture once, what was asked for last first
    int _editors = 0;
};

} // namespace KAV::Pixels
