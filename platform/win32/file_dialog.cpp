#include "platform/file_dialog.h"

#include <thread>
#include <utility>

namespace KAV::Platform {

struct CFileDialog::SParts {};

CFileDialog::CFileDialog(SFileRequest, Answered answered) {
    std::thread([answered = std::move(answered)] { answered({}); }).detach();
}

CFileDialog::~CFileDialog() = default;

void CFileDialog::Raise() noexcept {}

void CFileDialog::End() noexcept {}

} // namespace KAV::Platform
