#include "platform/xdg/dialog_control.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace KAV::Platform {

CDialogControl::CDialogControl() : _event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (_event < 0) throw std::system_error(errno, std::generic_category());
}

CDialogControl::~CDialogControl() {
    close(_event);
}

void CDialogControl::Raise() noexcept {
    _raise = true;
    eventfd_write(_event, 1);
}

void CDialogControl::End() noexcept {
    const std::scoped_lock lock(_mutex);
    _ended = true;
    if (_program > 0) kill(-_program, SIGKILL);
    eventfd_write(_event, 1);
}

bool CDialogControl::TakeRaise() noexcept {
    eventfd_t count = 0;
    if (!_ended) eventfd_read(_event, &count); // once ended, it stays readable
    return _raise.exchange(false);
}

void CDialogControl::SetProgram(pid_t program) noexcept {
    const std::scoped_lock lock(_mutex);
    _program = program;
    if (_ended && _program > 0) kill(-_program, SIGKILL);
}

} // namespace KAV::Platform
