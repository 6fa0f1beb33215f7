#include "native/linux/x11_picture.h"

#include <algorithm>
#include <cstring>
#include <sys/ipc.h>
#include <sys/shm.h>

namespace KAV::Native {

using Platform::SArea;
using Platform::Xcb;
using Platform::XReply;

namespace {

constexpr std::size_t MostAreas = 64; // more than this, and the whole picture counts as one

SArea Cut(const SArea& area, std::int32_t width, std::int32_t height) noexcept {
    const std::int32_t left = std::clamp(area.left, 0, width);
    const std::int32_t top = std::clamp(area.top, 0, height);
    const auto end = [](std::int32_t begin, std::int32_t size, std::int32_t limit) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{begin} + size, 0, limit));
    };
    return {left, top, std::max(end(area.left, area.width, width) - left, 0),
        std::max(end(area.top, area.height, height) - top, 0)};
}

void Copy(const std::uint8_t* from, std::ptrdiff_t fromStride, std::uint8_t* to, std::ptrdiff_t toStride,
    const SArea& area) noexcept {
    for (std::ptrdiff_t row = area.top; row < area.top + area.height; ++row) {
        std::memcpy(to + row * toStride + std::ptrdiff_t{area.left} * 4,
            from + row * fromStride + std::ptrdiff_t{area.left} * 4,
            static_cast<std::size_t>(area.width) * 4);
    }
}

} // namespace

CX11Picture::~CX11Picture() {
    for (auto& buffer : _buffers) Release(buffer);
}

bool CX11Picture::Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width,
    std::int32_t height, std::span<const SArea> areas) {
    constexpr std::int32_t largest = 0x7FFF; // of a place on the display
    if (width <= 0 || height <= 0 || width > largest || height > largest || areas.empty()) return true;
    if (_road == ERoad::Unknown) ChooseRoad();
    auto* const buffer = FreeBuffer();
    if (buffer == nullptr || !Fit(*buffer, width, height)) return false;
    std::vector<SArea> cut;
    for (const auto& area : areas) {
        const SArea inside = Cut(area, width, height);
        if (inside.width > 0 && inside.height > 0) cut.push_back(inside);
    }
    const auto* const from = reinterpret_cast<const std::uint8_t*>(pixels);
    for (const auto* list : {&buffer->outOfDate, &cut}) {
        for (const auto& area : *list) Copy(from, stride, buffer->bytes, std::ptrdiff_t{width} * 4, area);
    }
    buffer->outOfDate.clear();
    for (auto& other : _buffers) {
        if (&other == buffer) continue;
        other.outOfDate.insert(other.outOfDate.end(), cut.begin(), cut.end());
        if (other.outOfDate.size() > MostAreas) other.outOfDate = {{0, 0, other.width, other.height}};
    }
    _last = buffer;
    Push(*buffer, cut);
    return true;
}

void CX11Picture::Repair(const SArea& area) {
    if (_last == nullptr) return;
    const SArea inside = Cut(area, _last->width, _last->height);
    if (inside.width > 0 && inside.height > 0) Push(*_last, std::span(&inside, 1));
}

void CX11Picture::OnEvent(const xcb_generic_event_t& event) noexcept {
    if (_doneEvent == 0 || (event.response_type & 0x7Fu) != _doneEvent) return;
    const auto segment = reinterpret_cast<const xcb_shm_completion_event_t&>(event).shmseg;
    for (auto& buffer : _buffers) {
        if (buffer.segment == segment && buffer.inUse > 0) --buffer.inUse;
    }
}

void CX11Picture::TakeAnswers() noexcept {
    for (auto& buffer : _buffers) {
        if (!buffer.mark) continue;
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (Xcb()->poll_for_reply(_display.Connection(), buffer.mark->sequence, &reply, &error) == 0)
            continue;
        const XReply<void> taken(reply);
        const XReply<xcb_generic_error_t> failed(error);
        buffer.mark.reset();
        buffer.inUse = 0;
    }
}

bool CX11Picture::IsFree() const noexcept {
    if (_road == ERoad::Requests) return _buffers[0].inUse == 0;
    return std::any_of(
        _buffers.begin(), _buffers.end(), [](const SBuffer& buffer) { return buffer.inUse == 0; });
}

void CX11Picture::ChooseRoad() {
    const auto* const extension =
        Xcb()->get_extension_data(_display.Connection(), Platform::XcbExtensions().shm_id);
    if (extension == nullptr || extension->present == 0) {
        _road = ERoad::Requests;
        return;
    }
    _road = ERoad::Shared; // until it fails
    _doneEvent = static_cast<std::uint8_t>(extension->first_event + XCB_SHM_COMPLETION);
}

