#include "tools/kavhost/bench.h"

#include "platform/thread_time.h"
#include "tools/kavhost/blocks.h"

#include <algorithm>

namespace KAV::Host {

namespace {

constexpr double kWarmUpSeconds = 3;

}

CBenchSubject::CBenchSubject(const CEffectLibrary& library, std::span<const SSetting> settings,
    const SMaterial& material, std::int32_t blockSize)
    : _material(material), _effect(library, {static_cast<double>(material.rateHz), blockSize}),
      _in(material.audio.Channels(), material.audio.Frames()),
      _out(material.audio.Channels(), material.audio.Frames()) {
    _effect.SetChannels(static_cast<int>(material.audio.Channels()));
    ApplySettings(settings, _effect);
    _effect.Start();
}

void CBenchSubject::WarmUp() {
    const double runSeconds = static_cast<double>(_in.Frames()) / _material.rateHz;
    for (double seconds = 0; seconds < kWarmUpSeconds; seconds += runSeconds) Run();
}

double CBenchSubject::Run() {
    _in.CopyFrom(_material.audio);
    const auto start = Platform::ThreadTimeNs();
    ProcessBlocks(_effect, _in, _out);
    return static_cast<double>(Platform::ThreadTimeNs() - start) / static_cast<double>(_in.Frames());
}

SBenchResult Measure(CBenchSubject& first, CBenchSubject* second, int runs) {
    SBenchResult result;
    first.WarmUp();
    if (second != nullptr) second->WarmUp();
    for (int run = 0; run < runs; ++run) {
        const auto runFirst = [&] { result.first.push_back(first.Run()); };
        const auto runSecond = [&] { result.second.push_back(second->Run()); };
        // The order turns with every run, so that neither always follows the other's traces in the caches.
        if (second == nullptr) {
            runFirst();
        } else if (run % 2 == 0) {
            runFirst();
            runSecond();
        } else {
            runSecond();
            runFirst();
        }
    }
    return result;
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    if (values.size() % 2 == 1) return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

double MedianRatio(const SBenchResult& result) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < result.second.size(); ++i)
        ratios.push_back(result.first[i] / result.second[i]);
    return Median(std::move(ratios));
}

} // namespace KAV::Host
