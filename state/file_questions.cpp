#include "state/file_questions.h"

#include <utility>

namespace KAV {

bool CFileQuestions::AskToOpen(Utils::SFileQuestion question, Utils::PathAnswer answered) {
    return Ask(&Utils::IDialogs::OpenFile, std::move(question), std::move(answered));
}

bool CFileQuestions::AskToSave(Utils::SFileQuestion question, Utils::PathAnswer answered) {
    return Ask(&Utils::IDialogs::SaveFile, std::move(question), std::move(answered));
}

bool CFileQuestions::Ask(Operation operation, Utils::SFileQuestion question, Utils::PathAnswer answered) {
    Utils::CTurn turn(_turns);
    if (_isOpen) return false;
    Utils::PathAnswer answer = [this, asker = _turns.Watch(), answered = std::move(answered)](
                                   std::u16string_view path) {
        if (asker.IsThere()) Answer(path, answered);
    };
    turn.Then([operation, question = std::move(question), answer = std::move(answer)]() mutable {
        (Utils::Dialogs().*operation)(question, std::move(answer));
    });
    _isOpen = true;
    return true;
}

void CFileQuestions::Answer(std::u16string_view path, const Utils::PathAnswer& answered) {
    {
        const Utils::CTurn turn(_turns);
        _isOpen = false;
    }
    try {
        answered(path);
    } catch (...) { // out of memory: there is no way to report it
        return;
    }
}

} // namespace KAV
