#include "tools/kavhost/report/report.h"

#include "tools/kavhost/audio/speaker_layout.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
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
    const auto hundredths = std::llround(100.0 * static_cast<double>(frame) / rateHz);
    const auto minutes = hundredths / 6000; // of what is rounded already, so that it never shows 60.00
    const double rest = static_cast<double>(hundredths % 6000) / 100;
    return std::to_string(minutes) + (rest < 10 ? ":0" : ":") + Fixed(rest, 2);
}

std::string Signed(double decibels) {
    const auto text = Fixed(decibels, 2);
    return decibels > 0 && text != "0.00" ? "+" + text : text;
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

void PrintWeights(std::ostream& out, const SRenderReport& report) {
    constexpr int plain = 2; // channels up to which there is nothing to explain
    if (report.format.channels <= plain || !report.after.loudnessLufs) return;
    Line(out, "loudness weights") << Explained(report.speakers) << "\n";
}

void PrintMakeUp(std::ostream& out, const SRenderReport& report) {
    if (report.idleGainsDb.empty()) return;
    const auto [low, high] = std::ranges::minmax(report.idleGainsDb);
    Line(out, "make-up gain") << Signed(low);
    if (Signed(high) != Signed(low)) out << " to " << Signed(high);
    out << " dB\n";
}

void PrintReduction(std::ostream& out, const SRenderReport& report) {
    if (!report.reduction) return;
    const auto& reduction = *report.reduction;
    Line(out, "largest reduction") << Fixed(reduction.largestDb, 2) << " dB";
    if (reduction.largestDb > 0) out << " at " << TimeOf(reduction.largestFrame, report.format.rateHz);
    out << "\n";
    const auto share = [](double part) { return Fixed(100 * part, 1) + " %"; };
    Line(out, "reduced by more than")
        << "1 dB " << share(reduction.over1Db) << ", 3 dB " << share(reduction.over3Db) << ", 6 dB "
        << share(reduction.over6Db) << " of the time\n";
}

/// What the farthest clipped sample lost; nothing for formats that don't clip.
double ClippedByDb(const SRenderReport& report) {
    const int bits = IntegerBits(report.format.samples);
    return bits > 0 ? Decibels(1 + std::ldexp(report.clippedBySteps, 1 - bits)) : 0;
}

void PrintClipped(std::ostream& out, const SRenderReport& report) {
    if (report.clipped == 0) return;
    Line(out, "clipped samples") << report.clipped << ", by up to ";
    constexpr double shown = 0.005;
    if (const double decibels = ClippedByDb(report); decibels >= shown)
        out << Fixed(decibels, 2) << " dB\n";
    else
        out << Fixed(report.clippedBySteps, 1) << " steps of " << IntegerBits(report.format.samples)
            << " bits\n";
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

/// In as many lines as it takes.
void PrintSettings(std::ostream& out, const SRenderReport& report) {
    constexpr std::size_t most = 76;
    if (!report.patch.empty()) Line(out, "patch") << report.patch << "\n";
    std::string line;
    const char* label = "settings";
    for (std::size_t i = 0; i < report.settings.size(); ++i) {
        const auto words = report.settings[i].Words() + (i + 1 < report.settings.size() ? "," : "");
        if (!line.empty() && line.size() + 1 + words.size() > most) {
            Line(out, label) << line << "\n";
            label = "";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + words;
    }
    if (!line.empty()) Line(out, label) << line << "\n";
}

std::string Dump(const Json& json, EJson form) {
    return json.dump(form == EJson::Lines ? 2 : -1, ' ', false, Json::error_handler_t::replace);
}

Json ToJson(const SLevels& levels, bool areMeasured) {
    Json json;
    json["sample_peak_dbfs"] = areMeasured ? Json(levels.samplePeakDbfs) : Json();
    json["true_peak_dbtp"] = levels.truePeakDbtp ? Json(*levels.truePeakDbtp) : Json();
    json["loudness_lufs"] = levels.loudnessLufs ? Json(*levels.loudnessLufs) : Json();
    json["not_finite"] = levels.notFinite;
    json["loudness_range_lu"] = levels.loudnessRangeLu ? Json(*levels.loudnessRangeLu) : Json();
    json["highest_momentary_lufs"] =
        levels.highestMomentaryLufs ? Json(*levels.highestMomentaryLufs) : Json();
    json["highest_short_term_lufs"] =
        levels.highestShortTermLufs ? Json(*levels.highestShortTermLufs) : Json();
    return json;
}

Json ToJson(const SReduction& reduction) {
    return {{"largest_db", reduction.largestDb}, {"largest_frame", reduction.largestFrame},
        {"over_1_db", reduction.over1Db}, {"over_3_db", reduction.over3Db}, {"over_6_db", reduction.over6Db}};
}

Json ToJson(const SSpeakerWeights& speakers) {
    constexpr const char* origins[] = {"mask", "routing", "usual", nullptr}; // by number of EOrigin
    const char* const origin = origins[static_cast<std::size_t>(speakers.origin)];
    return {{"channels", speakers.channels}, {"from", origin != nullptr ? Json(origin) : Json()},
        {"layout", speakers.layout.empty() ? Json() : Json(speakers.layout)}};
}

void PrintTarget(std::ostream& out, const SRenderReport& report) {
    if (!report.target) return;
    const auto& target = *report.target;
    std::string wanted, gains;
    if (target.wantedLufs) wanted = Shortest(*target.wantedLufs) + " LUFS";
    if (target.wantedDbtp) wanted += (wanted.empty() ? "" : ", ") + Shortest(*target.wantedDbtp) + " dBTP";
    if (target.mostReductionDb)
        wanted += ", at most " + Shortest(*target.mostReductionDb) + " dB of reduction";
    Line(out, "target") << wanted
                        << (target.files > 1 ? ", of " + std::to_string(target.files) + " files as an album"
                                             : "")
                        << "\n";
    if (target.hasInputGain) gains = "input " + Signed(target.inputGainDb) + " dB";
    if (target.hasOutputGain)
        gains += (gains.empty() ? "" : ", ") + ("output " + Signed(target.outputGainDb) + " dB");
    Line(out, "main gains found") << gains << ", in " << target.renders
                                  << (target.renders == 1 ? " render" : " renders")
                                  << "; determined by: " << target.binds << "\n";
    Line(out, "reached") << Fixed(target.reachedLufs.value_or(0), 2) << " LUFS, "
                         << Fixed(target.reachedDbtp.value_or(0), 2) << " dBTP"
                         << "\n";
    if (!target.inTheWay.empty()) Line(out, "the nearest") << target.inTheWay << "\n";
    if (report.format.channels == 1 && target.wantedLufs) {
        Line(out, "mono") << (target.isDualMono ? "counts as two channels, which adds 3 LU"
                                                : "counts as one channel; --dual-mono adds 3 LU")
                          << "\n";
    }
}

Json ToJson(const STargetReport& target) {
    const auto number = [](const std::optional<double>& value) { return value ? Json(*value) : Json(); };
    Json json;
    json["loudness_lufs"] = number(target.wantedLufs);
    json["true_peak_dbtp"] = number(target.wantedDbtp);
    json["max_reduction_db"] = number(target.mostReductionDb);
    json["input_gain_db"] = target.inputGainDb;
    json["output_gain_db"] = target.outputGainDb;
    json["binds"] = target.binds;
    json["renders"] = target.renders;
    json["files"] = target.files;
    json["dual_mono"] = target.isDualMono;
    json["reached"] = {
        {"loudness_lufs", number(target.reachedLufs)}, {"true_peak_dbtp", number(target.reachedDbtp)}};
    json["nearest"] = !target.inTheWay.empty();
    json["in_the_way"] = target.inTheWay.empty() ? Json() : Json(target.inTheWay);
    return json;
}

Json ToJson(const SRenderReport& report) {
    Json json;
    json["input"] = Utf8(report.job.input);
    json["output"] = Utf8(report.job.output);
    json["channels"] = report.format.channels;
    json["speaker_mask"] = report.format.mask ? Json(*report.format.mask) : Json();
    json["speakers"] = report.format.mask ? Json(LayoutName(*report.format.mask)) : Json();
    json["rate"] = report.format.rateHz;
    json["format"] = FormatName(report.format.samples);
    json["frames"] = report.frames;
    json["aligned"] = report.isAligned;
    json["delay"] = {{"frames", report.delay.frames}, {"measured", report.delay.isMeasured},
        {"reported", report.reportedDelay}, {"exact_frames", report.delay.exactFrames}};
    json["before"] = ToJson(report.before, report.isMeasured);
    json["after"] = ToJson(report.after, report.isMeasured);
    json["loudness_weights"] = report.isMeasured ? ToJson(report.speakers) : Json();
    json["gain"] = nullptr;
    if (const auto& gain = report.gain) {
        json["gain"] = {{"largest_change_db", LargestChange(*gain)}, {"lowest_db", gain->lowest},
            {"lowest_frame", gain->lowestFrame}, {"highest_db", gain->highest},
            {"highest_frame", gain->highestFrame}};
    }
    json["makeup_gain_db"] = report.idleGainsDb.empty() ? Json() : Json(report.idleGainsDb);
    json["reduction"] = report.reduction ? ToJson(*report.reduction) : Json();
    json["clipped"] = report.clipped;
    json["clipped_by_steps"] = report.clippedBySteps;
    json["clipped_by_db"] = ClippedByDb(report);
    json["real_time_factor"] = report.realTimeFactor;
    json["patch"] = report.patch.empty() ? Json() : Json(report.patch);
    json["settings"] = Json::array();
    for (const auto& [name, value] : report.settings)
        json["settings"].push_back({{"name", name}, {"value", value}});
    json["notes"] = Json::array();
    for (const auto& note : report.notes) json["notes"].push_back(note.text);
    if (report.target) json["target"] = ToJson(*report.target);
    return json;
}

void PrintMeasures(std::ostream& out, const SRenderReport& report) {
    Line(out, "") << std::setw(NumberWidth) << "before" << std::setw(NumberWidth) << "after"
                  << "\n";
    const auto &before = report.before, &after = report.after;
    PrintLevels(out, "sample peak", before.samplePeakDbfs, after.samplePeakDbfs, "dBFS");
    PrintLevels(out, "true peak", before.truePeakDbtp, after.truePeakDbtp, "dBTP");
    PrintLevels(out, "loudness", before.loudnessLufs, after.loudnessLufs, "LUFS");
    PrintLevels(out, "loudness range", before.loudnessRangeLu, after.loudnessRangeLu, "LU");
    PrintLevels(out, "highest momentary", before.highestMomentaryLufs, after.highestMomentaryLufs, "LUFS");
    PrintLevels(out, "highest short-term", before.highestShortTermLufs, after.highestShortTermLufs, "LUFS");
    PrintWeights(out, report);
    PrintMakeUp(out, report);
    PrintReduction(out, report);
    PrintTarget(out, report);
    PrintGain(out, report);
}

} // namespace

void PrintReport(std::ostream& out, const SRenderReport& report) {
    const auto& format = report.format;
    out << TitleOf(report.job) << "\n";
    Line(out, "format") << format.channels << (format.channels == 1 ? " channel, " : " channels, ")
                        << format.rateHz << " Hz, " << FormatName(format.samples)
                        << (IntegerBits(format.samples) > 0 ? " bits, " : ", ")
                        << TimeOf(static_cast<std::int64_t>(report.frames), format.rateHz) << "\n";
    if (format.mask) {
        Line(out, "speakers") << LayoutName(*format.mask) << " (" << MaskText(*format.mask) << ")\n";
    }
    PrintSettings(out, report);
    PrintDelay(out, report);
    const auto &before = report.before, &after = report.after;
    if (report.isMeasured) PrintMeasures(out, report);
    PrintClipped(out, report);
    if (before.notFinite > 0) Line(out, "not finite, before") << before.notFinite << " samples\n";
    if (after.notFinite > 0) Line(out, "not finite, after") << after.notFinite << " samples\n";
    Line(out, "speed") << Fixed(report.realTimeFactor, 1) << " times real time\n";
    for (const auto& note : report.notes) Line(out, "note") << Printable(note.text) << "\n";
}

std::string InputName(const SRenderJob& job) {
    return job.input == "-" ? "standard input" : Utf8(job.input);
}

std::string TitleOf(const SRenderJob& job) {
    const auto output = job.output == "-" ? "standard output" : Utf8(job.output);
    return Printable(InputName(job) + " -> " + output);
}

std::string ReportAsJson(const SRenderReport& report, EJson form) {
    return Dump(ToJson(report), form);
}

std::string FateAsJson(const SRenderJob& job, const char* fate, const std::string& reason, EJson form) {
    Json json;
    json["input"] = Utf8(job.input);
    json["output"] = Utf8(job.output);
    json[fate] = reason;
    return Dump(json, form);
}

} // namespace KAV::Host
