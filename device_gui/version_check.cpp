#include "device_gui/version_check.h"

#include "device_gui/xxx_gui.h"
#include "utils/http.h"
#include "utils/number.h"
#include "utils/product.h"
#include "utils/text.h"

namespace KAV {

namespace {

std::u16string Cut(std::u16string_view a_sText, std::size_t a_nLongest) {
    if (a_sText.size() <= a_nLongest) return std::u16string(a_sText);
    const bool splitsACharacter = a_sText[a_nLongest] >= 0xDC00 && a_sText[a_nLongest] <= 0xDFFF;
    return std::u16string(a_sText.substr(0, splitsACharacter ? a_nLongest - 1 : a_nLongest));
}

} // namespace

std::optional<SVersionAnswer> ReadVersionAnswer(std::string_view a_sAnswer) {
    const auto text = Utils::ToUtf16(a_sAnswer.substr(0, a_sAnswer.find('\0')));
    const auto fields = Utils::Split(text, u"||");
    if (fields.size() != 3) return std::nullopt;
    return SVersionAnswer{Cut(fields[0], LongestVersion), Cut(fields[1], LongestDownload)};
}

bool IsNewer(std::u16string_view a_sVersion) {
    const auto theirs = Utils::Split(a_sVersion, u".");
    const auto ours = Utils::Split(Utils::ProductVersion, u".");
    for (std::size_t i = 0; i < theirs.size(); ++i) {
        const std::int32_t part = Utils::ToInt(theirs[i]);
        const std::int32_t own = i < ours.size() ? Utils::ToInt(ours[i]) : 0;
        if (part != own) return part > own;
    }
    return false;
}

CVersionCheck::CVersionCheck(CXXXGUI& a_piGUI, const Utils::SMakerService& a_psService)
    : _piGUI(a_piGUI), _sService(a_psService) {}

void CVersionCheck::Start() noexcept {
    if (!_sService.origin.empty()) _iThread.Start();
}

void CVersionCheck::Stop() noexcept {
    _iThread.Stop();
}

std::u16string CVersionCheck::LatestVersion() const {
    return _bAnswered ? _sAnswer.sVersion : std::u16string();
}

std::u16string CVersionCheck::DownloadAddress() const {
    return _bAnswered ? _sAnswer.sDownload : std::u16string();
}

void CVersionCheck::OnThread(Utils::CThread*) {
    Utils::HttpOptions options;
    options.authorities = _sService.authorities;
    options.keepGoing = &_iThread.running;
    std::size_t size = 0;
    const auto bytes = Utils::HttpGet(Utils::VersionAddress(_sService), size, &options);
    if (bytes == nullptr) return;
    auto answer = ReadVersionAnswer({bytes.get(), size});
    if (!answer) return;
    _sAnswer = std::move(*answer);
    _bAnswered = true;
    if (!IsNewer(_sAnswer.sVersion)) return;
    _bNewer = true;
    _bLamp = true;
    _piGUI.PostUserMessage(CXXXGUI::NewVersionMessage);
}

} // namespace KAV