/// Not the one with the last picture if there is another: a part of it may soon be needed again.
CX11Picture::SBuffer* CX11Picture::FreeBuffer() noexcept {
    if (_road == ERoad::Requests) return _buffers[0].inUse == 0 ? &_buffers[0] : nullptr;
    SBuffer* found = nullptr;
    for (auto& buffer : _buffers) {
        if (buffer.inUse == 0 && (found == nullptr || found == _last)) found = &buffer;
    }
    return found;
}

/// Room for a picture of this size. What is in it then is out of date if it had another size.
bool CX11Picture::Fit(SBuffer& buffer, std::int32_t width, std::int32_t height) {
    const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    constexpr std::size_t tooMuch = 4;
    if (buffer.bytes == nullptr || buffer.capacity < size || buffer.capacity / tooMuch > size) {
        if (_last == &buffer) _last = nullptr;
        Release(buffer);
        if (_road == ERoad::Shared && !Share(buffer, size)) {
            _road = ERoad::Requests;
            if (&buffer != &_buffers[0]) return false; // from the next picture on in the other one
        }
        if (_road == ERoad::Requests) {
            buffer.bytes = new std::uint8_t[size];
            buffer.capacity = size;
        }
        buffer.width = 0;
    }
    if (buffer.width != width || buffer.height != height) {
        buffer.width = width;
        buffer.height = height;
        buffer.outOfDate = {{0, 0, width, height}};
    }
    return true;
}

bool CX11Picture::Share(SBuffer& buffer, std::size_t size) {
    constexpr int onlyUs = 0600;
    const int memory = shmget(IPC_PRIVATE, size, IPC_CREAT | onlyUs);
    if (memory < 0) return false;
    void* const bytes = shmat(memory, nullptr, 0);
    bool isShared = false;
    if (bytes != reinterpret_cast<void*>(-1)) {
        buffer.segment = Xcb()->generate_id(_display.Connection());
        const XReply<xcb_generic_error_t> error(Xcb()->request_check(
            _display.Connection(), Platform::XcbExtensions().shm_attach_checked(_display.Connection(),
                                       buffer.segment, static_cast<std::uint32_t>(memory), 1)));
        isShared = error == nullptr && !_display.IsLost();
    }
    // The system frees it with the last process that has it, even if that crashes.
    shmctl(memory, IPC_RMID, nullptr);
    if (!isShared) {
        buffer.segment = 0;
        if (bytes != reinterpret_cast<void*>(-1)) shmdt(bytes);
        return false;
    }
    buffer.bytes = static_cast<std::uint8_t*>(bytes);
    buffer.capacity = size;
    return true;
}

void CX11Picture::Release(SBuffer& buffer) noexcept {
    if (buffer.segment != 0) {
        if (!_display.IsLost()) Platform::XcbExtensions().shm_detach(_display.Connection(), buffer.segment);
        shmdt(buffer.bytes);
    } else {
        delete[] buffer.bytes;
    }
    buffer.bytes = nullptr;
    buffer.capacity = 0;
    buffer.segment = 0;
}

void CX11Picture::Push(SBuffer& buffer, std::span<const SArea> areas) {
    auto* const connection = _display.Connection();
    for (std::size_t n = 0; n < areas.size(); ++n) {
        const auto& area = areas[n];
        if (buffer.segment == 0) {
            _display.PutArea(_window, buffer.bytes, buffer.width * 4, area);
            continue;
        }
        const bool isLast = n + 1 == areas.size();
        Platform::XcbExtensions().shm_put_image(connection, _window, Context(),
            static_cast<std::uint16_t>(buffer.width), static_cast<std::uint16_t>(buffer.height),
            static_cast<std::uint16_t>(area.left), static_cast<std::uint16_t>(area.top),
            static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height),
            static_cast<std::int16_t>(area.left), static_cast<std::int16_t>(area.top), _display.Depth(),
            XCB_IMAGE_FORMAT_Z_PIXMAP, isLast ? 1 : 0, buffer.segment, 0);
        if (isLast) ++buffer.inUse;
    }
    if (buffer.segment == 0 && !areas.empty()) {
        if (buffer.mark) Xcb()->discard_reply(connection, buffer.mark->sequence);
        buffer.mark = Xcb()->get_input_focus(connection); // answered when all before it is done
        buffer.inUse = 1;
    }
    _display.Flush();
}

xcb_gcontext_t CX11Picture::Context() {
    if (_context == 0) {
        _context = Xcb()->generate_id(_display.Connection());
        Xcb()->create_gc(_display.Connection(), _context, _window, 0, nullptr);
    }
    return _context;
}

} // namespace KAV::Native
