#pragma once

#include "native/linux/x11_display.h"
#include "platform/file_dialog.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace KAV::Native {

/// The list of files for desktops without a dialog, in a top-level window of its own that belongs to the
/// host's. One object serves an opening of the editor: its loop knows it as the list (CWindowLoop), and its
/// display's events go to OnEvent() before the editor sees them. While no list is open it does nothing.
///
/// Keys: the arrows, Page Up and Down, Home and End choose, Return takes, Backspace leads up (with a name
/// to type: Alt and the up arrow), Tab changes the filter, Escape cancels. Threads: the window's.
class CX11FileList final : public IX11Overlay, public Platform::IFileList {
public:
    /// The display must outlive it.
    /// `beforeReading` runs before each reading of the disk, on its thread; for tests.
    explicit CX11FileList(CX11Display& display, std::function<void()> beforeReading = {});
    ~CX11FileList() override; ///< as Close()

    // Platform::IFileList
    bool Open(const Platform::SFileRequest& request,
        std::function<void(const std::string& path)> answered) noexcept override;
    void Raise() noexcept override;
    void Close() noexcept override;

    // IX11Overlay. The answer comes from inside OnEvent(), and may open the next list.
    bool OnEvent(const xcb_generic_event_t& event) override;
    bool NextTime(std::uint32_t& timeMs) const override;
    void OnTime(std::uint32_t nowMs) override;

    /// For tests: the window that shows it; 0: none.
    xcb_window_t Window() const noexcept;

private:
    struct SParts;

    void Finish(); ///< answers if the user has decided

    CX11Display& _display;
    std::function<void()> _beforeReading;
    std::unique_ptr<SParts> _parts; // of an open list
};

} // namespace KAV::Native
