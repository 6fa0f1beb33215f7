#pragma once

#include "platform/file_dialog.h"
#include "platform/window_loop.h"
#include "utils/file_question.h"

#include <memory>

namespace KAV::Utils {

/// The question as the system's dialogs take it. A filter without a pattern lets every name through; a text
/// that isn't well-formed counts as empty.
Platform::SFileRequest FileRequest(const SFileQuestion& question, bool saves);

/// A question for a file that the user answers while the editor waits: the desktop's dialog, or the editor's
/// own list of files where there is none. It lives until it is answered.
///
/// Threads: that of the window's loop.
class CFileModal final : public Platform::IModal, public std::enable_shared_from_this<CFileModal> {
public:
    /// Asks on this thread's loop. Answers at once, with an empty path, if there is no such loop, if it waits
    /// for another answer, or if memory runs out.
    static void Ask(const SFileQuestion& question, bool saves, PathAnswer answered) noexcept;

    // Platform::IModal
    void Raise() noexcept override;
    void Cancel() noexcept override;

    CFileModal(std::shared_ptr<Platform::CWindowLoop> loop, Platform::SFileRequest request);

private:
    void Start();
    void OnDialog(const Platform::SFileAnswer& answer) noexcept;
    bool OpenList() noexcept;
    void Answer(std::string_view path) noexcept; ///< the first answer counts

    std::shared_ptr<Platform::CWindowLoop> _loop;
    Platform::SFileRequest _request;
    PathAnswer _answered; // null: it was called
    std::unique_ptr<Platform::CFileDialog> _dialog;
    bool _showsList = false;
};

} // namespace KAV::Utils
