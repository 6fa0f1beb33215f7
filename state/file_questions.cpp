#include "state/file_questions.h"

#include "patch/patch_files.h"
#include "utils/location.h"
#include "utils/offered_folder.h"
#include "utils/path.h"
#include "utils/text.h"

#include <filesystem>
#include <utility>

namespace KAV {

namespace {

/// Whether the user was asked about the file `path`, having chosen `chosen`. A system that ignores the case
/// of names has one file for both.
bool IsConfirmed(std::u16string_view chosen, std::u16string_view path) {
    if (chosen == path || !Utils::ExistsUniversal(path)) return true;
    std::error_code error;
    return Utils::ToLower(chosen) == Utils::ToLower(path) &&
           std::filesystem::equivalent(Utils::ToSystemPath(chosen), Utils::ToSystemPath(path), error);
}

} // namespace

bool CFileQuestions::AskToOpen(Utils::SFileQuestion question, Utils::PathAnswer answered) {
    return Ask({&Utils::IDialogs::OpenFile, std::move(question), {}, std::move(answered)});
}

bool CFileQuestions::AskToSave(
    Utils::SFileQuestion question, std::u16string extension, Utils::PathAnswer answered) {
    return Ask({&Utils::IDialogs::SaveFile, std::move(question), std::move(extension), std::move(answered)});
}

bool CFileQuestions::Ask(SQuestion question) {
    Utils::CTurn turn(_turns);
    if (_isOpen) return false;
    turn.Then([this, asker = _turns.Watch(), asked = std::make_shared<SQuestion>(std::move(question))] {
        try {
            Put(asked, asker);
        } catch (...) { // no memory: as if the user had cancelled
            if (asker.IsThere()) Answer({}, asked, asker);
        }
    });
    _isOpen = true;
    return true;
}

void CFileQuestions::Put(const Question& question, const Utils::CStillThere& asker) {
    Utils::PathAnswer answer = [this, question, asker](std::u16string_view path) {
        if (asker.IsThere()) Answer(path, question, asker);
    };
    // A dialog that can't find the folder opens somewhere else.
    if (!question->extension.empty() && !question->question.folder.empty())
        question->folder = std::make_shared<Utils::COfferedFolder>(question->question.folder);
    (Utils::Dialogs().*question->operation)(question->question, std::move(answer));
}

void CFileQuestions::Answer(
    std::u16string_view chosen, const Question& question, const Utils::CStillThere& asker) {
    std::u16string path;
    try {
        path = chosen;
        if (!chosen.empty() && !question->extension.empty()) {
            path = WithExtension(chosen, question->extension);
            if (!IsConfirmed(chosen, path)) {
                question->question.folder = Utils::GetFolder(path);
                question->question.name = Utils::GetFileName(path);
                Put(question, asker); // the instance may have ended when it returns
                return;
            }
        }
    } catch (...) { // no memory: as if the user had cancelled
        path.clear();
    }
    {
        const Utils::CTurn turn(_turns);
        _isOpen = false;
    }
    try {
        question->answered(path);
    } catch (...) { // out of memory: there is no way to report it
        return;
    }
}

} // namespace KAV
