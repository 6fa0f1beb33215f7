#include "tools/kavhost/effect/blocks.h"

#include "platform/interrupt.h"
#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace KAV::Host {

namespace {

constexpr double SettleSeconds = 3;

}

void ProcessBlocks(CEffect& effect, CPlanarBuffer& inputs, CPlanarBuffer& outputs) {
    const auto blockSize = static_cast<std::size_t>(effect.Stream().blockSize);
    std::vector<float*> in(inputs.Pointers(), inputs.Pointers() + inputs.Channels());
    std::vector<float*> out(outputs.Pointers(), outputs.Pointers() + outputs.Channels());
    for (std::size_t done = 0; done < inputs.Frames();) {
        CheckInterrupt();
        const auto frames = std::min(blockSize, inputs.Frames() - done);
        effect.Process(in.data(), out.data(), static_cast<std::int32_t>(frames));
        for (float*& channel : in) channel += frames;
        for (float*& channel : out) channel += frames;
        done += frames;
    }
}

void SettleFadeIn(CEffect& effect) {
    const auto channels = static_cast<std::size_t>(effect.Inputs());
    const auto blockSize = effect.Stream().blockSize;
    CPlanarBuffer silence(channels, static_cast<std::size_t>(blockSize));
    CPlanarBuffer forgotten(channels, static_cast<std::size_t>(blockSize));
    const double frames = SettleSeconds * effect.Stream().rateHz;
    for (double done = 0; done < frames; done += blockSize) {
        CheckInterrupt();
        silence.Clear(); // the effect may have written to it
        effect.Process(silence.Pointers(), forgotten.Pointers(), blockSize);
    }
}

void CheckInterrupt() {
    if (Platform::Interrupted()) throw CInterruption();
}

} // namespace KAV::Host
