#pragma once

#include <functional>
#include <memory>

/// What a list of files reads of the disk. A folder on a network that has gone may take minutes to answer, or
/// never does, and the calls can't be interrupted: so they are made elsewhere.
namespace KAV::Native {

class IFileListDisk {
public:
    IFileListDisk(const IFileListDisk&) = delete;
    IFileListDisk& operator=(const IFileListDisk&) = delete;

    /// Runs `read`, which owns all that it touches, and later `done` on this thread, unless Forget() or the
    /// next Run() comes before. Throws std::bad_alloc, or std::system_error if there is no thread.
    virtual void Run(std::function<void()> read, std::function<void()> done) = 0;
    virtual void Forget() noexcept = 0;

protected:
    IFileListDisk() = default;
    ~IFileListDisk() = default;
};

/// Reads on a thread of its own per question, which is given up by Forget() and ends by itself. `done` is
/// posted to the loop of the thread that asks; without a loop it reads at once, on that thread.
///
/// Threads: one. It ends with what is still being read given up.
class CFileListDisk final : public IFileListDisk {
public:
    /// `after` follows each `done`. `before` precedes each reading, on its thread; for tests.
    explicit CFileListDisk(std::function<void()> after, std::function<void()> before = {});
    ~CFileListDisk();

    void Run(std::function<void()> read, std::function<void()> done) override;
    void Forget() noexcept override { _question = nullptr; }

private:
    struct SQuestion {
        std::function<void()> done;
    };

    std::function<void()> _after;
    std::function<void()> _before;
    std::shared_ptr<SQuestion> _question; // the last one, until it is answered
};

} // namespace KAV::Native
