#include "artwork/labels.h"

#include "artwork/layout.h"
#include "artwork/scales.h"

#include <array>
#include <cmath>
#include <span>
#include <string_view>

namespace KAV::Artwork {

namespace {

constexpr double NameY = 98;
constexpr double UnitY = 109.5;

struct SFaderScale {
    std::string_view place;
    std::string_view title;
    std::string_view unit;
    std::span<const STick> ticks;
};

const std::vector<SFaderScale>& FaderScales() {
    static const std::vector<SFaderScale> scales{
        {"Input Gain", "Input Gain", "dB", InputGainTicks},
        {"Threshold", "Threshold", "dB", ThirtyDbTicks},
        {"Release", "Release", "ms", ReleaseTicks},
        {"Output Ceiling", "Output Ceiling", "dB", ThirtyDbTicks},
    };
    return scales;
}

/// The columns beside the meters where their levels are written: x of the lines, and to which side of it.
struct SMeterScale {
    double x = 0;
    int side = 1;
};
constexpr SMeterScale MeterScales[] = {{255.2, 1}, {499.8, -1}};

double MeterY(double db) {
    const SRect rect = PlaceOf("Input Meter 1").rect;
    return rect.Bottom() - rect.h * MeterValue(db);
}

double ReductionY(double db) {
    return GainReductionRect().y + GainReductionRect().h * ReductionHeight(db);
}

void AddBodyLabels(std::vector<SLabel>& labels) {
    for (const auto& scale : FaderScales()) {
        const SRect rect = PlaceOf(scale.place).rect;
        const double x = rect.x + FaderCentreX;
        labels.push_back({std::string(scale.title), x, NameY});
        labels.push_back({std::string(scale.unit), x, UnitY, ETone::Number});
        for (const auto& tick : scale.ticks) {
            if (*tick.text)
                labels.push_back({tick.text, x - 19.8, rect.y + FaderY(tick.value), ETone::Number, 1});
        }
    }
    for (const auto& [x, side] : MeterScales) {
        labels.push_back({"dB", x + 3 * side, UnitY, ETone::Fine, -side});
        for (const int db : MeterLevels)
            labels.push_back({std::to_string(std::abs(db)), x + 3 * side, MeterY(db), ETone::Fine, -side});
    }
    for (const double x : {56.5, 204.5}) labels.push_back({"In", x, NameY});
    for (const double x : {550.5, 698.5}) labels.push_back({"Out", x, NameY});
    for (int n = 0; n < 16; ++n) {
        const double x = n < 8 ? 14.5 + 12 * n : 162.5 + 12 * (n - 8);
        for (const double side : {0.0, 494.0})
            labels.push_back({std::to_string(n + 1), x + side, 440.5, ETone::Fine});
    }
    for (const int db : ReductionLevels)
        labels.push_back(
            {std::to_string(db), GainReductionRect().x + 11.5, ReductionY(db), ETone::Number, 1});
    labels.push_back({"Gain Reduction", GainReductionRect().CentreX(), 380, ETone::Name});
    labels.push_back({"dB", GainReductionRect().CentreX(), 391, ETone::Number});
}

void AddKnobLabels(std::vector<SLabel>& labels, std::string_view place) {
    const SRect rect = PlaceOf(place).rect;
    labels.push_back({std::string(place), rect.CentreX(), 457});
    for (const auto& tick : MainGainTicks) {
        if (!*tick.text) continue;
        const double angle = KnobAngle(tick.value);
        const double away = tick.value == 0.5 ? 32 : 29.5;
        const int align = tick.value < 0.5 ? 1 : tick.value > 0.5 ? -1 : 0;
        labels.push_back({tick.text, rect.CentreX() + away * std::sin(angle),
            rect.CentreY() - away * std::cos(angle), ETone::Number, align});
    }
}

/// Only the direction: a macro has no unit of its own.
void AddMacroLabels(std::vector<SLabel>& labels) {
    for (const auto& place : Places()) {
        if (place.widget != EClass::MacroKnob) continue;
        labels.push_back({"\u2212", place.rect.CentreX() - 20, place.rect.CentreY() + 18.2, ETone::Number});
        labels.push_back({"+", place.rect.CentreX() + 20, place.rect.CentreY() + 18.2, ETone::Number});
    }
}

void AddKnobLines(std::vector<SScaleLine>& lines, const SRect& rect, std::span<const STick> ticks,
    double inner, double outer) {
    for (const auto& tick : ticks) {
        const bool major = *tick.text || tick.value == 0.5;
        const double angle = KnobAngle(tick.value);
        const double end = major ? outer : outer - (outer - inner) * 0.35;
        const double s = std::sin(angle);
        const double c = -std::cos(angle);
        lines.push_back({rect.CentreX() + inner * s, rect.CentreY() + inner * c, rect.CentreX() + end * s,
            rect.CentreY() + end * c, major});
    }
}

void AddBodyLines(std::vector<SScaleLine>& lines) {
    for (const auto& scale : FaderScales()) {
        const SRect rect = PlaceOf(scale.place).rect;
        const double x = rect.x + FaderCentreX;
        for (const auto& tick : scale.ticks) {
            const double y = rect.y + FaderY(tick.value);
            const bool major = *tick.text != 0;
            lines.push_back({x - (major ? 18 : 15.5), y, x - 5, y, major});
            lines.push_back({x + 5, y, x + 12, y, major});
        }
    }
    for (const auto& [x, side] : MeterScales) {
        for (const int db : MeterLevels) lines.push_back({x, MeterY(db), x + 1.9 * side, MeterY(db), true});
    }
    for (const int db : ReductionLevels)
        lines.push_back(
            {GainReductionRect().x + 14, ReductionY(db), GainReductionRect().Right(), ReductionY(db), false});
}

} // namespace

SRect BandRect(EBand band) {
    const std::string_view names[] = {"ToolbarRtg", "Bkgnd", "Toolbar"};
    return PlaceOf(names[static_cast<int>(band)]).rect;
}

double LetteringSize(ETone tone) {
    constexpr std::array<double, 5> sizes{8.6, 6.9, 6.3, 7.2, 11.5};
    return sizes[static_cast<std::size_t>(tone)];
}

std::vector<SLabel> LabelsOf(EBand band) {
    std::vector<SLabel> labels;
    switch (band) {
    case EBand::Top:
        labels.push_back({"ROUTING", 14, 10.5, ETone::Section, -1});
        labels.push_back({"CHANNELS", 125, 10.5, ETone::Section, -1});
        labels.push_back({"GROUPS", 592, 10.5, ETone::Section, -1});
        labels.push_back({"COPY", 726, 10.5, ETone::Section});
        labels.push_back({"Edit", 14, 64.5, ETone::Name, -1});
        break;
    case EBand::Body:
        AddBodyLabels(labels);
        break;
    case EBand::Toolbar:
        AddKnobLabels(labels, "Main Input Gain");
        AddKnobLabels(labels, "Main Output Gain");
        AddMacroLabels(labels);
        labels.push_back({"KAV", 119, 468, ETone::Section});
        labels.push_back({"SORREL", 119, 480, ETone::Product});
        labels.push_back({"LIMITER", 119, 492, ETone::Section});
        labels.push_back({"KAVELIN", 637, 496, ETone::Section});
        labels.push_back({"Oversampling", 595, 542.5, ETone::Name, 1});
        break;
    }
    return labels;
}

std::vector<SScaleLine> ScaleLinesOf(EBand band) {
    std::vector<SScaleLine> lines;
    if (band == EBand::Body) AddBodyLines(lines);
    if (band == EBand::Toolbar) {
        for (const auto* place : {"Main Input Gain", "Main Output Gain"})
            AddKnobLines(lines, PlaceOf(place).rect, MainGainTicks, MainTickInner, MainTickOuter);
        for (const auto& place : Places()) {
            if (place.widget == EClass::MacroKnob)
                AddKnobLines(lines, place.rect, MacroTicks, MacroTickInner, MacroTickOuter);
        }
    }
    return lines;
}

} // namespace KAV::Artwork
