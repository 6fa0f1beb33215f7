#include "utils/session_log.h"

#include "platform/file_system.h"
#include "platform/module.h"
#include "platform/system_info.h"
#include "platform/whole_file.h"
#include "utils/cpu_features.h"
#include "utils/number.h"
#include "utils/path.h"
#include "utils/product.h"
#include "utils/system_description.h"
#include "utils/text.h"
#include "utils/unsent_log.h"

#include <array>
#include <ctime>
#include <mutex>
#include <set>

namespace KAV::Utils {

namespace {

using Platform::Files;
using Platform::IFileSystem;

/// Longer than any session's log. Only the end of a longer file is read.
constexpr std::size_t LongestLog = 16u << 20;

/// Empty if the system has no temporary folder.
std::u16string PathOf(std::u16string_view ending) {
    const auto folder = GetTemporaryFolder();
    if (folder.empty()) return {};
    return folder + std::u16string(ProductName) + u" " + MachineId() + std::u16string(ending);
}

/// The process's log.
class CSessionLog final {
public:
    /// By then no code of this library runs, but threads may have ended while they held the lock.
    void CloseWithoutLock() noexcept {
        if (_file != IFileSystem::NoFile) Files().Close(_file);
        _file = IFileSystem::NoFile;
    }

    void Write(std::u16string_view text) {
        const std::scoped_lock lock(_mutex);
        if (!_begun) {
            _begun = true; // first, because the date is also a line
            Begin();
        }
        if (_file == IFileSystem::NoFile) return;
        auto line = ToUtf8(text);
        if (line.empty() && !text.empty()) return;
        line += "\r\n";
        Files().Write(_file, line.data(), line.size());
    }

    void WriteOnce(std::u16string_view text) {
        const std::scoped_lock lock(_mutex);
        if (_once.emplace(text).second) Write(text);
    }

    std::u16string Previous() {
        const std::scoped_lock lock(_mutex);
        return _previous;
    }

    std::u16string Unsent() {
        const std::scoped_lock lock(_mutex);
        return _unsent;
    }

    void DropUnsent() {
        const std::scoped_lock lock(_mutex);
        if (_file == IFileSystem::NoFile) return; // another process may own the log
        Files().Remove(ToSystemPath(UnsentLogPath()));
    }

private:
    void Begin() {
        const auto path = ToSystemPath(LogPath());
        if (path.empty()) return;
        _file = Files().OpenAlone(path);
        if (_file == IFileSystem::NoFile) return;
        const auto previous = ReadLastLines(_file, LongestLog);
        const auto unsent = AddToUnsentLog(ToSystemPath(UnsentLogPath()), previous); // before it is cleared
        if (!Files().Clear(_file)) {
            Files().Close(_file);
            _file = IFileSystem::NoFile;
            return;
        }
        _previous = ToUtf16Repaired(previous); // a crash may have cut its end
        _unsent = ToUtf16Repaired(unsent);
        Write(u"DateTime=" + ToUtf16(LogTime(Platform::LocalTime())));
    }

    std::recursive_mutex _mutex; // the first line writes another
    bool _begun = false;
    IFileSystem::Handle _file = IFileSystem::NoFile; // positioned at its end; no other process writes it
    std::u16string _previous;
    std::u16string _unsent;
    std::set<std::u16string> _once; // the lines of WriteOnce()
};

/// Never destroyed: a host may end its instances after the library's static objects are destroyed, and the
/// descriptor of a closed file is reused for the next file that the host opens.
CSessionLog& Log() {
    static CSessionLog& log = *[] {
        auto* const made = new CSessionLog;
        Platform::AtUnload([] { Log().CloseWithoutLock(); });
        return made;
    }();
    return log;
}

/// Writes the text that `make` composes; does nothing if there is no memory for it.
template<typename Make>
void WriteMade(Make make) noexcept {
    try {
        Log().Write(make());
    } catch (...) { // a failure to log is never an error
        return;
    }
}

std::u16string Ticks() {
    return FormatUnsigned(Platform::TickMs());
}

} // namespace

std::string LogTime(const std::tm& moment) {
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y.%m.%d.%H:%M:%S", &moment)};
}

void LogLine(std::u16string_view text) noexcept {
    WriteMade([&] { return text; });
}

void LogLineOnce(std::u16string_view text) noexcept {
    try {
        Log().WriteOnce(text);
    } catch (...) { // no memory
        return;
    }
}

std::u16string PreviousLog() {
    return Log().Previous();
}

std::u16string UnsentLog() {
    return Log().Unsent();
}

void DropUnsentLog() noexcept {
    try {
        Log().DropUnsent();
    } catch (...) { // no memory for a path: the next process sends the log again
        return;
    }
}

std::u16string LogPath() {
    return PathOf(u".log");
}

std::u16string UnsentLogPath() {
    return PathOf(u".unsent.log");
}

void LogSessionStart() noexcept {
    WriteMade([] { return u"SessionStart=" + Ticks(); });
    WriteMade([] { return u"Application=" + std::u16string(ProductName); });
    WriteMade([] { return u"Version=" + std::u16string(ProductVersion); });
    WriteMade([] { return u"OS=" + DescribeOS(); });
    WriteMade([] { return u"NetBiosName=" + ToUtf16(Platform::MachineName()); });
    WriteMade([] { return u"Computer=" + DescribeCPU(); });
    WriteMade([] { return u"SIMD=" + DescribeFeatures(DetectFeatures()); });
    WriteMade([] { return u"RAM=" + DescribeMemory(); });
    WriteMade([] { return u"Display=" + DescribeDisplay(); });
}

void LogSessionEnd() noexcept {
    WriteMade([] { return u"SessionEnd=" + Ticks(); });
    LogLine(u"~CGUI()");
}

void LogTextureTooLarge(std::u16string_view name, std::int32_t width, std::int32_t maxWidth,
    std::int32_t height, std::int32_t maxHeight) noexcept {
    WriteMade([&] {
        return u"Error=TextureTooLarge:\"" + std::u16string(name) + u"\", a_nW=" + FormatInt(width) +
               u"[nMaxW=" + FormatInt(maxWidth) + u"], a_nH=" + FormatInt(height) + u"[nMaxH=" +
               FormatInt(maxHeight) + u"]";
    });
}

void LogTextureAspect(std::u16string_view name, std::int32_t width, std::int32_t height, std::int32_t aspect,
    std::int32_t maxAspect) noexcept {
    WriteMade([&] {
        return u"Error=TextureHasIncompatibleAspect:\"" + std::u16string(name) + u"\", a_nW=" +
               FormatInt(width) + u", a_nH=" + FormatInt(height) + u", nAspect=" + FormatInt(aspect) +
               u"[nMaxAspect=" + FormatInt(maxAspect) + u"]";
    });
}

} // namespace KAV::Utils
