#pragma once

#include "dsp/flush_denormals.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <vector>

namespace KAV::Bench {

/// Seconds of processor time of this thread.
inline double ThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return values.empty() ? 0.0 : *middle;
}

/// Runs the subject and the reference in turns, each for `frames` frames a turn; both flush denormals, as the
/// engine does. The case's time is the subject's; `ns_frame` and `reference` are medians per frame, `times`
/// is how many times as fast as the reference the subject is.
template<typename TSubject, typename TReference>
void Against(
    benchmark::State& state, std::size_t frames, const TSubject& subject, const TReference& reference) {
    const DSP::CFlushDenormals flushing;
    std::vector<double> ours;
    std::vector<double> theirs;
    subject();
    reference();
    for (auto _ : state) {
        const double start = ThreadSeconds();
        subject();
        const double between = ThreadSeconds();
        reference();
        const double end = ThreadSeconds();
        state.SetIterationTime(between - start);
        ours.push_back(between - start);
        theirs.push_back(end - between);
    }
    const double perFrame = 1e9 / static_cast<double>(frames);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames));
    state.counters["ns_frame"] = Median(ours) * perFrame;
    state.counters["reference"] = Median(theirs) * perFrame;
    state.counters["times"] = Median(theirs) / Median(ours);
}

} // namespace KAV::Bench
