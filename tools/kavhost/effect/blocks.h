#pragma once

#include <cstdint>

namespace KAV::Host {

class CEffect;
class CPlanarBuffer;

/// Runs audio of any length through a started effect in blocks of its stream's size; `outputs` has the size
/// of `inputs`, which the effect may spoil. Throws CInterruption when the user asks to end.
void ProcessBlocks(CEffect& effect, CPlanarBuffer& inputs, CPlanarBuffer& outputs);

/// A fresh effect may fade in: gains that start low and glide to their settings, even when the input is
/// silent. This runs silence through it until that is over, and forgets what comes out. Three seconds are
/// many times the length of such glides, and short enough for effects that put channels to sleep after some
/// seconds of silence.
void SettleFadeIn(CEffect& effect);

/// Throws CInterruption when the user has asked to end.
void CheckInterrupt();

} // namespace KAV::Host
