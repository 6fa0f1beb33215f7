#include "device_gui/vst_gui_v2.h"

#include "panel/layout.h"
#include "utils/clock.h"
#include "utils/session_log.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <vector>

namespace KAV {

namespace {

constexpr std::uint32_t ShowMessage = CXXXGUI::NewVersionMessage + 1;

} // namespace

CVSTGUIv2::CVSTGUIv2(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
    const Utils::SMakerService& a_psService, IEditorSystem& a_piSystem)
    : CXXXGUI(a_piDSP, a_piControls, a_piState, a_psService, a_piSystem.Surroundings()),
      _piSystem(a_piSystem) {}

// The host's calls

bool CVSTGUIv2::getRect(VST::ERect** a_psRect) {
    FindFirstSize();
    const Utils::CTurn turn(State().Turns());
    const auto& panel = State().Panel(turn);
    _sRect.bottom = static_cast<std::int16_t>(panel.height);
    _sRect.right = static_cast<std::int16_t>(panel.width);
    *a_psRect = &_sRect;
    return true;
}

/// Not when an instance is created: a scan must not wait for a display.
void CVSTGUIv2::FindFirstSize() {
    if (hasWindow() && !State().HasSize()) State().BeginWithWidth(_piSystem.FirstWidth(Panel::PanelWidth));
}

bool CVSTGUIv2::open(void* a_pParent) {
    if (a_pParent == nullptr || !hasWindow()) return false;
    if (isOpen()) {
        if (a_pParent == _pParent && !IsWindowLost()) {
            PostUserMessage(ShowMessage);
            return true;
        }
        close();
    }
    FindFirstSize();
    const auto missing = _piSystem.BeginPictures();
    if (!missing.empty()) {
        Utils::LogLine(u"Error=The editor needs " + missing);
        return false;
    }
    _pParent = a_pParent;
    if (OpenWindow(a_pParent)) return true;
    Leave();
    return false;
}

bool CVSTGUIv2::OpenWindow(void* a_pParent) {
    HoldWidgets(true);
    _nHostThread = std::this_thread::get_id();
    _nOpenedMs = Utils::TickMs();
    try {
        std::int32_t width = 0;
        std::int32_t height = 0;
        {
            const Utils::CTurn turn(State().Turns());
            width = State().Panel(turn).width;
            height = State().Panel(turn).height;
        }
        if (!_piSystem.Open(a_pParent, width, height, *this)) return false;
    } catch (const std::exception&) { // no memory, or no thread
        return false;
    }
    State().SetHostWindow(this);
    return true;
}

void CVSTGUIv2::close() {
    if (isOpen()) {
        State().SetHostWindow(nullptr);
        _piSystem.Close();
        Leave();
    }
    State().TellHost(CHostQueue::EOccasion::Close); // last: no idle call may follow
}

/// There is no window any more.
void CVSTGUIv2::Leave() {
    _piSystem.EndPictures();
    _pParent = nullptr;
    HoldWidgets(false);
}

void CVSTGUIv2::idle() {
    State().TellHost(CHostQueue::EOccasion::Idle);
}

// The window's calls

void CVSTGUIv2::OnOpened() noexcept {
    const auto thread = std::this_thread::get_id();
    _bOwnThread = thread != _nHostThread;
    if (_bOwnThread)
        State().SetQuietThread(thread);
    else
        Frame().Guard([this] { State().Errors().BeginWork(); }); // until the first round
    Frame().Guard([this] {
        SetParent(_pParent);
        CreateGUIWindow();
        Screen().Create();
    });
    Frame().Guard([this] { PreparePictures(); });
    Frame().Guard([this] { Show(true); });
    Frame().Guard([this] { EnableHistory(true); });
}

/// Each picture once, in the size in which it will be drawn.
void CVSTGUIv2::PreparePictures() {
    std::vector<Native::SPictureWish> wishes;
    for (const auto* const widget : Widgets()) {
        if (!widget->IsVisible() || widget->sImage.empty()) continue;
        const auto rect = widget->PixelRect();
        const auto isSame = [&](const Native::SPictureWish& a_sWish) {
            return a_sWish.name == widget->sImage && a_sWish.width == rect.nW && a_sWish.height == rect.nH;
        };
        if (std::none_of(wishes.begin(), wishes.end(), isSame))
            wishes.push_back({widget->sImage, rect.nW, rect.nH});
    }
    _piSystem.Prepare(wishes);
}

/// While widgets are at work, the host isn't called and no box runs a loop in which the host is: it may end
/// them.
void CVSTGUIv2::OnMessage() noexcept {
    if (_bOwnThread) return;
    State().SetQuietThread(std::this_thread::get_id());
    Frame().Guard([this] { State().Errors().BeginWork(); });
}

void CVSTGUIv2::OnRound() noexcept {
    if (!_bOwnThread) {
        State().SetQuietThread({});
        Frame().Guard([this] { State().Errors().EndWork(); });
        if (!_piSystem.CallOut([state = &State()] { state->TellHost(CHostQueue::EOccasion::Turn); })) return;
        _piSystem.CallOut([state = &State()] { state->Errors().ShowHeld(); }); // last, as below
        return;
    }
    if (!State().IsHostSilent() || Utils::TickMs() - _nOpenedMs < SilenceMs) return;
    std::function<void()> call;
    if (!Frame().Guard([&] { call = State().DirectCall(); })) return;
    _piSystem.CallOut(call); // last: the host may have closed the editor, or ended the instance
}

void CVSTGUIv2::OnClosing() noexcept {
    Frame().Guard([this] { EnableHistory(false); });
    Frame().Guard([this] { Show(false); }); // ends a drag, too
    Frame().Guard([this] { Screen().Release(); });
    Frame().Guard([this] { DestroyGUIWindow(); });
    State().SetQuietThread({});
    Frame().Guard([this] { State().Errors().EndWork(); });
}

bool CVSTGUIv2::OnUserMessage(std::uint32_t a_nMessage) {
    if (a_nMessage != ShowMessage) return CXXXGUI::OnUserMessage(a_nMessage);
    Show(true);
    return true;
}

void CVSTGUIv2::OnLatencyChanged(std::int32_t a_nSamples) {
    State().ReportLatency(a_nSamples);
}

void CVSTGUIv2::RequestHostResize(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    State().ReportSize(a_nWidth, a_nHeight);
}

void CVSTGUIv2::ResizeParent(std::int32_t a_nWidth, std::int32_t a_nHeight) noexcept {
    _piSystem.ResizeParent(a_nWidth, a_nHeight);
}

} // namespace KAV
