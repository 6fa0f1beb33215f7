#include "utils/file_modal.h"

#include "utils/product.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <chrono>
#include <thread>
#include <utility>

namespace KAV::Utils {

Platform::SFileRequest FileRequest(const SFileQuestion& question, bool saves) {
    Platform::SFileRequest request;
    request.saves = saves;
    request.title = saves ? KAV_PRODUCT ": Save" : KAV_PRODUCT ": Open";
    request.folder = ToUtf8(question.folder);
    request.name = ToUtf8(question.name);
    for (const auto filter : Split(std::u16string_view(question.filter), u"|||")) {
        const auto parts = Split(filter, u"||");
        if (parts.empty()) continue;
        Platform::SFileFilter added{ToUtf8(parts[0]), {}};
        if (parts.size() > 1) {
            for (const auto pattern : Split(parts[1], u";")) {
                if (!pattern.empty()) added.patterns.push_back(ToUtf8(pattern));
            }
        }
        if (added.patterns.empty()) added.patterns.emplace_back("*");
        request.filters.push_back(std::move(added));
    }
    return request;
}

CFileModal::CFileModal(std::shared_ptr<Platform::CWindowLoop> loop, Platform::SFileRequest request)
    : _loop(std::move(loop)), _request(std::move(request)) {}

void CFileModal::Ask(const SFileQuestion& question, bool saves, PathAnswer answered) noexcept {
    const auto loop = Platform::CWindowLoop::OfThisThread();
    std::shared_ptr<CFileModal> modal;
    try {
        if (loop != nullptr && loop->Modal() == nullptr && !loop->HasEnded())
            modal = std::make_shared<CFileModal>(loop, FileRequest(question, saves));
    } catch (...) { // no memory
        modal = nullptr;
    }
    if (modal == nullptr) {
        answered({});
        return;
    }
    modal->_answered = std::move(answered);
    loop->SetModal(modal.get());
    try {
        modal->Start();
    } catch (...) { // no memory or no thread
        modal->Answer({});
    }
}

/// The dialog's thread, and then what it has posted, keep this object until the answer is there.
void CFileModal::Start() {
    _request.hostWindow = _loop->HostWindow();
    const auto receive = [self = shared_from_this()](const Platform::SFileAnswer& answer) {
        for (;;) {
            try {
                self->_loop->Post([self, answer] { self->OnDialog(answer); });
                return;
            } catch (...) { // no memory just now; an answer that is dropped would leave the editor modal
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
        }
    };
    _dialog = std::make_unique<Platform::CFileDialog>(_request, receive);
}

void CFileModal::OnDialog(const Platform::SFileAnswer& answer) noexcept {
    if (!_answered) return; // cancelled meanwhile
    if (answer.kind == Platform::EFileAnswer::NotAsked && OpenList()) return;
    try {
        if (answer.kind == Platform::EFileAnswer::Unusable)
            LogLine(u"Error=The name of the chosen file can't be used.");
        Answer(answer.path);
    } catch (...) { // no memory
        Answer({});
    }
}

bool CFileModal::OpenList() noexcept {
    auto* const list = _loop->FileList();
    if (list == nullptr) return false;
    _dialog.reset();
    _showsList = true;
    try {
        const bool isOpen = list->Open(_request, [self = shared_from_this()](const std::string& path) {
            self->_showsList = false;
            self->Answer(path);
        });
        if (isOpen) return true;
    } catch (...) { // no memory
        return _showsList = false;
    }
    return _showsList = false;
}

void CFileModal::Raise() noexcept {
    auto* const list = _loop->FileList(); // null: its window was taken away
    if (_showsList && list != nullptr) {
        list->Raise();
    } else if (_dialog != nullptr) {
        _dialog->Raise();
    }
}

void CFileModal::Cancel() noexcept {
    const auto self = weak_from_this().lock(); // the answer may end it
    auto* const list = _loop->FileList();      // null: its window was taken away
    if (std::exchange(_showsList, false) && list != nullptr) list->Close();
    Answer({});
}

void CFileModal::Answer(std::string_view path) noexcept {
    const auto answered = std::exchange(_answered, nullptr);
    if (!answered) return;
    const auto loop = _loop;
    if (loop->Modal() == this) loop->SetModal(nullptr);
    _dialog.reset(); // ends it
    std::u16string chosen;
    try {
        chosen = ToUtf16(path);
    } catch (...) { // no memory: as cancelled
        chosen.clear();
    }
    answered(chosen);
}

} // namespace KAV::Utils
