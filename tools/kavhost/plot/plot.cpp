#include "tools/kavhost/plot/plot.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/measure/timeline.h"
#include "tools/kavhost/report/report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace KAV::Host {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t MostPeaks = 400;
constexpr double LeastPeakSeconds = 0.01; // less would follow the waves of a deep tone
constexpr double ShortTermSeconds = 3;

constexpr const char* Dot = " \xC2\xB7 ";
constexpr const char* Arrow = " \xE2\x86\x92 ";

SPlotSeries SeriesOf(const CMinMaxSeries& series, double stepSeconds) {
    return {static_cast<double>(series.StepsPerBin()) * stepSeconds,
        {series.Bins().begin(), series.Bins().end()}};
}

/// A peak for each run of bins, few enough to be distinguishable.
SPlotSeries PeaksOf(const SPlotSeries& amplitude) {
    std::size_t run = (amplitude.bins.size() + MostPeaks - 1) / MostPeaks;
    run = std::max(run, static_cast<std::size_t>(std::ceil(LeastPeakSeconds / amplitude.binSeconds)));
    SPlotSeries peaks{static_cast<double>(run) * amplitude.binSeconds, {}};
    for (std::size_t first = 0; first < amplitude.bins.size(); first += run) {
        SSpan all;
        for (std::size_t i = first; i < std::min(first + run, amplitude.bins.size()); ++i)
            all.Add(amplitude.bins[i]);
        if (!all.IsEmpty()) {
            const double peak = Decibels(std::max(std::abs(all.lowest), std::abs(all.highest)));
            all = {peak, peak};
        }
        peaks.bins.push_back(all);
    }
    return peaks;
}

SPlotSignal SignalOf(const CSignalTimeline& timeline, int rateHz) {
    SPlotSignal signal;
    signal.amplitude = SeriesOf(timeline.Amplitude(), 1.0 / rateHz);
    signal.peak = PeaksOf(signal.amplitude);
    signal.shortTerm =
        SeriesOf(timeline.ShortTerm(), static_cast<double>(LoudnessStepFrames(rateHz)) / rateHz);
    return signal;
}

/// With the sign that print has for "minus", which is as wide as a digit.
std::string Number(double value, int decimals) {
    if (std::abs(value) < 0.5 * std::pow(10.0, -decimals)) value = 0; // no "-0.0"
    auto text = value == -std::numeric_limits<double>::infinity() ? "-\xE2\x88\x9E" : Fixed(value, decimals);
    if (text.starts_with('-')) text.replace(0, 1, "\xE2\x88\x92");
    return text;
}

void Change(std::string& line, const char* name, std::optional<double> before, std::optional<double> after,
    const char* unit) {
    if (!before || !after) return;
    if (!line.empty()) line += Dot;
    line += std::string(name) + " " + Number(*before, 1) + Arrow + Number(*after, 1) + " " + unit;
}

std::string Measures(const SRenderReport& report) {
    std::string line;
    Change(line, "integrated loudness", report.before.loudnessLufs, report.after.loudnessLufs, "LUFS");
    Change(line, "true peak", report.before.truePeakDbtp, report.after.truePeakDbtp, "dBTP");
    Change(line, "sample peak", report.before.samplePeakDbfs, report.after.samplePeakDbfs, "dBFS");
    if (!line.empty()) line += Dot;
    line += std::to_string(report.format.rateHz) + " Hz, " + std::to_string(report.format.channels) +
            (report.format.channels == 1 ? " channel" : " channels");
    return line;
}

std::string Settings(const SRenderReport& report) {
    std::string line;
    const auto add = [&](const std::string& words) { line += (line.empty() ? "" : Dot) + words; };
    if (!report.patch.empty()) add("patch " + report.patch);
    for (const auto& setting : report.settings) add(setting.Words());
    if (report.settings.empty()) add("all settings at their built-in values");
    return line;
}

