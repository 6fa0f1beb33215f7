#include "tools/kavhost/setup/setup.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/file_bytes.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"

namespace KAV::Host {

namespace {

/// Up to this many channels, a group of a new effect takes all of them.
constexpr std::int32_t ChannelsThatNeedNoRouting = 2;

[[noreturn]] void FailWithoutPlace(const char* option, const CEffect& effect, const char* what) {
    throw CUsageError(
        std::string(option) + ": the state of " + effect.Name() + " is not a text with " + what);
}

} // namespace

CSetup::CSetup(const SStateOptions& options) : _simd(options.simd), _width(options.width) {
    if (!options.state.empty()) {
        _state = ReadFileBytes(options.state);
        _stateFile = Utf8(options.state);
    }
    if (!options.patch.empty()) _patch.emplace(options.patch);
    if (!options.routing.empty()) {
        _routing = ReadRouting(ReadFileBytes(options.routing));
        if (!_routing) throw CFailure(Utf8(options.routing) + ": not a routing");
    }
}

CSetup CSetup::OfState(std::string state, std::string name) {
    CSetup setup;
    setup._state = std::move(state);
    setup._stateFile = std::move(name);
    return setup;
}

void CSetup::Apply(CEffect& effect) const {
    if (_state && !effect.SetChunk(*_state, EChunk::Bank)) {
        throw CFailure(_stateFile + ": " + effect.Name() + " does not accept this state");
    }
    if (_patch) _patch->Apply(effect);
    EditState(effect);
    ApplySettings(_settings, effect);
}

void CSetup::EditState(CEffect& effect) const {
    auto routing = _routing;
    if (!routing && !_state && effect.Inputs() > ChannelsThatNeedNoRouting) {
        routing = RoutingOfChannels(effect.Inputs());
    }
    if (!routing && !_simd && !_width) return;
    auto text = CStateText::Read(effect.Chunk(EChunk::Bank));
    const bool isRouted = text && routing && text->SetRouting(*routing);
    if (_routing && !isRouted) FailWithoutPlace("--routing", effect, "a routing");
    const bool isSwitched = text && _simd && text->SetSimd(*_simd);
    if (_simd && !isSwitched) FailWithoutPlace("--simd", effect, "a switch of vector code");
    const bool hasWidth = text && _width && text->SetWidth(*_width);
    if (_width && !hasWidth) FailWithoutPlace("--width", effect, "the editor's width");
    if (!isRouted && !isSwitched && !hasWidth) return;
    if (!effect.SetChunk(text->Bytes(), EChunk::Bank)) {
        throw CFailure(
            effect.Name() + " does not accept its own state with another routing, vector code or width");
    }
}

} // namespace KAV::Host
