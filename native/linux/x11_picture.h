#pragma once

#include "native/linux/x11_display.h"
#include "platform/x11/xcb_extensions.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace KAV::Native {

/// The picture in a window. It goes there through two pieces of memory that the display shares; where it
/// can't share any (it may be on another machine), in requests. What is there last stays complete on our
/// side, so that the display can have parts of it again that it has lost. Threads: the window's.
class CX11Picture final {
public:
    /// The display must outlive it.
    CX11Picture(CX11Display& display, xcb_window_t window) noexcept : _display(display), _window(window) {}
    ~CX11Picture();
    CX11Picture(const CX11Picture&) = delete;
    CX11Picture& operator=(const CX11Picture&) = delete;

    /// As Platform::IPictureTarget::Put(); false while the display hasn't finished with the pictures before.
    bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width, std::int32_t height,
        std::span<const Platform::SArea> areas);
    /// Shows an area of the last picture again.
    void Repair(const Platform::SArea& area);
    /// There is no last picture any more: something else is shown.
    void Forget() noexcept { _last = nullptr; }
    /// For every event: notes which pictures the display has finished with.
    void OnEvent(const xcb_generic_event_t& event) noexcept;
    /// The same where there are no such events; after each look at the connection.
    void TakeAnswers() noexcept;
    /// Whether another picture can be put.
    bool IsFree() const noexcept;

private:
    /// A whole picture.
    struct SBuffer {
        std::uint8_t* bytes = nullptr; // null: no memory yet
        std::size_t capacity = 0;
        xcb_shm_seg_t segment = 0; // 0: not shared
        std::int32_t width = 0;
        std::int32_t height = 0;
        int inUse = 0;                                    // requests that the display hasn't finished
        std::vector<Platform::SArea> outOfDate;           // where the other one is newer
        std::optional<xcb_get_input_focus_cookie_t> mark; // a request after those, when nothing is shared
    };
    enum class ERoad : std::uint8_t { Unknown, Shared, Requests };

    void ChooseRoad();
    SBuffer* FreeBuffer() noexcept;
    bool Fit(SBuffer& buffer, std::int32_t width, std::int32_t height);
    bool Share(SBuffer& buffer, std::size_t size);
    void Release(SBuffer& buffer) noexcept;
    void Push(SBuffer& buffer, std::span<const Platform::SArea> areas);
    xcb_gcontext_t Context();

    CX11Display& _display;
    xcb_window_t _window;
    ERoad _road = ERoad::Unknown;
    std::uint8_t _doneEvent = 0; // the type of the event when the display has finished
    xcb_gcontext_t _context = 0; // 0: not made yet
    std::array<SBuffer, 2> _buffers;
    SBuffer* _last = nullptr; // has the picture that is shown
};

} // namespace KAV::Native