std::vector<std::string> Notes(const SRenderReport& report, const STimeline& timeline) {
    std::vector<std::string> notes;
    if (report.isAligned && !timeline.idleGainsDb.empty()) {
        const auto [low, high] = std::ranges::minmax(timeline.idleGainsDb);
        auto text = "gain without limiting " + Number(low, 1);
        if (high - low >= 0.05) text += " to " + Number(high, 1);
        notes.push_back(text + " dB");
    }
    if (!report.isAligned)
        notes.emplace_back("not aligned: the effect's delay is left in, so no gain is shown");
    if (static_cast<double>(report.frames) < ShortTermSeconds * report.format.rateHz)
        notes.emplace_back("shorter than 3 s: no short-term loudness");
    if (report.clipped > 0) {
        notes.push_back(
            std::to_string(report.clipped) + (report.clipped == 1 ? " sample clipped" : " samples clipped"));
    }
    const auto notFinite = report.before.notFinite + report.after.notFinite;
    if (notFinite > 0) {
        notes.push_back("not finite: " + std::to_string(report.before.notFinite) + " samples before, " +
                        std::to_string(report.after.notFinite) + " after");
    }
    return notes;
}

/// The series by the names that the data has for them.
template<typename VISIT>
void ForEachSeries(const SPlot& plot, VISIT visit) {
    const std::pair<const char*, const SPlotSignal&> signals[] = {
        {"before", plot.before}, {"after", plot.after}};
    for (const auto& [name, signal] : signals) visit("amplitude", name, "", signal.amplitude, 9);
    for (const auto& [name, signal] : signals) visit("peak", name, "dBFS", signal.peak, 4);
    for (const auto& [name, signal] : signals)
        visit("short_term_loudness", name, "LUFS", signal.shortTerm, 4);
    visit("gain", "effect", "dB", plot.gain, 4);
    visit("gain_reduction", "effect", "dB", plot.reduction, 4);
}

Json JsonNumber(double value) {
    return std::isfinite(value) ? Json(value) : Json();
}

} // namespace

SPlot MakePlot(const SRenderReport& report, const STimeline& timeline) {
    const int rateHz = report.format.rateHz;
    SPlot plot;
    plot.title = Utf8(report.job.input.filename());
    plot.settings = Settings(report);
    plot.measures = Measures(report);
    plot.notes = Notes(report, timeline);
    plot.seconds = static_cast<double>(report.frames) / rateHz;
    plot.before = SignalOf(timeline.before, rateHz);
    plot.after = SignalOf(timeline.after, rateHz);
    if (!report.isAligned) return plot;
    const double windowSeconds = static_cast<double>(GainWindowFrames(rateHz)) / rateHz;
    plot.gain = SeriesOf(timeline.gain, windowSeconds);
    plot.reduction = SeriesOf(timeline.reduction, windowSeconds);
    return plot;
}

std::string PlotAsCsv(const SPlot& plot) {
    std::string text = "quantity,signal,begin_s,end_s,lowest,highest\n";
    ForEachSeries(plot,
        [&](const char* quantity, const char* signal, const char*, const SPlotSeries& series, int decimals) {
            for (std::size_t i = 0; i < series.bins.size(); ++i) {
                const auto& bin = series.bins[i];
                if (bin.IsEmpty()) continue;
                const double begin = static_cast<double>(i) * series.binSeconds;
                const double end = std::min(begin + series.binSeconds, plot.seconds);
                text.append(quantity).append(",").append(signal);
                for (const double time : {begin, end}) text.append(",").append(Fixed(time, 6));
                for (const double value : {bin.lowest, bin.highest})
                    text.append(",").append(Fixed(value, decimals));
                text += "\n";
            }
        });
    return text;
}

std::string PlotAsJson(const SPlot& plot) {
    Json json;
    json["title"] = plot.title;
    json["settings"] = plot.settings;
    json["measures"] = plot.measures;
    json["notes"] = plot.notes;
    json["seconds"] = plot.seconds;
    json["series"] = Json::array();
    ForEachSeries(plot,
        [&](const char* quantity, const char* signal, const char* unit, const SPlotSeries& series, int) {
            Json lowest = Json::array(), highest = Json::array();
            for (const auto& bin : series.bins) {
                lowest.push_back(JsonNumber(bin.lowest));
                highest.push_back(JsonNumber(bin.highest));
            }
            json["series"].push_back({{"quantity", quantity}, {"signal", signal}, {"unit", unit},
                {"bin_seconds", series.binSeconds}, {"lowest", std::move(lowest)},
                {"highest", std::move(highest)}});
        });
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace KAV::Host
