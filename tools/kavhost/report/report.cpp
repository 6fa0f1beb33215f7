#include "tools/kavhost/report/report.h"

#include "tools/kavhost/base/text.h"

#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>

namespace KAV::Host {

namespace {

using Json = nlohmann::ordered_json;

constexpr int LabelWidth = 22;
constexpr int NumberWidth = 10;

std::ostream& Line(std::ostream& out, const char* label) {
    return out << "  " << std::left << std::setw(LabelWidth) << label << std::right;
}

void PrintLevels(std::ostream& out, const char* label, std::optional<double> before,
    std::optional<double> after, const char* unit) {
    if (!before || !after) return;
    Line(out, label) << std::setw(NumberWidth) << Fixed(*before, 2) << std::setw(NumberWidth)
                     << Fixed(*after, 2) << " " << unit << "\n";
}

std::string TimeOf(std::int64_t frame, int rateHz) {
    const double seconds = static_cast<double>(frame) / rateHz;
    const double minutes = std::floor(seconds / 60);
    const double rest = std::floor((seconds - 60 * minutes) * 100) / 100; // never shows 60.00
    return Fixed(minutes, 0) + (rest < 10 ? ":0" : ":") + Fixed(rest, 2);
}

std::string Signed(double decibels) {
    return (decibels > 0 ? std::string("+") : std::string()).append(Fixed(decibels, 2));
}

/// The gain that is farthest from none.
double LargestChange(const SGainRange& gain) {
    return -gain.lowest > gain.highest ? gain.lowest : gain.highest;
}

void PrintGain(std::ostream& out, const SRenderReport& report) {
    if (!report.gain) return;
    const auto& gain = *report.gain;
    const double change = LargestChange(gain);
    const auto frame = change == gain.lowest ? gain.lowestFrame : gain.highestFrame;
    Line(out, "largest gain change") << Signed(change) << " dB at " << TimeOf(frame, report.format.rateHz)
                                     << " (" << Signed(gain.lowest) << " to " << Signed(gain.highest)
                                     << " dB)\n";
}

void PrintDelay(std::ostream& out, const SRenderReport& report) {
    if (!report.isAligned) return;
    Line(out, "delay removed") << report.delay.frames << " frames";
    if (!report.delay.isMeasured) {
        out << ", reported by the effect: no clear correlation to measure";
    } else if (report.reportedDelay != report.delay.frames) {
        out << ", measured (the effect reports " << report.reportedDelay << ")";
    }
    out << "\n";
}

Json ToJson(const SLevels& levels) {
    Json json;
    json["sample_peak_dbfs"] = levels.samplePeakDbfs;
    json["true_peak_dbtp"] = levels.truePeakDbtp ? Json(*levels.truePeakDbtp) : Json();
    json["loudness_lufs"] = levels.loudnessLufs ? Json(*levels.loudnessLufs) : Json();
    json["not_finite"] = levels.notFinite;
    return json;
}

Json ToJson(const SRenderReport& report) {
    Json json;
    json["input"] = Utf8(report.job.input);
    json["output"] = Utf8(report.job.output);
    json["channels"] = report.format.channels;
    json["rate"] = report.format.rateHz;
    json["format"] = FormatName(report.format.samples);
    json["frames"] = report.frames;
    json["aligned"] = report.isAligned;
    json["delay"] = {{"frames", report.delay.frames}, {"measured", report.delay.isMeasured},
        {"reported", report.reportedDelay}};
    json["before"] = ToJson(report.before);
    json["after"] = ToJson(report.after);
    json["gain"] = nullptr;
    if (const auto& gain = report.gain) {
        json["gain"] = {{"largest_change_db", LargestChange(*gain)}, {"lowest_db", gain->lowest},
            {"lowest_frame", gain->lowestFrame}, {"highest_db", gain->highest},
            {"highest_frame", gain->highestFrame}};
    }
    json["clipped"] = report.clipped;
    json["real_time_factor"] = report.realTimeFactor;
    return json;
}

} // namespace

void PrintReport(std::ostream& out, const SRenderReport& report) {
    const auto& format = report.format;
    out << Utf8(report.job.input) << " -> " << Utf8(report.job.output) << "\n";
    Line(out, "format") << format.channels << (format.channels == 1 ? " channel, " : " channels, ")
                        << format.rateHz << " Hz, " << FormatName(format.samples)
                        << (IntegerBits(format.samples) > 0 ? " bits, " : ", ")
                        << TimeOf(static_cast<std::int64_t>(report.frames), format.rateHz) << "\n";
    PrintDelay(out, report);
    Line(out, "") << std::setw(NumberWidth) << "before" << std::setw(NumberWidth) << "after"
                  << "\n";
    const auto &before = report.before, &after = report.after;
    PrintLevels(out, "sample peak", before.samplePeakDbfs, after.samplePeakDbfs, "dBFS");
    PrintLevels(out, "true peak", before.truePeakDbtp, after.truePeakDbtp, "dBTP");
    PrintLevels(out, "loudness", before.loudnessLufs, after.loudnessLufs, "LUFS");
    PrintGain(out, report);
    if (report.clipped > 0) Line(out, "clipped samples") << report.clipped << "\n";
    if (before.notFinite > 0) Line(out, "not finite, before") << before.notFinite << " samples\n";
    if (after.notFinite > 0) Line(out, "not finite, after") << after.notFinite << " samples\n";
    Line(out, "real-time factor") << Fixed(report.realTimeFactor, 1) << "\n";
}

std::string ReportsAsJson(std::span<const SRenderReport> reports) {
    Json json = Json::array();
    for (const auto& report : reports) json.push_back(ToJson(report));
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace KAV::Host
