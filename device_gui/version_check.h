#pragma once

#include "utils/maker_service.h"
#include "utils/thread.h"

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace KAV {

class CXXXGUI;

// The longest texts of a server's answer, in UTF-16 code units. Menus show the one, browsers get the other.
inline constexpr std::size_t LongestVersion = 32;
inline constexpr std::size_t LongestDownload = 2048;

/// What the maker's server says of the latest version. Longer texts are cut, never inside a character.
struct SVersionAnswer {
    std::u16string sVersion;  ///< like "1.2.0.0"
    std::u16string sDownload; ///< address
};

/// The server's answer, UTF-8 up to its first zero: version, address and a third field that isn't used,
/// "||" between them. Nothing unless there are exactly three.
std::optional<SVersionAnswer> ReadVersionAnswer(std::string_view a_sAnswer);

/// Part by part, as many as `a_sVersion` has; a part that the product's version doesn't have counts as 0.
bool IsNewer(std::u16string_view a_sVersion);

/// Asks the maker's server once, on a thread of its own, for the latest version. Failures are silent: nothing
/// is known then.
///
/// Threads: the owner's, but OnThread(); what is known is asked for on any.
class CVersionCheck final : private Utils::CThread::IOnThread {
public:
    /// `a_piGUI` hears of a newer version by NewVersionMessage and lives longer.
    CVersionCheck(CXXXGUI& a_piGUI, const Utils::SMakerService& a_psService);
    CVersionCheck(const CVersionCheck&) = delete;
    CVersionCheck& operator=(const CVersionCheck&) = delete;

    /// Without a server there is nothing to begin.
    void Start() noexcept;
    /// Ends a running request, and waits for the thread without limit.
    void Stop() noexcept;

    std::u16string LatestVersion() const;   ///< empty while there is no answer
    std::u16string DownloadAddress() const; ///< the same
    bool IsNewerKnown() const noexcept { return _bNewer; }
    /// The lamp is to be shown; true once for each newer version.
    bool TakeLamp() noexcept { return _bLamp.exchange(false); }

private:
    void OnThread(Utils::CThread* a_piThread) override;

    CXXXGUI& _piGUI;
    Utils::SMakerService _sService;
    SVersionAnswer _sAnswer;             // written once, before _bAnswered is set
    std::atomic<bool> _bAnswered{false}; // from then on the answer may be read
    std::atomic<bool> _bNewer{false};
    std::atomic<bool> _bLamp{false};
    Utils::CThread _iThread{*this}; // waited for before anything above goes
};

} // namespace KAV
