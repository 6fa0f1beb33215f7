#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/editor/editor_commands.h"
#include "tools/kavhost/editor/editor_host.h"
#include "tools/kavhost/editor/transport_strip.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/play/audio_output.h"
#include "tools/kavhost/play/player.h"
#include "tools/kavhost/screen/users_display.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace KAV::Host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto TickLength = std::chrono::microseconds(1'000'000 / 60);
constexpr double SeekSeconds = 5; ///< of the arrow keys

/// A host that also has a transport.
class CPlayingHost final : public CEditorHost {
public:
    void Follow(const CPlayer* player, double rateHz) noexcept {
        _rateHz = rateHz;
        _player = player;
    }

    const VST::VstTimeInfo* Time() noexcept override {
        const auto* const player = _player.load();
        if (player == nullptr) return nullptr;
        thread_local VST::VstTimeInfo time; // the effect reads it after the call
        time = {};
        time.sampleRate = _rateHz;
        time.samplePos = player->Seconds() * _rateHz;
        if (player->IsPlaying()) time.flags |= VST::kVstTransportPlaying;
        if (player->IsLooping()) time.flags |= VST::kVstTransportCycleActive;
        return &time;
    }

private:
    std::atomic<const CPlayer*> _player{nullptr};
    double _rateHz = 0;
};

std::string NoSound(const std::string& reason) {
    return "there is no sound: " + reason;
}

/// The user at the window: plays, seeks, loops, until the window is closed.
class CTransport final {
public:
    CTransport(
        CEffect& effect, CPlayingHost& host, CHostWindow& window, CPlayer& player, const IAudioOutput& output)
        : _effect(effect), _host(host), _window(window), _player(player), _output(output) {}

    void Run(const NoteSink& note) {
        auto next = Clock::now();
        while (!_isClosed) {
            CheckInterrupt();
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
            _window.Wait(static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
            while (const auto event = _window.Next()) Take(*event);
            if (Clock::now() < next) continue;
            next = std::max(next + TickLength, Clock::now());
            _effect.IdleEditor();
            Answer();
            Draw();
            Report(note);
        }
    }

private:
    void Take(const SWindowEvent& event) {
        using enum SWindowEvent::EKind;
        switch (event.kind) {
        case Close:
            _isClosed = true;
            break;
        case Key:
            Type(event.key);
            break;
        case Press:
            Touch(event);
            break;
        case Drag:
            if (_isSeeking) SeekTo(event.x);
            break;
        case Release:
            _isSeeking = false;
            break;
        case Redraw:
            _isShown = false;
            break;
        }
    }

    void Type(EHostKey key) {
        switch (key) {
        case EHostKey::Space:
            _player.Play(!_player.IsPlaying());
            break;
        case EHostKey::L:
            _player.Loop(!_player.IsLooping());
            break;
        case EHostKey::Home:
            _player.Seek(0);
            break;
        case EHostKey::Left:
            _player.Seek(_player.Seconds() - SeekSeconds);
            break;
        case EHostKey::Right:
            _player.Seek(_player.Seconds() + SeekSeconds);
            break;
        case EHostKey::Escape:
            _isClosed = true;
            break;
        case EHostKey::Other:
            break;
        }
    }

    SStripLayout Layout() const {
        const auto strip = _window.Strip();
        return LayOutStrip(strip.width, strip.height);
    }

    void Touch(const SWindowEvent& event) {
        switch (PartAt(Layout(), event.x, event.y)) {
        case EStripPart::PlayButton:
            _player.Play(!_player.IsPlaying());
            break;
        case EStripPart::LoopMark:
            _player.Loop(!_player.IsLooping());
            break;
        case EStripPart::Bar:
            _isSeeking = true;
            SeekTo(event.x);
            break;
        case EStripPart::None:
            break;
        }
    }

    void SeekTo(std::int32_t x) { _player.Seek(FractionAt(Layout(), x) * _player.Length()); }

    /// What the effect has asked for.
    void Answer() {
        if (const auto size = _host.TakeSize()) _window.Resize(*size, StripHeightFor(size->width));
        if (!_host.TakeIoChange()) return;
        // Effects report another delay only when they are switched off and on, as hosts do it.
        _player.Pausing([this] {
            _effect.Stop();
            _effect.Start();
        });
        _host.TakeIoChange(); // what they ask meanwhile has been done
    }

    void Draw() {
        const auto layout = Layout();
        const auto view = StripViewOf(
            layout, _player.IsPlaying(), _player.IsLooping(), _player.Seconds(), _player.Length());
        if (_isShown && view == _view) return;
        _window.DrawStrip(_painter.Draw(layout, view));
        _view = view;
        _isShown = true;
    }

    void Report(const NoteSink& note) {
        if (const auto failure = _player.Failure(); failure != _failure) {
            _failure = failure;
            note(failure);
        }
        if (const auto silence = _output.Failure(); silence != _silence) {
            _silence = silence;
            if (!silence.empty()) note(NoSound(silence));
        }
    }

    CEffect& _effect;
    CPlayingHost& _host;
    CHostWindow& _window;
    CPlayer& _player;
    const IAudioOutput& _output;
    CStripPainter _painter;
    SStripView _view;
    std::string _failure; ///< as reported: why the file can't be read
    std::string _silence; ///< as reported: why there is no sound
    bool _isShown = false;
    bool _isSeeking = false;
    bool _isClosed = false;
};

std::unique_ptr<IAudioOutput> OpenOutput(const SEditOptions& options, const SAudioFormat& format,
    const AudioSource& source, const NoteSink& note) {
    if (options.usesDevice) {
        std::string reason;
        if (auto device = OpenAudioDevice(format.rateHz, format.channels, source, reason)) return device;
        note(NoSound(reason));
    }
    return OpenSilentClock(format.rateHz, format.channels, source);
}

} // namespace

SEdited EditFile(
    const CEffectLibrary& library, const CSetup& setup, const SEditOptions& options, const NoteSink& note) {
    CAudioReader reader(options.input);
    const auto format = reader.Format();
    PrepareUsersDisplay();
    CPlayingHost host;
    std::optional<CHostWindow> window; // ends after the effect
    CEffect effect(library, {static_cast<double>(format.rateHz), options.blockSize}, &host);
    Naming(Utf8(options.input), [&] { effect.SetChannels(format.channels); });
    setup.Apply(effect);
    effect.Start();
    SettleFadeIn(effect);

    const auto size = EditorSizeOf(effect);
    window.emplace(Utf8(options.input.filename()) + " - " + effect.Name(), size, StripHeightFor(size.width),
        EPlace::InView);
    window->Show();
    if (!effect.OpenEditor(window->EditorParent()))
        throw CFailure("the editor of " + effect.Name() + " cannot be opened");

    CPlayer player(reader, effect);
    const AudioSource source = [&](std::span<float> samples) { player.Process(samples); };
    host.Follow(&player, format.rateHz);
    SEdited edited;
    {
        const auto output = OpenOutput(options, format, source, note);
        player.Play(true);
        try {
            CTransport(effect, host, *window, player, *output).Run(note);
        } catch (const CFailure& failure) { // the display has gone, but not what the user has set
            edited.failure = failure.what();
        }
    }
    host.Follow(nullptr, format.rateHz);
    effect.CloseEditor();
    effect.Stop();
    edited.state = effect.Chunk(EChunk::Bank);
    return edited;
}

} // namespace KAV::Host
