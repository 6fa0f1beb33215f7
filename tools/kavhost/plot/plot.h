#pragma once

#include "tools/kavhost/measure/min_max_series.h"

#include <array>
#include <ostream>
#include <span>
#include <string>
#include <vector>

/// What an effect did to a file, over time: for a picture, and as numbers. Both show the same record.
namespace KAV::Host {

struct STimeline;
struct SRenderReport;

/// Values over time in bins of the same length.
struct SPlotSeries {
    double binSeconds = 0; ///< the last bin may be cut off by the end of the sound
    std::vector<SSpan> bins;
};

/// The series of the sound before the effect, or of the sound after it.
struct SPlotSignal {
    SPlotSeries amplitude; ///< over all channels, full scale is 1
    SPlotSeries peak;      ///< of runs of those bins, in dBFS
    SPlotSeries shortTerm; ///< loudness of three seconds in LUFS, at their end; no bins if not measured
};

struct SPlot {
    std::string title;
    std::string settings; ///< the patch, and those that differ from the effect's built-in values
    std::string measures;
    std::vector<std::string> notes; ///< what a reader must know to interpret the rest
    double seconds = 0;
    SPlotSignal before;
    SPlotSignal after;
    SPlotSeries gain;      ///< output RMS / input RMS in windows of 10 ms, in dB, over the channels
    SPlotSeries reduction; ///< the same relative to each channel's gain without limiting
};

SPlot MakePlot(const SRenderReport& report, const STimeline& timeline);

/// A line per bin: quantity,signal,begin_s,end_s,lowest,highest. Bins without a value are left out.
std::string PlotAsCsv(const SPlot& plot);

/// An object with the texts and a list of series; bins without a value, and infinity, are null.
std::string PlotAsJson(const SPlot& plot);

inline constexpr int PlotWidth = 1600;
inline constexpr int PlotHeight = 1000;

/// Whether this build has the libraries that draw.
bool CanDrawPlots() noexcept;

/// Writes the picture as PNG. Threads: any number at once. Throws CFailure.
void DrawPlot(const SPlot& plot, std::ostream& png);

} // namespace KAV::Host
