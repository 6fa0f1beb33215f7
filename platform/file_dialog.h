#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace KAV::Platform {

/// What the user may choose from: files whose names match a pattern such as "*.txt".
struct SFileFilter {
    std::string title;
    std::vector<std::string> patterns;
};

/// A question for one file. All texts are UTF-8.
struct SFileRequest {
    bool saves = false; ///< a file to write, which may be a new one
    std::string title;
    std::vector<SFileFilter> filters;
    std::string folder;            ///< where to begin, absolute; empty or missing: the dialog's choice
    std::string name;              ///< proposed name of a file to save
    std::uintptr_t hostWindow = 0; ///< the window that the dialog belongs to; 0: not known
};

enum class EFileAnswer {
    Chosen,    ///< an existing file to save is one that the user has agreed to replace
    Cancelled, ///< by the user, by End(), or because the dialog has died
    Unusable,  ///< the user has chosen something whose path can't be expressed here
    NotAsked   ///< the system has no dialog for files
};

struct SFileAnswer {
    EFileAnswer kind = EFileAnswer::Cancelled;
    std::string path; ///< absolute, UTF-8; only if chosen
};

/// The desktop's own dialog for files. On Linux it is in a process that isn't the host's; these are tried in
/// turn until one can be started: the desktop portal, zenity, kdialog. The environment variable
/// KAV_FILE_DIALOG chooses one of them ("portal", "zenity", "kdialog") or none ("list"). On Windows it is the
/// system's dialog, on a thread of its own, and the host's window takes no input meanwhile.
///
/// Threads: any but the audio thread.
class CFileDialog final {
public:
    /// Called exactly once, on a thread of the dialog's own, also after End(); maybe before the constructor
    /// has returned. It doesn't throw.
    using Answered = std::function<void(const SFileAnswer&)>;

    /// Throws std::bad_alloc, or std::system_error if there are no threads or descriptors left.
    CFileDialog(SFileRequest request, Answered answered);
    ~CFileDialog(); ///< as End()
    CFileDialog(const CFileDialog&) = delete;
    CFileDialog& operator=(const CFileDialog&) = delete;

    /// Asks the window manager to bring the dialog to the front, if the dialog is a program of its own.
    void Raise() noexcept;
    /// Closes the dialog. A program has been killed when this returns; the portal and Windows close theirs
    /// soon after.
    void End() noexcept;

private:
    struct SParts; // shared with the thread
    std::shared_ptr<SParts> _parts;
};

/// A list of files that an editor draws itself, for systems without a dialog. Threads: that of the editor's
/// window.
class IFileList {
public:
    IFileList(const IFileList&) = delete;
    IFileList& operator=(const IFileList&) = delete;

    /// Shows the list. `answered` is called once, with an empty path if the user cancels, and not if Close()
    /// ends it. It doesn't throw. False if the list can't be shown: then `answered` is never called.
    virtual bool Open(
        const SFileRequest& request, std::function<void(const std::string& path)> answered) noexcept = 0;
    virtual void Raise() noexcept = 0;
    virtual void Close() noexcept = 0;

protected:
    IFileList() = default;
    ~IFileList() = default;
};

} // namespace KAV::Platform
