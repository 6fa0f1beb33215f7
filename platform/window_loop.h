#pragma once

#include "platform/file_dialog.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace KAV::Platform {

/// What the user has to answer before the editor takes input again, such as a file dialog. Threads: that of
/// the loop.
class IModal {
public:
    IModal(const IModal&) = delete;
    IModal& operator=(const IModal&) = delete;

    /// The user has pressed elsewhere: brings the question to the front.
    virtual void Raise() noexcept = 0;
    /// The loop ends. Answers as if the user had cancelled, before this returns, and ends what asks.
    virtual void Cancel() noexcept = 0;

protected:
    IModal() = default;
    ~IModal() = default;
};

/// The loop of an editor's window, for what waits elsewhere and answers on the window's thread. It may
/// outlive window and thread; then it does nothing.
///
/// Threads: Post() any; all others that of the loop.
class CWindowLoop final : public std::enable_shared_from_this<CWindowLoop> {
public:
    /// `wake`, called on any thread, makes the loop's thread call RunPosted() soon; until End().
    explicit CWindowLoop(std::function<void()> wake);
    CWindowLoop(const CWindowLoop&) = delete;
    CWindowLoop& operator=(const CWindowLoop&) = delete;

    /// The loop that this thread runs; null if it runs none.
    static std::shared_ptr<CWindowLoop> OfThisThread() noexcept;
    /// From now on `loop` is that of this thread, or none if it is null. It is owned by shared pointers and
    /// lives until another one is set.
    static void SetOfThisThread(CWindowLoop* loop) noexcept;

    /// Runs `work` on the loop's thread. It doesn't throw. False if the loop has ended: `work` is dropped.
    /// Throws std::bad_alloc.
    bool Post(std::function<void()> work);

    void RunPosted();
    /// Cancels what is modal, drops what was posted, and everything from now on.
    void End() noexcept;
    bool HasEnded();

    /// What is modal now, not owned; null: nothing.
    void SetModal(IModal* modal) noexcept { _modal = modal; }
    IModal* Modal() const noexcept { return _modal; }

    /// The host's top-level window around the editor, by the window system's number; 0 if it isn't known.
    void SetHostWindow(std::uintptr_t window) noexcept { _hostWindow = window; }
    std::uintptr_t HostWindow() const noexcept { return _hostWindow; }

    /// The list of files for systems without a dialog, not owned; it lives until End(). Null: there is none.
    void SetFileList(IFileList* list) noexcept { _fileList = list; }
    IFileList* FileList() const noexcept { return _fileList; }

private:
    std::mutex _mutex;
    std::function<void()> _wake;                // under the lock; null: the loop has ended
    std::vector<std::function<void()>> _posted; // under the lock, oldest first
    IModal* _modal = nullptr;
    IFileList* _fileList = nullptr;
    std::uintptr_t _hostWindow = 0;
};

} // namespace KAV::Platform
