#include "tools/kavhost/bench/bench.h"

#include "platform/thread_time.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/blocks.h"

#include <algorithm>
#include <cmath>

namespace KAV::Host {

namespace {

constexpr double WarmUpSeconds = 3;
constexpr std::int64_t LeastSteps = 20; // to be right within 5 %

} // namespace

CBenchSubject::CBenchSubject(
    const CEffectLibrary& library, const CSetup& setup, const SMaterial& material, std::int32_t blockSize)
    : _material(material), _effect(library, {static_cast<double>(material.rateHz), blockSize}),
      _in(material.audio.Channels(), material.audio.Frames()),
      _out(material.audio.Channels(), static_cast<std::size_t>(blockSize)) {
    _effect.SetChannels(static_cast<int>(material.audio.Channels()));
    setup.Apply(_effect);
    _effect.Start();
}

void CBenchSubject::WarmUp() {
    for (double seconds = 0; seconds < WarmUpSeconds; seconds += Seconds()) {
        _in.CopyFrom(_material.audio);
        Process();
    }
}

/// The output is written to the same block again and again, as in a host. An output as long as the sound
/// would measure the memory rather than the effect.
void CBenchSubject::Process() {
    std::vector<float*> in(_in.Pointers(), _in.Pointers() + _in.Channels());
    const std::size_t blockSize = _out.Frames();
    for (std::size_t done = 0; done < _in.Frames();) {
        CheckInterrupt();
        const auto frames = std::min(blockSize, _in.Frames() - done);
        _effect.Process(in.data(), _out.Pointers(), static_cast<std::int32_t>(frames));
        for (float*& channel : in) channel += frames;
        done += frames;
    }
}

double CBenchSubject::Run() {
    _in.CopyFrom(_material.audio);
    const auto time =
        TimeOfAPass([this] { Process(); }, Platform::ThreadTimeNs, Platform::ThreadTimeStepNs());
    return time / static_cast<double>(_in.Frames());
}

double CBenchSubject::Seconds() const noexcept {
    return static_cast<double>(_in.Frames()) / _material.rateHz;
}

double TimeOfAPass(const std::function<void()>& pass, const std::function<std::int64_t()>& nowNs,
    std::int64_t stepNs, int mostPasses) {
    const std::int64_t start = nowNs();
    for (int passes = 1; passes <= mostPasses; ++passes) {
        pass();
        const std::int64_t taken = nowNs() - start;
        if (taken > 0 && taken >= LeastSteps * stepNs) return static_cast<double>(taken) / passes;
    }
    throw CFailure("this system's clock of processor time does not advance");
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
