#pragma once

#include "gui/gui.h"
#include "native/native_pictures.h"
#include "native/native_window.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace KAV {

/// What an instance's editor needs of the system: a window with its thread, and pictures. This base is a
/// system without windows. See CNativeWindow and CNativePictures for what the operations promise.
///
/// Threads: Open(), Close(), BeginPictures() and EndPictures() the host's, one at a time; CallOut() and
/// Prepare() the window's; ResizeParent() any.
class IEditorSystem {
public:
    IEditorSystem() = default;
    virtual ~IEditorSystem() = default;
    IEditorSystem(const IEditorSystem&) = delete;
    IEditorSystem& operator=(const IEditorSystem&) = delete;

    /// Whether there are windows at all.
    virtual bool IsAvailable() const noexcept { return false; }
    /// For the root of the editor, which ends before this object.
    virtual GUI::SSurroundings Surroundings() noexcept { return {}; }
    /// Pixels of a window that is `a_nWidth` wide at 96 dots per inch.
    virtual std::int32_t FirstWidth(std::int32_t a_nWidth) noexcept { return a_nWidth; }

    /// The name of a library that is missing, or an empty text.
    virtual std::u16string BeginPictures() { return {}; }
    virtual void EndPictures() noexcept {}
    virtual void Prepare(std::span<const Native::SPictureWish>) noexcept {}

    virtual bool Open(void* /*a_pParent*/, std::int32_t /*a_nWidth*/, std::int32_t /*a_nHeight*/,
        Native::IEditor& /*a_piEditor*/) {
        return false;
    }
    virtual void Close() noexcept {}
    /// False: return at once, and touch nothing.
    virtual bool CallOut(const std::function<void()>& a_piCall) noexcept {
        a_piCall();
        return true;
    }
    virtual void ResizeParent(std::int32_t /*a_nWidth*/, std::int32_t /*a_nHeight*/) noexcept {}
};

/// The windows and pictures of this system, for one instance.
std::unique_ptr<IEditorSystem> MakeEditorSystem();

} // namespace KAV
