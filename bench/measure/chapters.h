#pragma once

#include "bench/measure/rig.h"

#include <iosfwd>

/// The chapters of the measurements, each written as Markdown.
namespace KAV::Measure {

void StepResponse(std::ostream& out);
void ReleaseTimes(std::ostream& out);
void Distortion(std::ostream& out);
void FilterResponses(std::ostream& out);
void Delays(std::ostream& out);
/// `music`: a piece of real music at `rateHz`.
void Peaks(std::ostream& out, const Audio& music, float rateHz);
void Speed(std::ostream& out);

} // namespace KAV::Measure
