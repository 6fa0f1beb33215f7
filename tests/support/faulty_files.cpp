#include "tests/support/faulty_files.h"

#include <string_view>

namespace KAV::Tests {

using Platform::SystemFiles;

bool CFaultyFiles::GoesWrong(const char* name) {
    ++_calls;
    _names.append(name).append(" ");
    if (_call == 0 || _calls < _call) return false;
    if (_calls == _call && onFault) onFault();
    if (_fault == EFault::Unreadable) return std::string_view(name) == "OpenToRead";
    return _calls == _call || _fault == EFault::Stop || _fault == EFault::HalfStop;
}

auto CFaultyFiles::Kind(const std::filesystem::path& path) noexcept -> EKind {
    return GoesWrong("Kind") ? EKind::Missing : SystemFiles().Kind(path);
}

std::filesystem::path CFaultyFiles::Resolve(const std::filesystem::path& path) noexcept {
    return GoesWrong("Resolve") ? std::filesystem::path() : SystemFiles().Resolve(path);
}

bool CFaultyFiles::IsWritable(const std::filesystem::path& file) noexcept {
    return !GoesWrong("IsWritable") && SystemFiles().IsWritable(file);
}

bool CFaultyFiles::MakeFolder(const std::filesystem::path& folder) noexcept {
    return !GoesWrong("MakeFolder") && SystemFiles().MakeFolder(folder);
}

auto CFaultyFiles::OpenToRead(const std::filesystem::path& file) noexcept -> Handle {
    return GoesWrong("OpenToRead") ? NoFile : SystemFiles().OpenToRead(file);
}

auto CFaultyFiles::CreateNew(const std::filesystem::path& file, const std::filesystem::path* like) noexcept
    -> Handle {
    return GoesWrong("CreateNew") ? NoFile : SystemFiles().CreateNew(file, like);
}

auto CFaultyFiles::OpenAlone(const std::filesystem::path& file) noexcept -> Handle {
    return GoesWrong("OpenAlone") ? NoFile : SystemFiles().OpenAlone(file);
}

bool CFaultyFiles::Size(Handle file, std::uint64_t& bytes) noexcept {
    return !GoesWrong("Size") && SystemFiles().Size(file, bytes);
}

std::size_t CFaultyFiles::Read(Handle file, void* data, std::size_t bytes) noexcept {
    if (GoesWrong("Read")) return Half() ? SystemFiles().Read(file, data, bytes / 2) : 0;
    return SystemFiles().Read(file, data, bytes);
}

std::size_t CFaultyFiles::Write(Handle file, const void* data, std::size_t bytes) noexcept {
    if (GoesWrong("Write")) return Half() ? SystemFiles().Write(file, data, bytes / 2) : 0;
    return SystemFiles().Write(file, data, bytes);
}

bool CFaultyFiles::Clear(Handle file) noexcept {
    return !GoesWrong("Clear") && SystemFiles().Clear(file);
}

bool CFaultyFiles::Flush(Handle file) noexcept {
    return !GoesWrong("Flush") && SystemFiles().Flush(file);
}

bool CFaultyFiles::Close(Handle file) noexcept {
    const bool wrong = GoesWrong("Close"); // closed all the same, as at the end of a process
    return SystemFiles().Close(file) && !wrong;
}

bool CFaultyFiles::Replace(const std::filesystem::path& from, const std::filesystem::path& to) noexcept {
    return !GoesWrong("Replace") && SystemFiles().Replace(from, to);
}

bool CFaultyFiles::Remove(const std::filesystem::path& file) noexcept {
    return !GoesWrong("Remove") && SystemFiles().Remove(file);
}

bool CFaultyFiles::FlushFolder(const std::filesystem::path& folder) noexcept {
    return !GoesWrong("FlushFolder") && SystemFiles().FlushFolder(folder);
}

} // namespace KAV::Tests
