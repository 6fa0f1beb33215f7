#include "platform/standard_streams.h"

#include "platform/interrupt.h"
#include "platform/posix/interrupt_event.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace KAV::Platform {

namespace {

constexpr int PatienceMs = 500; // with readers, after an interrupt

/// A pipe that is ready takes this much without waiting. Files are always ready and take everything.
std::size_t LargestPiece(int file) noexcept {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) ? SSIZE_MAX : PIPE_BUF;
}

/// Waits until the file is ready or, for `patienceMs` at most, after an interrupt.
bool WaitFor(int file, short events, int patienceMs) noexcept {
    for (;;) {
        const bool isInterrupted = Interrupted();
        pollfd waits[]{{file, events, 0}, {isInterrupted ? -1 : InterruptEvent(), POLLIN, 0}};
        const int ready = poll(waits, 2, isInterrupted ? patienceMs : -1);
        if (ready < 0 && errno != EINTR) return false;
        if (ready > 0 && waits[0].revents != 0) return true;
        if (ready == 0) return false;
    }
}

/// While it lives, a write to a pipe without a reader fails, where the system would otherwise end the
/// program.
class CPipeSignal final {
public:
    CPipeSignal() noexcept {
        sigemptyset(&_pipe);
        sigaddset(&_pipe, SIGPIPE);
        sigset_t pending{};
        sigpending(&pending);
        _wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &_pipe, &_before);
    }

    ~CPipeSignal() {
        const timespec now{};
        if (!_wasPending) { // takes back what was sent meanwhile
            while (sigtimedwait(&_pipe, nullptr, &now) < 0 && errno == EINTR) {}
        }
        pthread_sigmask(SIG_SETMASK, &_before, nullptr);
    }

    CPipeSignal(const CPipeSignal&) = delete;
    CPipeSignal& operator=(const CPipeSignal&) = delete;

private:
    sigset_t _pipe{};
    sigset_t _before{};
    bool _wasPending = false;
};

} // namespace

std::size_t WriteStandard(EStandardStream stream, std::span<const char> bytes) noexcept {
    const CPipeSignal quiet;
    const bool isOutput = stream == EStandardStream::Output;
    const int file = isOutput ? STDOUT_FILENO : STDERR_FILENO;
    const std::size_t most = LargestPiece(file);
    std::size_t done = 0;
    while (done < bytes.size() && WaitFor(file, POLLOUT, PatienceMs)) {
        const auto written = write(file, bytes.data() + done, std::min(bytes.size() - done, most));
        if (written >= 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR && errno != EAGAIN) {
            if (errno == EPIPE && isOutput) Interrupt(EInterrupt::ClosedPipe);
            break;
        }
    }
    return done;
}

CByteSource::CByteSource() noexcept : _file(STDIN_FILENO) {}

CByteSource::CByteSource(const std::filesystem::path& pipe) noexcept
    : _file(open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)), _isOwn(true) {}

CByteSource::~CByteSource() {
    if (_isOwn && _file >= 0) close(static_cast<int>(_file));
}

std::ptrdiff_t CByteSource::Read(std::span<char> bytes) const noexcept {
    const int file = static_cast<int>(_file);
    for (;;) {
        if (file < 0 || Interrupted() || !WaitFor(file, POLLIN, 0)) return -1;
        if (Interrupted()) return -1;
        const auto count = read(file, bytes.data(), bytes.size());
        if (count >= 0 || (errno != EINTR && errno != EAGAIN)) return count;
    }
}

} // namespace KAV::Platform
