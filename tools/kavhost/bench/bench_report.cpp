#include "tools/kavhost/base/text.h"
#include "tools/kavhost/bench/bench.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>

namespace KAV::Host {

namespace {

using Json = nlohmann::ordered_json;

double RealTimeFactor(double nsPerFrame, int rateHz) {
    return nsPerFrame > 0 ? 1e9 / (nsPerFrame * rateHz) : 0;
}

void PrintEffect(std::ostream& out, const std::string& name, const std::vector<double>& runs, int rateHz) {
    const double median = Median(runs);
    const auto [least, most] = std::ranges::minmax(runs);
    out << "  " << std::setw(10) << Fixed(median, 2) << " ns per frame (" << Fixed(least, 2) << " to "
        << Fixed(most, 2) << "), real-time factor " << Fixed(RealTimeFactor(median, rateHz), 1) << ": "
        << name << "\n";
}

Json EffectAsJson(const std::string& name, const std::vector<double>& runs, int rateHz) {
    return {{"plugin", name}, {"ns_per_frame", Median(runs)},
        {"real_time_factor", RealTimeFactor(Median(runs), rateHz)}, {"runs_ns_per_frame", runs}};
}

} // namespace

void PrintBench(std::ostream& out, const SBenchReport& report) {
    const auto& result = report.result;
    out << "thread-CPU time, median of " << result.first.size() << " runs of " << Fixed(report.seconds, 2)
        << " s, " << report.channels << (report.channels == 1 ? " channel" : " channels") << " at "
        << report.rateHz << " Hz, block " << report.blockSize << "\n";
    if (!report.patch.empty()) out << "  patch " << report.patch << "\n";
    std::string settings;
    for (const auto& setting : report.settings) settings += (settings.empty() ? "" : ", ") + setting.Words();
    if (!settings.empty()) out << "  settings " << settings << "\n";
    PrintEffect(out, report.first, result.first, report.rateHz);
    if (result.second.empty()) return;
    PrintEffect(out, report.second, result.second, report.rateHz);
    out << "  ratio " << Fixed(Median(result.first) / Median(result.second), 3) << " of the medians, "
        << "median ratio " << Fixed(MedianRatio(result), 3) << " run by run\n";
}

std::string BenchAsJson(const SBenchReport& report) {
    const auto& result = report.result;
    Json json;
    json["patch"] = report.patch.empty() ? Json() : Json(report.patch);
    json["settings"] = Json::array();
    for (const auto& [name, value] : report.settings)
        json["settings"].push_back({{"name", name}, {"value", value}});
    json["rate"] = report.rateHz;
    json["channels"] = report.channels;
    json["block"] = report.blockSize;
    json["seconds"] = report.seconds;
    json["first"] = EffectAsJson(report.first, result.first, report.rateHz);
    if (!result.second.empty()) {
        json["second"] = EffectAsJson(report.second, result.second, report.rateHz);
        json["ratio_of_medians"] = Median(result.first) / Median(result.second);
        json["median_ratio"] = MedianRatio(result);
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace KAV::Host
