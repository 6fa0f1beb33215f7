#include "utils/session_log.h"

#include "platform/file_system.h"
#include "platform/system_info.h"
#include "platform/whole_file.h"
#include "utils/cpu_features.h"
#include "utils/number.h"
#include "utils/path.h"
#include "utils/product.h"
#include "utils/system_description.h"
#include "utils/text.h"

#include <array>
#include <ctime>
#include <mutex>

namespace KAV::Utils {

namespace {

using Platform::Files;
using Platform::IFileSystem;

/// Longer than any session's log; what is longer isn't read.
constexpr std::uint64_t LongestLog = 16u << 20;

std::string DateTime() {
    const std::tm now = Platform::LocalTime();
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y.%m.%d.%H:%M:%S", &now)};
}

/// The log of the process.
class CSessionLog final {
public:
    CSessionLog() = default;
    ~CSessionLog() {
        if (_file != IFileSystem::NoFile) Files().Close(_file);
    }
    CSessionLog(const CSessionLog&) = delete;
    CSessionLog& operator=(const CSessionLog&) = delete;

    void Write(std::u16string_view text) {
        const std::scoped_lock lock(_mutex);
        if (!_begun) {
            _begun = true; // first, since the date is a line as well
            Begin();
        }
        if (_file == IFileSystem::NoFile) return;
        auto line = ToUtf8(text);
        if (line.empty() && !text.empty()) return;
        line += "\r\n";
        Files().Write(_file, line.data(), line.size());
    }

    std::u16string Previous() {
        const std::scoped_lock lock(_mutex);
        return _previous;
    }

private:
    void Begin() {
        const auto path = ToSystemPath(LogPath());
        if (path.empty()) return;
        _file = Files().OpenAlone(path);
        if (_file == IFileSystem::NoFile) return;
        auto previous = ReadAll();
        if (!Files().Clear(_file)) {
            Files().Close(_file);
            _file = IFileSystem::NoFile;
            return;
        }
        _previous = std::move(previous);
        Write(u"DateTime=" + ToUtf16(DateTime()));
    }

    /// The end of a log may be cut where a crash left it.
    std::u16string ReadAll() const {
        std::uint64_t size = 0;
        if (!Files().Size(_file, size) || size > LongestLog) return {};
        std::string text(static_cast<std::size_t>(size), '\0');
        text.resize(Files().Read(_file, text.data(), text.size()));
        return ToUtf16Repaired(text);
    }

    std::recursive_mutex _mutex; // the first line writes another
    bool _begun = false;
    IFileSystem::Handle _file = IFileSystem::NoFile; // at its end, since nobody else writes it
    std::u16string _previous;
};

CSessionLog& Log() {
    static CSessionLog log;
    return log;
}

/// Writes a text that `make` composes; nothing when there is no memory for it.
template<typename Make>
void WriteMade(Make make) noexcept {
    try {
        Log().Write(make());
    } catch (...) { // the log is never an error
        return;
    }
}

std::u16string Ticks() {
    return FormatUnsigned(Platform::TickMs());
}

} // namespace

void LogLine(std::u16string_view text) noexcept {
    WriteMade([&] { return text; });
}

std::u16string PreviousLog() {
    return Log().Previous();
}

std::u16string LogPath() {
    const auto folder = GetTemporaryFolder();
    if (folder.empty()) return {};
    return folder + std::u16string(ProductName) + u" " + MachineId() + u".log";
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
