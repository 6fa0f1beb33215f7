#pragma once

#include <cstdint>

namespace KAV::Host {

class CEffect;
class CPlanarBuffer;

/// Runs audio of any length through a started effect in blocks of its stream's size; `outputs` has the size
/// of `inputs`, which the effect may overwrite. Throws CInterruption if the user interrupts.
void ProcessBlocks(CEffect& effect, CPlanarBuffer& inputs, CPlanarBuffer& outputs);

/// A fresh effect may fade in: its gains start low and glide to their settings, even if the input is silent.
/// This runs silence through it until that is over, and discards the output. Three seconds are many times the
/// length of such glides, but short enough for effects that put channels to sleep after some seconds of
/// silence.
void SettleFadeIn(CEffect& effect);

/// Throws CInterruption if the user has interrupted the program.
void CheckInterrupt();

} // namespace KAV::Host
