#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/editor/editor_commands.h"
#include "tools/kavhost/editor/editor_host.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/screen/users_display.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

namespace KAV::Host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int TicksPerSecond = 60;
constexpr int StillTicks = TicksPerSecond;     ///< a picture that is the same for this long stands still
constexpr int MostTicks = 15 * TicksPerSecond; ///< for the first picture, and again for it to stand still
constexpr SAudioFormat SilentFormat{48000, 2, ESampleFormat::Float32};

/// The stretch of a file that plays, in pieces of one tick.
class CStretch final {
public:
    CStretch(const SShotOptions& options, CAudioReader& reader, CEffect& effect)
        : _reader(reader), _effect(effect), _channels(static_cast<std::size_t>(effect.Inputs())),
          _in(_channels, static_cast<std::size_t>(effect.Stream().blockSize)), _out(_channels, _in.Frames()),
          _left(Frames(options.seconds)) {
        _reader.Seek(Frames(options.start));
    }

    /// Runs a tick's worth of audio through the effect; false when the stretch or the file is over.
    bool Tick() {
        ++_ticks;
        auto due = static_cast<std::uint64_t>(_ticks * _effect.Stream().rateHz / TicksPerSecond) - _done;
        due = std::min(due, _left);
        while (due > 0) {
            const auto wanted = std::min(due, static_cast<std::uint64_t>(_in.Frames()));
            _interleaved.resize(static_cast<std::size_t>(wanted) * _channels);
            const auto read = _reader.Read(_interleaved);
            if (read == 0) return false;
            _in.TakeInterleaved(std::span<const float>(_interleaved).first(read * _channels));
            _effect.Process(_in.Pointers(), _out.Pointers(), static_cast<std::int32_t>(read));
            due -= read;
            _left -= read;
            _done += read;
        }
        return _left > 0;
    }

private:
    std::uint64_t Frames(double seconds) const {
        return static_cast<std::uint64_t>(seconds * _effect.Stream().rateHz);
    }

    CAudioReader& _reader;
    CEffect& _effect;
    std::size_t _channels;
    CPlanarBuffer _in;
    CPlanarBuffer _out;
    std::vector<float> _interleaved;
    std::uint64_t _left; ///< frames to play
    std::uint64_t _done = 0;
    double _ticks = 0;
};

/// An open editor, and time that passes for it.
class CSitting final {
public:
    CSitting(CEffect& effect, CEditorHost& host, CHostWindow& window)
        : _effect(effect), _host(host), _window(window), _next(Clock::now()) {}

    void Tick() {
        CheckInterrupt();
        _next += std::chrono::microseconds(1'000'000 / TicksPerSecond);
        std::this_thread::sleep_until(_next);
        _effect.IdleEditor();
        if (const auto size = _host.TakeSize()) _window.Resize(*size, 0);
        while (const auto event = _window.Next()) {
            if (event->kind == SWindowEvent::EKind::Close)
                throw CFailure("the window was closed before the picture was taken");
        }
    }

    SPicture AwaitFirst() {
        for (int tick = 0; tick < MostTicks; ++tick) {
            Tick();
            auto picture = _window.EditorPicture();
            if (picture && !IsPlain(*picture)) return *std::move(picture);
        }
        if (!_window.EditorPicture()) throw CFailure("the display does not show the whole editor");
        throw CFailure("the editor of " + _effect.Name() + " draws nothing");
    }

    /// The picture that no longer changes, or the last one, if it never ceases to.
    SPicture AwaitStill(SPicture picture, const NoteSink& note) {
        int still = 0;
        for (int tick = 0; tick < MostTicks && still < StillTicks; ++tick, ++still) {
            Tick();
            auto present = _window.EditorPicture();
            if (!present || *present == picture) continue;
            picture = *std::move(present);
            still = 0;
        }
        if (still < StillTicks) note("the picture was still changing when it was taken");
        return picture;
    }

private:
    CEffect& _effect;
    CEditorHost& _host;
    CHostWindow& _window;
    Clock::time_point _next;
};

} // namespace

void ShootEditor(
    const CEffectLibrary& library, const CSetup& setup, const SShotOptions& options, const NoteSink& note) {
    std::optional<CAudioReader> reader;
    if (!options.input.empty()) reader.emplace(options.input);
    const auto format = reader ? reader->Format() : SilentFormat;

    const CPictureDisplay display;
    CEditorHost host;
    std::optional<CHostWindow> window; // ends after the effect
    CEffect effect(library, {static_cast<double>(format.rateHz), options.blockSize}, &host);
    const auto name = reader ? Utf8(options.input) : effect.Name();
    Naming(name, [&] { effect.SetChannels(format.channels); });
    setup.Apply(effect);
    effect.Start();
    SettleFadeIn(effect);

    window.emplace(effect.Name(), EditorSizeOf(effect), 0, display.Place());
    window->Show();
    if (!effect.OpenEditor(window->EditorParent()))
        throw CFailure("the editor of " + effect.Name() + " cannot be opened");

    RemoveAbandonedBeside(options.output);
    CPendingFile file(options.output);
    CSitting sitting(effect, host, *window);
    auto picture = sitting.AwaitFirst();
    if (reader) {
        CStretch stretch(options, *reader, effect);
        while (stretch.Tick()) sitting.Tick();
        sitting.Tick(); // shows the last of it
        if (auto last = window->EditorPicture()) picture = *std::move(last);
    } else {
        picture = sitting.AwaitStill(std::move(picture), note);
    }
    WritePng(picture, file.Stream());
    file.Commit();
}

} // namespace KAV::Host
