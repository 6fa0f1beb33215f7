#include "utils/unsent_log.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace KAV::Utils {

namespace {

using Platform::Files;
using Platform::IFileSystem;

/// A file that no other process can open while this object lives, if it could be opened.
class CFileAlone final {
public:
    explicit CFileAlone(const std::filesystem::path& file) : _handle(Files().OpenAlone(file)) {}
    ~CFileAlone() {
        if (IsOpen()) Files().Close(_handle);
    }
    CFileAlone(const CFileAlone&) = delete;
    CFileAlone& operator=(const CFileAlone&) = delete;

    bool IsOpen() const noexcept { return _handle != IFileSystem::NoFile; }
    IFileSystem::Handle Handle() const noexcept { return _handle; }

private:
    IFileSystem::Handle _handle;
};

bool ContinuesACharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

/// Reads this many bytes and discards them.
bool Skip(IFileSystem::Handle file, std::uint64_t bytes) {
    std::array<char, 65536> piece{};
    while (bytes > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, piece.size()));
        if (Files().Read(file, piece.data(), wanted) != wanted) return false;
        bytes -= wanted;
    }
    return true;
}

void AppendLines(std::string& text, std::string_view lines) {
    if (!text.empty() && text.back() != '\n') text += "\r\n"; // a crash cut the last line
    text += lines;
}

} // namespace

std::string_view LastLines(std::string_view text, std::size_t longest) noexcept {
    if (text.size() <= longest) return text;
    const std::size_t cut = text.size() - longest;
    const auto lineEnd = text.find('\n', cut - 1); // a cut at the end of a line keeps the whole next one
    if (lineEnd != std::string_view::npos && lineEnd + 1 < text.size()) return text.substr(lineEnd + 1);
    text.remove_prefix(cut);
    const auto character = std::ranges::find_if_not(text, ContinuesACharacter);
    return text.substr(static_cast<std::size_t>(character - text.begin()));
}

std::string ReadLastLines(IFileSystem::Handle file, std::size_t longest) {
    std::uint64_t size = 0;
    if (!Files().Size(file, size)) return {};
    const std::uint64_t wanted = std::min<std::uint64_t>(size, std::uint64_t{longest} + 1);
    if (!Skip(file, size - wanted)) return {};
    std::string text(static_cast<std::size_t>(wanted), '\0');
    text.resize(Files().Read(file, text.data(), text.size()));
    text.erase(0, text.size() - LastLines(text, longest).size()); // the extra byte shows where a line begins
    return text;
}

std::string AddToUnsentLog(const std::filesystem::path& file, std::string_view log) {
    if (log.empty() && Files().Kind(file) == IFileSystem::EKind::Missing) return {};
    std::string added;
    AppendLines(added, LastLines(log, LongestUnsentLog));
    const CFileAlone unsent(file);
    if (!unsent.IsOpen()) return added;
    auto text = ReadLastLines(unsent.Handle(), LongestUnsentLog);
    if (added.empty() || text.ends_with(added)) return text;
    const auto before = text.size();
    AppendLines(text, added);
    if (text.size() <= LongestUnsentLog) {
        Files().Write(unsent.Handle(), text.data() + before, text.size() - before);
    } else {
        text.erase(0, text.size() - LastLines(text, LongestUnsentLog).size());
        if (Files().Clear(unsent.Handle())) Files().Write(unsent.Handle(), text.data(), text.size());
    }
    return text;
}

} // namespace KAV::Utils
