#pragma once

#include "utils/realtime.h"

namespace KAV::DSP {

// Places of a linear peak (0 or more) on the meters' scales, 0..1. A peak of 0 is far below both.
//   seven points  equal segments from -192 dB through -96, -48, -24, -12 and -6 to 0 dB, the lowest point
//                 itself at 1/7
//   five points   equal segments from -48 dB through -24, -12 and -6 to 0 dB

KAV_REALTIME float SevenPointScale(float peak) noexcept;
KAV_REALTIME float FivePointScale(float peak) noexcept;

} // namespace KAV::DSP
