#pragma once

#include "platform/file_system.h"

#include <functional>
#include <string>

namespace KAV::Tests {

/// The system's files with one call that goes wrong. Replaces the system's file system for its lifetime; one
/// at a time.
class CFaultyFiles final : public Platform::IFileSystem {
public:
    enum class EFault {
        Fail,       ///< that call fails and does nothing
        HalfFail,   ///< that call does half of its work, if it moves bytes, and then fails
        Stop,       ///< from that call on nothing reaches the system, as if the process had been ended there
        HalfStop,   ///< the same, with half of that call's bytes written
        Unreadable, ///< from that call on no file can be opened for reading
    };

    /// The call of that number, counted from 1, goes wrong; 0 only counts.
    CFaultyFiles(int call, EFault fault) : _call(call), _fault(fault) { Platform::UseFiles(this); }
    ~CFaultyFiles() { Platform::UseFiles(nullptr); }

    int Calls() const { return _calls; }
    /// The operations in the order of their calls, each followed by a blank.
    const std::string& Names() const { return _names; }
    /// Whether the call that should go wrong has been made.
    bool Happened() const { return _call > 0 && _calls >= _call; }
    /// Called instead of the call that goes wrong.
    std::function<void()> onFault;

    EKind Kind(const std::filesystem::path& path) noexcept override;
    std::filesystem::path Resolve(const std::filesystem::path& path) noexcept override;
    bool IsWritable(const std::filesystem::path& file) noexcept override;
    bool MakeFolder(const std::filesystem::path& folder) noexcept override;
    Handle OpenToRead(const std::filesystem::path& file) noexcept override;
    Handle CreateNew(const std::filesystem::path& file, const std::filesystem::path* like) noexcept override;
    Handle OpenAlone(const std::filesystem::path& file) noexcept override;
    bool Size(Handle file, std::uint64_t& bytes) noexcept override;
    std::size_t Read(Handle file, void* data, std::size_t bytes) noexcept override;
    std::size_t Write(Handle file, const void* data, std::size_t bytes) noexcept override;
    bool Clear(Handle file) noexcept override;
    bool Flush(Handle file) noexcept override;
    bool Close(Handle file) noexcept override;
    bool Replace(const std::filesystem::path& from, const std::filesystem::path& to) noexcept override;
    bool Remove(const std::filesystem::path& file) noexcept override;
    bool FlushFolder(const std::filesystem::path& folder) noexcept override;

private:
    /// Counts a call; returns whether it goes wrong.
    bool GoesWrong(const char* name);
    bool Half() const noexcept {
        return _calls == _call && (_fault == EFault::HalfFail || _fault == EFault::HalfStop);
    }

    int _call;
    EFault _fault;
    int _calls = 0;
    std::string _names;
};

} // namespace KAV::Tests
