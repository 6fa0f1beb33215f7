#include "native/linux/file_list_disk.h"

#include "platform/quiet_signals.h"
#include "platform/window_loop.h"
#include "platform/xdg/spawned_program.h"

#include <atomic>
#include <cerrno>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

namespace KAV::Native {

namespace {

/// Each of them may wait for a disk that never answers.
constexpr int MostReading = 16;
std::atomic<int> reading{0};

} // namespace

CFileListDisk::CFileListDisk(std::function<void()> after, std::function<void()> before)
    : _after(std::move(after)), _before(std::move(before)) {}

CFileListDisk::~CFileListDisk() = default;

void CFileListDisk::Run(std::function<void()> read, std::function<void()> done) {
    const auto loop = Platform::CWindowLoop::OfThisThread();
    if (loop == nullptr) {
        read();
        done();
        return;
    }
    _question = std::make_shared<SQuestion>(SQuestion{std::move(done)});
    // Runs on this thread, and only while this object waits for it: the question is gone otherwise.
    auto answer = [this, question = std::weak_ptr(_question)] {
        const auto asked = question.lock();
        if (asked == nullptr) return;
        _question = nullptr;
        const auto after = _after; // this object may end in it
        try {
            asked->done();
            after();
        } catch (const std::exception&) { // no memory: the list shows what it showed
            return;
        }
    };
    if (reading.fetch_add(1) >= MostReading) {
        --reading;
        throw std::system_error(EAGAIN, std::generic_category());
    }
    try {
        const Platform::CQuietSignals quiet;
        std::thread([loop, read = std::move(read), before = _before, answer = std::move(answer)] {
            Platform::TakeOrdinaryPriority();
            try {
                if (before) before();
                read();
                loop->Post(answer);
            } catch (...) { // no memory: the list waits until the user gives it up
            }
            --reading;
        }).detach();
    } catch (...) {
        --reading;
        throw;
    }
}

} // namespace KAV::Native
