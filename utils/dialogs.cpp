#include "utils/dialogs.h"

#include "platform/message_box.h"
#include "utils/file_modal.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <atomic>
#include <utility>

namespace KAV::Utils {

namespace {

class CSystemDialogs final : public IDialogs {
public:
    void OpenFile(const SFileQuestion& question, PathAnswer answered) noexcept override {
        CFileModal::Ask(question, false, std::move(answered));
    }
    void SaveFile(const SFileQuestion& question, PathAnswer answered) noexcept override {
        CFileModal::Ask(question, true, std::move(answered));
    }
    void ShowError(std::u16string_view title, std::u16string_view text) noexcept override {
        try {
            if (!Platform::ShowErrorBox(ToUtf8(title), ToUtf8(text)))
                LogLine(u"Error=" + std::u16string(text));
        } catch (...) { // no memory to report it
            return;
        }
    }
    bool ErrorsWait() const noexcept override { return Platform::ErrorBoxWaits(); }
};

std::atomic<IDialogs*> replacement{nullptr};

} // namespace

IDialogs& SystemDialogs() noexcept {
    static CSystemDialogs dialogs;
    return dialogs;
}

IDialogs& Dialogs() noexcept {
    IDialogs* const dialogs = replacement.load(std::memory_order_acquire);
    return dialogs != nullptr ? *dialogs : SystemDialogs();
}

void UseDialogs(IDialogs* dialogs) noexcept {
    replacement.store(dialogs, std::memory_order_release);
}

} // namespace KAV::Utils
