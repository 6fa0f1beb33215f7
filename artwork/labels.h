#pragma once

#include "artwork/geometry.h"

#include <string>
#include <vector>

namespace KAV::Artwork {

/// The three bands that carry all lettering that does not change.
enum class EBand { Top, Body, Toolbar };

enum class ETone { Name, Number, Fine, Section, Product };

/// A piece of lettering: where it stands on the panel, in panel pixels. `y` is the middle of the capitals;
/// `x` the left end, the middle or the right end.
struct SLabel {
    std::string text;
    double x = 0;
    double y = 0;
    ETone tone = ETone::Name;
    int align = 0; ///< -1 x is the left end, 0 the middle, 1 the right end
};

/// The rectangle of a band on the panel.
SRect BandRect(EBand band);

/// Size of the capitals' em in panel pixels.
double LetteringSize(ETone tone);

std::vector<SLabel> LabelsOf(EBand band);

/// A line of a scale, on the panel.
struct SScaleLine {
    double x0 = 0;
    double y0 = 0;
    double x1 = 0;
    double y1 = 0;
    bool major = true;
};

std::vector<SScaleLine> ScaleLinesOf(EBand band);

} // namespace KAV::Artwork
